// A disk for the engine that exists in memory alone, and fails as a test wants: an operation on its files, its space,
// or its power.
//
//     Storage storage;                                     // empty; one at a time
//     storage.FailAt(Storage::Fault::Write, 3, false);     // the third write from now on fails, once
//     storage.CutPower(seed);                              // what was not synced is there in parts, or not at all
//
// It is reached by the name kStorageName in the path of a database ("file:/name?vfs=..."). Not for several threads, nor
// for several connections at a time: nobody waits for a lock.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <sqlite3.h>

namespace HalyonTest
{
inline constexpr char kStorageName[] = "failing-disk";

class Storage
{
public:
    enum class Fault
    {
        Read,
        Write,
        Sync,
        Lock,
        Open,
        Truncate,
        Delete,
        Space, // a write that finds no room; the disk stays as full as it is when that is for good
        Any,
    };
    static constexpr std::pair<Fault, const char*> kFaults[] = {
        {Fault::Read, "read"},     {Fault::Write, "write"}, {Fault::Sync, "sync"},
        {Fault::Lock, "lock"},     {Fault::Open, "open"},   {Fault::Truncate, "truncate"},
        {Fault::Delete, "delete"}, {Fault::Space, "space"}, {Fault::Any, "any"}};

    Storage();
    ~Storage();
    Storage(const Storage&) = delete;
    Storage& operator=(const Storage&) = delete;

    // The `nth` operation of this sort from now on fails, and all after it when `forGood`. 0: none fails.
    void FailAt(Fault fault, int nth, bool forGood);
    [[nodiscard]] bool HasFailed() const { return m_failed; }

    // Files that are open now are gone: whatever is done with them fails. Of what was not synced, a sector is there or
    // not; names that were made or deleted since their folder was synced are so up to some moment, unless
    // `keepsNames`.
    void CutPower(std::uint32_t seed, bool keepsNames);

private:
    friend struct StorageFile;
    friend struct StorageSystem;

    struct Change
    {
        std::size_t offset = 0;
        std::string bytes;
        bool isTruncation = false; // to `offset`
    };
    struct Inode
    {
        std::string now;
        std::string synced;
        std::vector<Change> changes;                  // from what is synced to what is now
        std::vector<std::unique_ptr<char[]>> regions; // of the memory beside the file
        bool isLost = false;                          // with the power

        void Apply(Change change);
        void Sync();
    };
    using InodePtr = std::shared_ptr<Inode>;
    using Names = std::map<std::string, InodePtr>;

    [[nodiscard]] bool Fails(Fault fault);
    void Rename(const std::string& name, InodePtr inode);
    void SyncNames();

    Names m_names;
    Names m_syncedNames;
    std::vector<Names::value_type> m_nameChanges; // null: deleted
    Fault m_fault = Fault::Any;
    int m_untilFailure = 0;
    bool m_forGood = false;
    bool m_failed = false;
};
} // namespace HalyonTest
