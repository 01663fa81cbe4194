// The snippets of docs/scale.md; prints docs/snippets/scale.out. Works in the folder that it is
// started in.
//   scale MODULE
#include <atomic>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <new>
#include <string>
#include <unistd.h>

#include <sqlite3.h>

#include <halyon/database/IHynSQConnection.h>
#include <halyon/database/IHynSQRecordSet.h>
#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/HynIdentifiers.h>
#include <halyon/framework/MyDll.h>
#include <halyon/string/CTovStringW.h>

using namespace Halyon;

namespace
{
// [layer]
// A storage layer that passes everything on to the usual one and counts what reaches the disk.
std::atomic<int> g_writes = 0;
std::atomic<int> g_syncs = 0;

struct CountedFile : sqlite3_file
{
    // The file of the layer below lies behind this one; the engine makes room for both.
    sqlite3_file* Below() { return reinterpret_cast<sqlite3_file*>(this + 1); }
    static CountedFile& Of(sqlite3_file* file) { return *static_cast<CountedFile*>(file); }
};

sqlite3_file* Below(sqlite3_file* file)
{
    return CountedFile::Of(file).Below();
}

const sqlite3_io_methods kMethods = {
    .iVersion = 1,
    .xClose = [](sqlite3_file* f) { return Below(f)->pMethods->xClose(Below(f)); },
    .xRead = [](sqlite3_file* f, void* to, int n, sqlite3_int64 at)
    { return Below(f)->pMethods->xRead(Below(f), to, n, at); },
    .xWrite = [](sqlite3_file* f, const void* from, int n, sqlite3_int64 at)
    { return ++g_writes, Below(f)->pMethods->xWrite(Below(f), from, n, at); },
    .xTruncate = [](sqlite3_file* f, sqlite3_int64 n)
    { return Below(f)->pMethods->xTruncate(Below(f), n); },
    .xSync = [](sqlite3_file* f, int flags)
    { return ++g_syncs, Below(f)->pMethods->xSync(Below(f), flags); },
    .xFileSize = [](sqlite3_file* f, sqlite3_int64* n)
    { return Below(f)->pMethods->xFileSize(Below(f), n); },
    .xLock = [](sqlite3_file* f, int level) { return Below(f)->pMethods->xLock(Below(f), level); },
    .xUnlock = [](sqlite3_file* f, int level)
    { return Below(f)->pMethods->xUnlock(Below(f), level); },
    .xCheckReservedLock = [](sqlite3_file* f, int* held)
    { return Below(f)->pMethods->xCheckReservedLock(Below(f), held); },
    .xFileControl = [](sqlite3_file* f, int what, void* arg)
    { return Below(f)->pMethods->xFileControl(Below(f), what, arg); },
    .xSectorSize = [](sqlite3_file* f) { return Below(f)->pMethods->xSectorSize(Below(f)); },
    .xDeviceCharacteristics = [](sqlite3_file* f)
    { return Below(f)->pMethods->xDeviceCharacteristics(Below(f)); },
    // What version 1 lacks: memory shared between processes, which the write-ahead log needs, and
    // mapped reads.
    .xShmMap = nullptr,
    .xShmLock = nullptr,
    .xShmBarrier = nullptr,
    .xShmUnmap = nullptr,
    .xFetch = nullptr,
    .xUnfetch = nullptr,
};

int OpenCounted(sqlite3_vfs* layer, const char* path, sqlite3_file* file, int flags, int* outFlags)
{
    auto* below = static_cast<sqlite3_vfs*>(layer->pAppData);
    auto* counted = new (file) CountedFile{};
    const int result = below->xOpen(below, path, counted->Below(), flags, outFlags);
    counted->pMethods = counted->Below()->pMethods != nullptr ? &kMethods : nullptr;
    return result;
}

int RegisterCounting()
{
    static sqlite3_vfs layer =
        *sqlite3_vfs_find(nullptr); // all but opening is the usual layer's own
    layer.pNext = nullptr;
    layer.zName = "counting";
    layer.szOsFile += static_cast<int>(sizeof(CountedFile));
    layer.pAppData = sqlite3_vfs_find(nullptr);
    layer.xOpen = OpenCounted;
    return sqlite3_vfs_register(&layer, 0);
}
// [layer]

HynGetClassObjectProc g_getClassObject;

CHynAutoPtr<IHynSQConnection> NewConnection()
{
    CHynAutoPtr<IHynSQConnection> connection;
    g_getClassObject(CLSID_HynSQConnection, IID_IHynSQConnection,
                     reinterpret_cast<void**>(connection.Receive()));
    return connection;
}

CHynAutoPtr<IHynSQConnection> Open(const char16_t* path)
{
    CHynAutoPtr<IHynSQConnection> connection = NewConnection();
    if (HynFailed(connection->Connect(path, u"", u"")))
        std::printf("  cannot open %s\n", CTovStringW(path).ToUTF8().c_str());
    return connection;
}

long long Number(IHynSQConnection* connection, const char16_t* sql)
{
    CHynAutoPtr<IHynSQRecordSet> rows;
    long long number = -1;
    if (HynSucceeded(connection->OpenRecordSet(sql, rows.Receive())))
        rows->GetFieldValue(0, &number);
    return number;
}

void Say(const char* what, HynResult result)
{
    std::printf("  %-44s %s\n", what, HynResultName(result));
}

void CountCommits()
{
    std::printf("A layer of the host's own\n");
    RegisterCounting();
    // [name]
    CHynAutoPtr<IHynSQConnection> connection = NewConnection();
    connection->Connect(u"file:media.db?vfs=counting", u"", u"");
    // [name]
    connection->ExecuteSQL(u"CREATE TABLE media (path TEXT)");

    const auto insertTwenty = [&connection]
    {
        g_syncs = 0;
        for (int i = 0; i < 20; ++i)
            connection->ExecuteSQL(u"INSERT INTO media VALUES ('sea.jpg')");
        return g_syncs.load();
    };
    const int apart = insertTwenty();
    connection->BeginTrans();
    insertTwenty();
    connection->CommitTrans();
    const int together = g_syncs;
    std::printf("  %-44s %s\n", "twenty commits reach the disk",
                apart >= 40 ? "40 times or more" : "more seldom");
    std::printf("  %-44s %s\n", "one commit of twenty rows",
                together <= 5 ? "5 times or less" : "more often");
    std::printf("  %-44s %lld\n", "rows", Number(connection, u"SELECT count(*) FROM media"));
    CHynAutoPtr<IHynSQRecordSet> mode;
    connection->OpenRecordSet(u"PRAGMA journal_mode = wal", mode.Receive());
    char16_t text[16] = {};
    std::uint32_t room = 16;
    mode->GetFieldValue(0, text, &room);
    std::printf("  %-44s %s\n", "asked for a write-ahead log it keeps",
                CTovStringW(text).ToUTF8().c_str());
}

void OpenByName()
{
    std::printf("Names\n");
    Say("a layer that nobody registered",
        NewConnection()->Connect(u"file:media.db?vfs=nowhere", u"", u""));
    Say("read only", NewConnection()->Connect(u"file:media.db?mode=ro", u"", u""));
    Say("  and an insert",
        Open(u"file:media.db?mode=ro")->ExecuteSQL(u"INSERT INTO media VALUES ('x')"));
    Say("read only, and no such file", NewConnection()->Connect(u"file:none.db?mode=ro", u"", u""));
    Say("read and write, and no such file",
        NewConnection()->Connect(u"file:none.db?mode=rw", u"", u""));
    Say("marks in a name", NewConnection()->Connect(u"file:50%25 %3f%23.db", u"", u""));
    std::printf("  %-44s %s\n", "  which has made",
                access("50% ?#.db", F_OK) == 0 ? "50% ?#.db" : "nothing");
    Say("what a file: name says, as a plain path",
        NewConnection()->Connect(u"media.db?vfs=nowhere", u"", u""));
    std::printf("  %-44s %s\n", "  which has made",
                access("media.db?vfs=nowhere", F_OK) == 0 ? "a file of that name" : "nothing");
}

void Copy()
{
    std::printf("Copies\n");
    CHynAutoPtr<IHynSQConnection> source = Open(u"media.db");
    // [copy]
    source->ExecuteSQL(u"VACUUM INTO 'copy.db'");
    CHynAutoPtr<IHynSQConnection> copy = NewConnection();
    copy->Connect(u"file:copy.db?immutable=1", u"", u"");
    // [copy]
    std::printf("  %-44s %lld\n", "rows in the copy", Number(copy, u"SELECT count(*) FROM media"));
    Say("a copy onto a copy", source->ExecuteSQL(u"VACUUM INTO 'copy.db'"));

    source->ExecuteSQL(u"DELETE FROM media WHERE rowid > 30");
    source->ExecuteSQL(u"VACUUM INTO 'newer.db'");
    std::rename("newer.db", "copy.db");
    std::printf("  %-44s %lld\n", "a newer one in its place, read before",
                Number(copy, u"SELECT count(*) FROM media"));
    copy->DisConnect();
    copy->Connect(u"file:copy.db?immutable=1", u"", u"");
    std::printf("  %-44s %lld\n", "and after DisConnect",
                Number(copy, u"SELECT count(*) FROM media"));
}

void WriteAheadLog()
{
    std::printf("The write-ahead log\n");
    CHynAutoPtr<IHynSQConnection> writer = Open(u"media.db");
    // [wal]
    writer->ExecuteSQL(u"PRAGMA journal_mode = wal");
    // [wal]
    CHynAutoPtr<IHynSQConnection> reader = Open(u"media.db");
    writer->BeginTrans();
    writer->ExecuteSQL(u"DELETE FROM media");
    std::printf("  %-44s %lld\n", "rows that a reader sees beside a writer",
                Number(reader, u"SELECT count(*) FROM media"));
    writer->CommitTrans();
    std::printf("  %-44s %lld\n", "and after its commit",
                Number(reader, u"SELECT count(*) FROM media"));
}
} // namespace

int main(int argc, char** argv)
{
    void* module = dlopen(argc > 1 ? argv[1] : "HynSQ.so", RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr)
        return std::fprintf(stderr, "cannot load the module: %s\n", dlerror()), 1;
    g_getClassObject =
        reinterpret_cast<HynGetClassObjectProc>(dlsym(module, kHynGetClassObjectName));
    CountCommits();
    OpenByName();
    Copy();
    WriteAheadLog();
}
