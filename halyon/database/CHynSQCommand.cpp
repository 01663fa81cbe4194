#include <halyon/database/CHynSQCommand.h>

#include <new>

#include <sqlite3.h>

#include <halyon/database/CHynSQConnection.h>
#include <halyon/database/CHynSQRecordSet.h>
#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/HynIdentifiers.h>
#include <halyon/tools/CHynPubTools.h>

using namespace Halyon;

namespace
{
HynResult FromEngine(sqlite3_stmt* statement, int code) noexcept
{
    if (code == SQLITE_OK)
        return HYN_S_OK;
    CHynSQStatement::Told(sqlite3_db_handle(statement), code);
    return HYN_E_FAIL;
}
} // namespace

CHynSQCommand::CHynSQCommand(CHynSQConnection* connection) : m_pConnection(connection)
{
    if (m_pConnection != nullptr)
        m_pConnection->AddRef();
}

CHynSQCommand::~CHynSQCommand()
{
    Close();
    if (m_pConnection != nullptr)
        m_pConnection->Release();
}

HynResult CHynSQCommand::DefaultQueryInterface(const HYN_GUID& iid, void** ppv)
{
    return HynAnswerInterface<&IID_IHynSQCommand, &IID_IHynUnknown>(static_cast<IHynSQCommand*>(this), iid, ppv);
}

HynResult CHynSQCommand::PrepareSQL(const char16_t* sql)
{
    if (m_pConnection == nullptr || sql == nullptr)
        return HYN_E_FAIL;
    sqlite3* database = m_pConnection->GetSQdb();
    if (database == nullptr)
        return HYN_E_FAIL;

    m_names.Forget();
    return m_statement.Prepare(database, sql);
}

HynResult CHynSQCommand::BindFieldValue(std::int32_t index, std::int32_t value)
{
    sqlite3_stmt* statement = m_statement.ForParameter(index);
    if (statement == nullptr)
        return HYN_E_FAIL;
    return FromEngine(statement, sqlite3_bind_int(statement, index + 1, value));
}

HynResult CHynSQCommand::BindFieldValue(std::int32_t index, std::uint32_t value)
{
    return BindFieldValue(index, static_cast<long long>(value));
}

HynResult CHynSQCommand::BindFieldValue(std::int32_t index, long long value)
{
    sqlite3_stmt* statement = m_statement.ForParameter(index);
    if (statement == nullptr)
        return HYN_E_FAIL;
    return FromEngine(statement, sqlite3_bind_int64(statement, index + 1, value));
}

HynResult CHynSQCommand::BindFieldValue(std::int32_t index, double value)
{
    sqlite3_stmt* statement = m_statement.ForParameter(index);
    if (statement == nullptr)
        return HYN_E_FAIL;
    return FromEngine(statement, sqlite3_bind_double(statement, index + 1, value));
}

HynResult CHynSQCommand::BindFieldValue(std::int32_t index, const char16_t* value)
{
    sqlite3_stmt* statement = m_statement.ForParameter(index);
    if (value == nullptr || statement == nullptr)
        return HYN_E_FAIL;
    const std::size_t bytes = tov_wcslen(value) * sizeof(char16_t);
    if (bytes > INT32_MAX)
        return HYN_E_FAIL;
    return FromEngine(statement,
                      sqlite3_bind_text16(statement, index + 1, value, static_cast<int>(bytes), SQLITE_STATIC));
}

HynResult CHynSQCommand::BindFieldValue(std::int32_t index, FILETIME* value)
{
    return BindFieldValue(index, CHynPubTools::ConvertFromFileTime(value));
}

HynResult CHynSQCommand::BindFieldValue(std::int32_t index, void* data, std::uint32_t length)
{
    sqlite3_stmt* statement = m_statement.ForParameter(index);
    if (data == nullptr || length == 0 || length > INT32_MAX || statement == nullptr)
        return HYN_E_FAIL;
    return FromEngine(statement,
                      sqlite3_bind_blob(statement, index + 1, data, static_cast<int>(length), SQLITE_STATIC));
}

HynResult CHynSQCommand::ExecuteSQL()
{
    // What a record set would do from its construction to its end, without one: nobody would ever see it.
    if (m_statement.Get() == nullptr)
        return HYN_E_FAIL;
    return m_statement.Execute();
}

HynResult CHynSQCommand::OpenRecordSet(IHynSQRecordSet** ppRecordSet)
{
    if (ppRecordSet == nullptr)
        return HYN_E_FAIL;
    CHynAutoPtr<CHynSQRecordSet> spRecordSet = new (std::nothrow) CHynSQRecordSet(this);
    if (spRecordSet == nullptr)
        return HYN_E_FAIL;
    const HynResult result = spRecordSet->Next();
    if (HynFailed(result))
        return result;
    *ppRecordSet = spRecordSet.Detach();
    return HYN_S_OK;
}

int CHynSQCommand::Close() noexcept
{
    m_names.Forget();
    return m_statement.Finalize();
}

bool CHynSQCommand::CheckAdjustBindFieldIndex(int& index) const noexcept
{
    if (m_statement.Get() == nullptr || index < 0 || index == INT32_MAX)
        return false;
    ++index;
    return m_statement.ForParameter(index - 1) != nullptr;
}
