// The connection component: one engine handle for each thread that uses it.
//
// Hosts speak `IHynSQConnection`; this class is for the module's own parts. The header names the engine's types only by
// declaration.
//
// Locks: the reference count has its own (CHynUnknown); `m_mapLock` guards the handle map inside FindCreateConnection.
// Neither is ever held while the other is taken. Connect and DisConnect take none: a Connect while connected reads
// only what no longer changes, and the caller of the others guarantees that it is alone.
#pragma once

#include <array>
#include <atomic>
#include <map>

#include <halyon/database/IHynSQConnection.h>
#include <halyon/framework/CHynUnknown.h>
#include <halyon/string/CTovStringW.h>

struct sqlite3;

class CHynSQConnection : public Halyon::IHynSQConnection, public Halyon::CHynUnknown
{
public:
    CHynSQConnection() = default;

    std::uint32_t AddRef() override { return DefaultAddRef(); }
    std::uint32_t Release() override { return DefaultRelease(); }
    Halyon::HynResult QueryInterface(const Halyon::HYN_GUID& iid, void** ppv) override
    {
        return DefaultQueryInterface(iid, ppv);
    }

    Halyon::HynResult Connect(const char16_t* path, const char16_t* second, const char16_t* third) override;
    Halyon::HynResult DisConnect() override;
    Halyon::HynResult BeginTrans() override;
    Halyon::HynResult CommitTrans() override;
    Halyon::HynResult RollbackTrans() override;
    Halyon::HynResult ExecuteSQL(const char16_t* sql) override;
    Halyon::HynResult OpenRecordSet(const char16_t* sql, Halyon::IHynSQRecordSet** ppRecordSet) override;
    Halyon::HynResult CreateCommand(Halyon::IHynSQCommand** ppCommand) override;
    long long GetLastInsertID() override;

    ~CHynSQConnection() override;
    Halyon::HynResult DefaultQueryInterface(const Halyon::HYN_GUID& iid, void** ppv) override;

    // The calling thread's handle, opened now when the thread has none; null when it could not be opened, now or
    // before. The connection owns it. [any]
    sqlite3* FindCreateConnection() noexcept;
    sqlite3* GetSQdb() noexcept { return FindCreateConnection(); }

private:
    struct Handle
    {
        sqlite3* pDatabase;       // null: the open failed, and that is remembered
        std::uint32_t uForkCount; // the process that opened it; another process neither uses nor closes it
    };

    using HandleMap = std::map<std::uint32_t, Handle>; // by thread identifier

    [[nodiscard]] std::atomic<const HandleMap::value_type*>& RecentOf(std::uint32_t threadID) noexcept
    {
        return m_recent[threadID % m_recent.size()];
    }
    Halyon::HynResult ExecuteWithoutCommand(const char16_t* sql) noexcept;
    sqlite3* FindCreateInMap(std::uint32_t threadID, std::uint32_t forkCount) noexcept;

    CTovStringW m_strPath;
    CTovStringW m_strSecond;
    CTovStringW m_strThird;
    HandleMap m_handles; // guarded by m_mapLock
    Halyon::CHynLock m_mapLock;
    std::atomic<std::size_t> m_uHandles = 0; // the map's size, for Connect
    // Entries of the map that were found lately, so that a thread finds its own without the lock. An entry stays where
    // it is until DisConnect, and only its own thread reads more of it than the identifier.
    std::array<std::atomic<const HandleMap::value_type*>, 8> m_recent{};
};
