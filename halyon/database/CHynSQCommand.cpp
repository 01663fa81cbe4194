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
constexpr std::uint32_t kPrepareRetryMicroseconds = 2000;

constexpr HynResult FromEngine(int code) noexcept
{
    return code == SQLITE_OK ? HYN_S_OK : HYN_E_FAIL;
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

    // The plain preparation, deliberately: its statements report a constraint or a changed schema at once, as a failed
    // step, and never prepare themselves anew behind the caller's back.
    for (;;)
    {
        Close();
        // No tail is asked for: to find it the engine counts the characters of the whole text, twice.
        const int code = sqlite3_prepare16(database, sql, -1, &m_pStatement, nullptr);
        m_uForkCount = TovGetForkCount();
        m_nParameters = sqlite3_bind_parameter_count(m_pStatement);
        m_nColumns = sqlite3_column_count(m_pStatement);
        if (code != SQLITE_BUSY)
            return FromEngine(code);
        TovUSleep(kPrepareRetryMicroseconds);
    }
}

HynResult CHynSQCommand::BindFieldValue(std::int32_t index, std::int32_t value)
{
    sqlite3_stmt* statement = StatementForParameter(index);
    if (statement == nullptr)
        return HYN_E_FAIL;
    return FromEngine(sqlite3_bind_int(statement, index + 1, value));
}

HynResult CHynSQCommand::BindFieldValue(std::int32_t index, std::uint32_t value)
{
    return BindFieldValue(index, static_cast<long long>(value));
}

HynResult CHynSQCommand::BindFieldValue(std::int32_t index, long long value)
{
    sqlite3_stmt* statement = StatementForParameter(index);
    if (statement == nullptr)
        return HYN_E_FAIL;
    return FromEngine(sqlite3_bind_int64(statement, index + 1, value));
}

HynResult CHynSQCommand::BindFieldValue(std::int32_t index, double value)
{
    sqlite3_stmt* statement = StatementForParameter(index);
    if (statement == nullptr)
        return HYN_E_FAIL;
    return FromEngine(sqlite3_bind_double(statement, index + 1, value));
}

HynResult CHynSQCommand::BindFieldValue(std::int32_t index, const char16_t* value)
{
    sqlite3_stmt* statement = StatementForParameter(index);
    if (value == nullptr || statement == nullptr)
        return HYN_E_FAIL;
    const std::size_t bytes = tov_wcslen(value) * sizeof(char16_t);
    if (bytes > INT32_MAX)
        return HYN_E_FAIL;
    return FromEngine(sqlite3_bind_text16(statement, index + 1, value, static_cast<int>(bytes), SQLITE_STATIC));
}

HynResult CHynSQCommand::BindFieldValue(std::int32_t index, FILETIME* value)
{
    return BindFieldValue(index, CHynPubTools::ConvertFromFileTime(value));
}

HynResult CHynSQCommand::BindFieldValue(std::int32_t index, void* data, std::uint32_t length)
{
    sqlite3_stmt* statement = StatementForParameter(index);
    if (data == nullptr || length == 0 || length > INT32_MAX || statement == nullptr)
        return HYN_E_FAIL;
    return FromEngine(sqlite3_bind_blob(statement, index + 1, data, static_cast<int>(length), SQLITE_STATIC));
}

HynResult CHynSQCommand::ExecuteSQL()
{
    // What a record set would do from its construction to its end, without one: nobody would ever see it.
    sqlite3_stmt* statement = GetSQstmt();
    if (statement == nullptr)
        return HYN_E_FAIL;
    const HynResult result = CHynSQRecordSet::Step(statement);
    sqlite3_reset(statement);
    return HynFailed(result) ? result : HYN_S_OK;
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

sqlite3_stmt* CHynSQCommand::GetSQstmt() const noexcept
{
    return m_uForkCount == TovGetForkCount() ? m_pStatement : nullptr;
}

int CHynSQCommand::Close() noexcept
{
    sqlite3_stmt* statement = GetSQstmt();
    m_pStatement = nullptr;
    m_names.Forget();
    return statement != nullptr ? sqlite3_finalize(statement) : SQLITE_OK;
}

bool CHynSQCommand::CheckAdjustBindFieldIndex(int& index) const noexcept
{
    if (GetSQstmt() == nullptr || index < 0 || index == INT32_MAX)
        return false;
    ++index;
    return index <= m_nParameters;
}

std::int32_t CHynSQCommand::FindColumn(std::int32_t nColumns, const char16_t* name) noexcept
{
    const std::int32_t column = m_names.Find(m_pStatement, m_nColumns, name);
    return column < nColumns ? column : -1;
}
