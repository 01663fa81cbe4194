#include <halyon/database/CHynSQConnection.h>

#include <new>

#include <sqlite3.h>

#include <halyon/database/CHynSQCommand.h>
#include <halyon/database/CHynSQStatement.h>
#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/HynIdentifiers.h>
#include <halyon/framework/HynThreadID.h>

using namespace Halyon;

namespace
{
// A copy of `psz`; false when there was no memory for it.
bool CopyText(const char16_t* psz, CTovStringW& copy) noexcept
{
    copy = psz;
    return static_cast<std::size_t>(copy.GetLength()) == tov_wcslen(psz);
}

sqlite3* OpenHandle(const char16_t* path) noexcept
{
    sqlite3* database = nullptr;
    if (sqlite3_open16(path, &database) == SQLITE_OK)
        return database;
    sqlite3_close(database);
    return nullptr;
}

void CloseHandle(sqlite3* database) noexcept
{
    // A handle with live statements refuses; it then goes with the last of them.
    if (sqlite3_close(database) == SQLITE_BUSY)
        sqlite3_close_v2(database);
}
} // namespace

CHynSQConnection::~CHynSQConnection()
{
    CHynSQConnection::DisConnect();
}

HynResult CHynSQConnection::DefaultQueryInterface(const HYN_GUID& iid, void** ppv)
{
    return HynAnswerInterface<&IID_IHynSQConnection, &IID_IHynUnknown>(static_cast<IHynSQConnection*>(this), iid, ppv);
}

HynResult CHynSQConnection::Connect(const char16_t* path, const char16_t* second, const char16_t* third)
{
    if (path == nullptr || second == nullptr || third == nullptr)
        return HYN_E_FAIL;

    // The map is the only record of being connected. Other threads may be adding their handles to it right now.
    if (m_uHandles.load(std::memory_order_acquire) != 0)
    {
        const bool known = tov_wcscmpi(path, m_strPath) == 0 || tov_wcscmpi(second, m_strSecond) == 0 ||
                           tov_wcscmpi(third, m_strThird) == 0;
        return known ? HYN_S_OK : HYN_E_FAIL;
    }

    CTovStringW pathCopy;
    CTovStringW secondCopy;
    CTovStringW thirdCopy;
    if (!CopyText(path, pathCopy) || !CopyText(second, secondCopy) || !CopyText(third, thirdCopy))
        return HYN_E_FAIL;
    m_strPath = std::move(pathCopy);
    m_strSecond = std::move(secondCopy);
    m_strThird = std::move(thirdCopy);
    return FindCreateConnection() != nullptr ? HYN_S_OK : HYN_E_FAIL;
}

// Without the map's lock: nobody else uses the connection by then, and in a child made by fork the lock may be closed.
HynResult CHynSQConnection::DisConnect() HYN_UNCHECKED
{
    const std::uint32_t forkCount = TovGetForkCount();
    for (const auto& [threadID, handle] : m_handles)
    {
        if (handle.uForkCount == forkCount)
            CloseHandle(handle.pDatabase);
    }
    m_handles.clear();
    m_uHandles.store(0, std::memory_order_relaxed);
    return HYN_S_OK;
}

HynResult CHynSQConnection::BeginTrans()
{
    return ExecuteSQL(u"begin exclusive;");
}

HynResult CHynSQConnection::CommitTrans()
{
    const HynResult result = ExecuteSQL(u"commit;");
    if (HynFailed(result))
        RollbackTrans();
    return result;
}

HynResult CHynSQConnection::RollbackTrans()
{
    return ExecuteSQL(u"rollback;");
}

HynResult CHynSQConnection::ExecuteSQL(const char16_t* sql)
{
    // What a command would do from its creation to its end, without one: nobody would ever see it.
    sqlite3* database = FindCreateConnection();
    if (database == nullptr || sql == nullptr)
        return HYN_E_FAIL;
    CHynSQStatement statement;
    const HynResult result = statement.Prepare(database, sql);
    return HynFailed(result) ? result : statement.Execute();
}

HynResult CHynSQConnection::OpenRecordSet(const char16_t* sql, IHynSQRecordSet** ppRecordSet)
{
    CHynAutoPtr<IHynSQCommand> spCommand;
    HynResult result = CreateCommand(spCommand.Receive());
    if (HynFailed(result))
        return result;
    result = spCommand->PrepareSQL(sql);
    if (HynFailed(result))
        return result;
    result = spCommand->OpenRecordSet(ppRecordSet);
    return HynFailed(result) ? result : HYN_S_OK;
}

HynResult CHynSQConnection::CreateCommand(IHynSQCommand** ppCommand)
{
    if (ppCommand == nullptr || FindCreateConnection() == nullptr)
        return HYN_E_FAIL;
    CHynAutoPtr<CHynSQCommand> spCommand = new (std::nothrow) CHynSQCommand(this);
    if (spCommand == nullptr)
        return HYN_E_FAIL;
    *ppCommand = spCommand.Detach();
    return HYN_S_OK;
}

long long CHynSQConnection::GetLastInsertID()
{
    sqlite3* database = FindCreateConnection();
    return database != nullptr ? sqlite3_last_insert_rowid(database) : 0;
}

sqlite3* CHynSQConnection::FindCreateConnection() noexcept
{
    const CHynAutoLock lock(m_mapLock);
    const std::uint32_t threadID = HynGetCurrentThreadID();
    const std::uint32_t forkCount = TovGetForkCount();
    const auto found = m_handles.find(threadID);
    if (found != m_handles.end() && found->second.uForkCount == forkCount)
        return found->second.pDatabase;

    sqlite3* database = OpenHandle(m_strPath);
    try
    {
        m_handles.insert_or_assign(threadID, Handle{database, forkCount});
        m_uHandles.store(m_handles.size(), std::memory_order_release);
    }
    catch (const std::bad_alloc&)
    {
        // Not remembered: the next call from this thread tries again.
        sqlite3_close(database);
        return nullptr;
    }
    return database;
}
