#include <tests/faults/Storage.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

namespace HalyonTest
{
namespace
{
constexpr std::size_t kSector = 512;

Storage* g_storage = nullptr;

void Overwrite(std::string& content, std::size_t offset, std::string_view bytes)
{
    if (content.size() < offset + bytes.size())
        content.resize(offset + bytes.size());
    std::copy(bytes.begin(), bytes.end(), content.begin() + static_cast<std::ptrdiff_t>(offset));
}
} // namespace

void Storage::Inode::Apply(Change change)
{
    if (change.isTruncation)
        now.resize(std::min(now.size(), change.offset));
    else
        Overwrite(now, change.offset, change.bytes);
    changes.push_back(std::move(change));
}

void Storage::Inode::Sync()
{
    synced = now;
    changes.clear();
}

void Storage::FailAt(Fault fault, int nth, bool forGood)
{
    m_fault = fault;
    m_untilFailure = nth;
    m_forGood = forGood;
    m_failed = false;
}

bool Storage::Fails(Fault fault)
{
    if (m_fault != fault && (m_fault != Fault::Any || fault == Fault::Space))
        return false;
    if (m_untilFailure == 0)
        return m_failed && m_forGood;
    m_failed = --m_untilFailure == 0;
    return m_failed;
}

void Storage::Rename(const std::string& name, InodePtr inode)
{
    if (inode != nullptr)
        m_names[name] = inode;
    else
        m_names.erase(name);
    m_nameChanges.emplace_back(name, std::move(inode));
}

void Storage::SyncNames()
{
    m_syncedNames = m_names;
    m_nameChanges.clear();
}

void Storage::CutPower(std::uint32_t seed, bool keepsNames)
{
    std::mt19937 random(seed);
    std::size_t kept = keepsNames ? m_nameChanges.size() : random() % (m_nameChanges.size() + 1);
    for (const auto& [name, inode] : m_nameChanges)
    {
        if (kept-- == 0)
            break;
        if (inode != nullptr)
            m_syncedNames[name] = inode;
        else
            m_syncedNames.erase(name);
    }
    for (auto& [name, inode] : m_syncedNames)
    {
        // Sectors of all writes, each on its own; what a later one holds need not be what stays.
        std::vector<Change> sectors;
        for (const Change& change : inode->changes)
        {
            if (change.isTruncation)
                sectors.push_back(change);
            for (std::size_t at = 0; at < change.bytes.size();)
            {
                const std::size_t length = std::min(kSector - (change.offset + at) % kSector, change.bytes.size() - at);
                sectors.push_back({change.offset + at, change.bytes.substr(at, length), false});
                at += length;
            }
        }
        std::shuffle(sectors.begin(), sectors.end(), random);
        sectors.resize(random() % (sectors.size() + 1));
        auto after = std::make_shared<Inode>();
        after->now = inode->synced;
        for (Change& sector : sectors)
            after->Apply(std::move(sector));
        after->Sync();
        inode = after;
    }
    for (const auto& [name, inode] : m_names)
        inode->isLost = true;
    m_names = m_syncedNames;
    m_nameChanges.clear();
    FailAt(Fault::Any, 0, false);
}

// An open file. The engine has the memory; these are the operations behind its table.
struct StorageFile : sqlite3_file
{
    Storage::InodePtr inode;
    std::string name;
    int level = SQLITE_LOCK_NONE;
    bool deletesOnClose = false;
    bool isNewJournal = false;

    bool Fails(Storage::Fault fault) const { return g_storage == nullptr || inode->isLost || g_storage->Fails(fault); }

    int Read(void* to, int count, sqlite3_int64 from) const
    {
        if (Fails(Storage::Fault::Read))
            return SQLITE_IOERR_READ;
        const std::string& content = inode->now;
        const auto offset = static_cast<std::size_t>(from);
        const auto wanted = static_cast<std::size_t>(count);
        const std::size_t got = offset < content.size() ? std::min(wanted, content.size() - offset) : 0;
        std::memcpy(to, content.data() + std::min(offset, content.size()), got);
        std::memset(static_cast<char*>(to) + got, 0, wanted - got);
        return got == wanted ? SQLITE_OK : SQLITE_IOERR_SHORT_READ;
    }

