// The connection component: one engine handle for each thread that uses it.
//
// Hosts speak `IHynSQConnection`; this class is for the module's own parts. The header names the engine's types only by
// declaration.
//
// Locks: the reference count has its own (CHynUnknown); `m_mapLock` guards the handle map inside FindCreateConnection.
// Neither is ever held while the other is taken. Connect and DisConnect take none: a Connect while connected reads
// only what no longer changes, and the caller of the others guarantees that it is alone.
#pragma once

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

    CTovStringW m_strPath;
    CTovStringW m_strSecond;
    CTovStringW m_strThird;
    std::map<std::uint32_t, Handle> m_handles HYN_GUARDED_BY(m_mapLock); // by thread identifier
    Halyon::CHynLock m_mapLock;
    std::atomic<std::size_t> m_uHandles = 0; // the map's size, for Connect
};
