// The snippets of docs/write-a-host.md; prints docs/snippets/host.out.
//   host MODULE
#include <cstdio>
#include <dlfcn.h>
#include <string>
#include <thread>

#include <halyon/database/IHynSQCommand.h>
#include <halyon/database/IHynSQConnection.h>
#include <halyon/database/IHynSQRecordSet.h>
#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/HynIdentifiers.h>
#include <halyon/framework/MyDll.h>
#include <halyon/string/CTovStringW.h>

using namespace Halyon;

namespace
{
// [check]
bool Ok(HynResult result, const char* action)
{
    if (HynFailed(result))
        std::printf("%s: %s\n", action, HynResultName(result));
    return HynSucceeded(result);
}
// [check]

// [insert]
bool Add(IHynSQConnection* connection, const CTovStringW& path, long long size)
{
    CHynAutoPtr<IHynSQCommand> insert;
    return Ok(connection->CreateCommand(insert.Receive()), "making a command") &&
           Ok(insert->PrepareSQL(u"INSERT INTO media (path, size) VALUES (?, ?)"), "preparing") &&
           Ok(insert->BindFieldValue(0, path), "binding the path") && // not copied: it must stay
           Ok(insert->BindFieldValue(1, size), "binding the size") &&
           Ok(insert->ExecuteSQL(), "inserting");
}
// [insert]

// [rows]
bool List(IHynSQConnection* connection)
{
    CHynAutoPtr<IHynSQRecordSet> rows;
    HynResult result = connection->OpenRecordSet(
        u"SELECT path, size, rating FROM media ORDER BY path", rows.Receive());
    for (; HynSucceeded(result) && rows->IsEof() == 0; result = rows->Next())
    {
        char16_t path[1024];
        std::uint32_t room = 1024; // in units, with the terminator
        long long size = 0;
        char16_t rating[8];
        std::uint32_t ratingRoom = 8;
        rows->GetFieldValue(0, path, &room);
        rows->GetFieldValue(u"size", &size);
        const bool isRated =
            rows->GetFieldValue(u"rating", rating, &ratingRoom) != HYN_E_SQNULLVALUE;
        std::printf("%8lld  %s%s\n", size, CTovStringW(path).ToUTF8().c_str(),
                    isRated ? "" : ", not rated");
    }
    return Ok(result, "walking the rows");
}
// [rows]

void Use(HynGetClassObjectProc getClassObject)
{
    // [open]
    CHynAutoPtr<IHynSQConnection> connection;
    void** out = reinterpret_cast<void**>(connection.Receive());
    if (!Ok(getClassObject(CLSID_HynSQConnection, IID_IHynSQConnection, out),
            "asking for a connection"))
        return;
    if (!Ok(connection->Connect(u"media.db", u"", u""), "opening media.db"))
        return;
    // [open]

    // [execute]
    connection->BeginTrans();
    Ok(connection->ExecuteSQL(
           u"CREATE TABLE media (path TEXT PRIMARY KEY, size INTEGER, rating INTEGER)"),
       "creating");
    Add(connection, u"/home/ann/sea.jpg", 48211);
    Add(connection, u"/home/ann/harbour.jpg", 73904);
    Ok(connection->CommitTrans(), "committing");
    // [execute]
    Add(connection, u"/home/ann/sea.jpg", 1);

    // [thread]
    std::thread reader([connection] { List(connection); }); // it gets a handle of its own
    reader.join();
    connection->DisConnect(); // only when no other thread uses it
    // [thread]
}
} // namespace

int main(int argc, char** argv)
{
    // [load]
    void* module = dlopen(argc > 1 ? argv[1] : "HynSQ.so", RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr)
        return std::fprintf(stderr, "cannot load the module: %s\n", dlerror()), 1;
    auto getClassObject =
        reinterpret_cast<HynGetClassObjectProc>(dlsym(module, kHynGetClassObjectName));
    // [load]
    Use(getClassObject);
    // [unload]
    dlclose(module); // after the last object is gone: its code lies in there
    // [unload]
}