    int Write(const void* from, int count, sqlite3_int64 to) const
    {
        const auto offset = static_cast<std::size_t>(to);
        const std::string bytes(static_cast<const char*>(from), static_cast<std::size_t>(count));
        if (offset + bytes.size() > inode->now.size() && Fails(Storage::Fault::Space))
            return SQLITE_FULL;
        if (Fails(Storage::Fault::Write))
        {
            if (!inode->isLost) // part of it may have been written
                inode->Apply({offset, bytes.substr(0, bytes.size() / 2), false});
            return SQLITE_IOERR_WRITE;
        }
        inode->Apply({offset, bytes, false});
        return SQLITE_OK;
    }

    int Truncate(sqlite3_int64 size) const
    {
        if (Fails(Storage::Fault::Truncate))
            return SQLITE_IOERR_TRUNCATE;
        inode->Apply({static_cast<std::size_t>(size), {}, true});
        return SQLITE_OK;
    }

    // The engine's own storage syncs the folder with a new journal, and with that alone.
    int Sync(int /*flags*/)
    {
        if (Fails(Storage::Fault::Sync))
            return SQLITE_IOERR_FSYNC;
        inode->Sync();
        if (std::exchange(isNewJournal, false))
            g_storage->SyncNames();
        return SQLITE_OK;
    }

    int Size(sqlite3_int64* size) const
    {
        if (Fails(Storage::Fault::Read))
            return SQLITE_IOERR_FSTAT;
        *size = static_cast<sqlite3_int64>(inode->now.size());
        return SQLITE_OK;
    }

    int Lock(int wanted)
    {
        if (Fails(Storage::Fault::Lock))
            return SQLITE_IOERR_LOCK;
        level = std::max(level, wanted);
        return SQLITE_OK;
    }

    int Unlock(int wanted)
    {
        level = std::min(level, wanted);
        return SQLITE_OK;
    }

    int IsReserved(int* isReserved) const
    {
        *isReserved = level >= SQLITE_LOCK_RESERVED ? 1 : 0;
        return Fails(Storage::Fault::Lock) ? SQLITE_IOERR_CHECKRESERVEDLOCK : SQLITE_OK;
    }

    int MapShared(int region, int size, int extend, void volatile** to) const
    {
        *to = nullptr;
        if (Fails(Storage::Fault::Open))
            return SQLITE_IOERR_SHMMAP;
        auto& regions = inode->regions;
        while (extend != 0 && regions.size() <= static_cast<std::size_t>(region))
            regions.push_back(std::make_unique<char[]>(static_cast<std::size_t>(size)));
        if (static_cast<std::size_t>(region) < regions.size())
            *to = regions[static_cast<std::size_t>(region)].get();
        return SQLITE_OK;
    }

    int LockShared(int /*first*/, int /*count*/, int flags) const
    {
        return (flags & SQLITE_SHM_LOCK) != 0 && Fails(Storage::Fault::Lock) ? SQLITE_IOERR_LOCK : SQLITE_OK;
    }

    int UnmapShared(int isDeleted) const
    {
        if (isDeleted != 0)
            inode->regions.clear();
        return SQLITE_OK;
    }

    int Close()
    {
        if (deletesOnClose && g_storage != nullptr && !inode->isLost)
            g_storage->m_names.erase(name);
        this->~StorageFile();
        return SQLITE_OK;
    }
};

namespace
{
// An operation as the engine's table has it.
template <auto operation, class... Arguments>
int Call(sqlite3_file* file, Arguments... arguments)
{
    return (static_cast<StorageFile*>(file)->*operation)(arguments...);
}

const sqlite3_io_methods kFileMethods = {
    2,
    Call<&StorageFile::Close>,
    Call<&StorageFile::Read>,
    Call<&StorageFile::Write>,
    Call<&StorageFile::Truncate>,
    Call<&StorageFile::Sync>,
    Call<&StorageFile::Size>,
    Call<&StorageFile::Lock>,
    Call<&StorageFile::Unlock>,
    Call<&StorageFile::IsReserved>,
    [](sqlite3_file*, int, void*) { return SQLITE_NOTFOUND; },
    [](sqlite3_file*) { return static_cast<int>(kSector); },
    [](sqlite3_file*) { return 0; },
    Call<&StorageFile::MapShared>,
    Call<&StorageFile::LockShared>,
    [](sqlite3_file*) {},
    Call<&StorageFile::UnmapShared>,
    nullptr,
    nullptr,
};
} // namespace

// The table's side of the files' names.
struct StorageSystem
{
    static int Open(sqlite3_vfs*, const char* name, sqlite3_file* memory, int flags, int* outFlags)
    {
        memory->pMethods = nullptr;
        if (g_storage == nullptr || g_storage->Fails(Storage::Fault::Open))
            return SQLITE_CANTOPEN;
        static int s_temporary = 0;
        const std::string key = name != nullptr ? name : "temporary " + std::to_string(++s_temporary);
        const auto found = g_storage->m_names.find(key);
        const bool isNew = found == g_storage->m_names.end();
        if (isNew && (flags & SQLITE_OPEN_CREATE) == 0)
            return SQLITE_CANTOPEN;
        auto* file = new (memory) StorageFile;
        file->pMethods = &kFileMethods;
        file->inode = isNew ? std::make_shared<Storage::Inode>() : found->second;
        file->name = key;
        file->deletesOnClose = (flags & SQLITE_OPEN_DELETEONCLOSE) != 0;
        file->isNewJournal = isNew && (flags & (SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_WAL)) != 0;
        if (isNew)
            g_storage->Rename(key, file->inode);
        if (outFlags != nullptr)
            *outFlags = flags;
        return SQLITE_OK;
    }

    static int Delete(sqlite3_vfs*, const char* name, int syncsFolder)
    {
        if (g_storage == nullptr || g_storage->Fails(Storage::Fault::Delete))
            return SQLITE_IOERR_DELETE;
        if (!g_storage->m_names.contains(name))
            return SQLITE_IOERR_DELETE_NOENT;
        g_storage->Rename(name, nullptr);
        if (syncsFolder != 0)
            g_storage->SyncNames();
        return SQLITE_OK;
    }

    static int Access(sqlite3_vfs*, const char* name, int, int* result)
    {
        if (g_storage == nullptr || g_storage->Fails(Storage::Fault::Open))
            return SQLITE_IOERR_ACCESS;
        *result = g_storage->m_names.contains(name) ? 1 : 0;
        return SQLITE_OK;
    }
};

namespace
{
sqlite3_vfs* System()
{
    static sqlite3_vfs s_system = []
    {
        sqlite3_vfs system = *sqlite3_vfs_find(nullptr); // random numbers, sleep and time are its own
        system.szOsFile = sizeof(StorageFile);
        system.mxPathname = 200;
        system.pNext = nullptr;
        system.zName = kStorageName;
        system.xOpen = StorageSystem::Open;
        system.xDelete = StorageSystem::Delete;
        system.xAccess = StorageSystem::Access;
        system.xFullPathname = [](sqlite3_vfs*, const char* name, int size, char* to)
        {
            sqlite3_snprintf(size, to, "%s", name);
            return SQLITE_OK;
        };
        return system;
    }();
    return &s_system;
}
} // namespace

Storage::Storage()
{
    sqlite3_vfs_register(System(), 0);
    g_storage = this;
}

Storage::~Storage()
{
    g_storage = nullptr;
}
} // namespace HalyonTest
