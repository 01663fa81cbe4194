#include <halyon/database/CHynSQRecordSet.h>

#include <cstring>

#include <sqlite3.h>

#include <halyon/database/CHynSQCommand.h>
#include <halyon/framework/HynIdentifiers.h>
#include <halyon/tools/CHynPubTools.h>

using namespace Halyon;

namespace
{
constexpr int kStepAttempts = 10000;
constexpr std::uint32_t kStepRetryMilliseconds = 10;

// Why the engine gave nothing: it had no memory to convert the column, or else the column is NULL or empty. A number
// that could not be converted is NULL from then on, so only the handle's last error tells.
bool NoMemory(sqlite3_stmt* statement) noexcept
{
    return sqlite3_errcode(sqlite3_db_handle(statement)) == SQLITE_NOMEM;
}
} // namespace

CHynSQRecordSet::CHynSQRecordSet(CHynSQCommand* command) : m_spCommand(command) {}

CHynSQRecordSet::~CHynSQRecordSet()
{
    Close();
}

HynResult CHynSQRecordSet::DefaultQueryInterface(const HYN_GUID& iid, void** ppv)
{
    return HynAnswerInterface<&IID_IHynSQRecordSet, &IID_IHynUnknown>(static_cast<IHynSQRecordSet*>(this), iid, ppv);
}

sqlite3_stmt* CHynSQRecordSet::GetSQstmt() const noexcept
{
    return m_spCommand != nullptr ? m_spCommand->GetSQstmt() : nullptr;
}

void CHynSQRecordSet::Close() noexcept
{
    m_nEof = 1;
    if (sqlite3_stmt* statement = GetSQstmt())
        sqlite3_reset(statement);
    m_spCommand = nullptr;
}

std::int32_t CHynSQRecordSet::GetFieldCount()
{
    return m_spCommand != nullptr ? m_spCommand->GetColumnCount() : 0;
}

HynResult CHynSQRecordSet::Step(sqlite3_stmt* statement) noexcept
{
    for (int attempt = 0; attempt < kStepAttempts; ++attempt)
    {
        switch (sqlite3_step(statement))
        {
        case SQLITE_ROW:
            return HYN_S_OK;
        case SQLITE_DONE:
            return HYN_S_FALSE;
        case SQLITE_ERROR:
            return HYN_E_SQSTEP;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            TovSleep(kStepRetryMilliseconds);
            break;
        default:
            return HYN_E_FAIL;
        }
    }
    return HYN_E_FAIL;
}

HynResult CHynSQRecordSet::Next()
{
    sqlite3_stmt* statement = GetSQstmt();
    if (statement == nullptr)
        return HYN_E_FAIL;
    const HynResult result = Step(statement);
    m_nEof = result == HYN_S_OK ? 0 : 1;
    return result;
}

HynResult CHynSQRecordSet::Reset()
{
    sqlite3_stmt* statement = GetSQstmt();
    if (statement == nullptr)
        return HYN_E_FAIL;
    m_nEof = 1;
    if (sqlite3_reset(statement) != SQLITE_OK)
        return HYN_E_FAIL;
    return Next();
}

// The statement for a caller that has been given a column count above 0: there are no columns without a statement that
// this process prepared, so that need not be asked again.
sqlite3_stmt* CHynSQRecordSet::CountedStatement() const noexcept
{
    return m_spCommand != nullptr ? m_spCommand->GetOwnStatement() : nullptr;
}

// The statement when `index` is one of its columns, else null.
sqlite3_stmt* CHynSQRecordSet::StatementForColumn(std::int32_t index)
{
    return index >= 0 && index < GetFieldCount() ? CountedStatement() : nullptr;
}

std::int32_t CHynSQRecordSet::GetFieldIndexByName(const char16_t* name)
{
    if (name == nullptr || name[0] == 0)
        return -1;
    const std::int32_t columns = GetFieldCount();
    return columns > 0 && CountedStatement() != nullptr ? m_spCommand->FindColumn(columns, name) : -1;
}

HynResult CHynSQRecordSet::GetFieldValue(std::int32_t index, std::int32_t* value)
{
    sqlite3_stmt* statement = StatementForColumn(index);
    if (statement == nullptr || value == nullptr)
        return HYN_E_FAIL;
    *value = sqlite3_column_int(statement, index);
    return HYN_S_OK;
}

HynResult CHynSQRecordSet::GetFieldValue(std::int32_t index, std::uint32_t* value)
{
    if (value == nullptr)
        return HYN_E_FAIL;
    long long wide = 0;
    const HynResult result = GetFieldValue(index, &wide);
    if (HynSucceeded(result))
        *value = static_cast<std::uint32_t>(wide);
    return result;
}

HynResult CHynSQRecordSet::GetFieldValue(std::int32_t index, long long* value)
{
    sqlite3_stmt* statement = StatementForColumn(index);
    if (statement == nullptr || value == nullptr)
        return HYN_E_FAIL;
    *value = sqlite3_column_int64(statement, index);
    return HYN_S_OK;
}

HynResult CHynSQRecordSet::GetFieldValue(std::int32_t index, double* value)
{
    sqlite3_stmt* statement = StatementForColumn(index);
    if (statement == nullptr || value == nullptr)
        return HYN_E_FAIL;
    *value = sqlite3_column_double(statement, index);
    return HYN_S_OK;
}

HynResult CHynSQRecordSet::GetFieldValue(std::int32_t index, char16_t* buffer, std::uint32_t* length)
{
    sqlite3_stmt* statement = StatementForColumn(index);
    if (statement == nullptr || buffer == nullptr)
        return HYN_E_FAIL;
    const auto* text = static_cast<const char16_t*>(sqlite3_column_text16(statement, index));
    if (text == nullptr)
        return NoMemory(statement) ? HYN_E_FAIL : HYN_E_SQNULLVALUE;
    const std::size_t needed = tov_wcslen(text) + 1;
    if (needed > *length)
        return HYN_E_BUFFERTOOSMALL;
    std::memcpy(buffer, text, needed * sizeof(char16_t));
    return HYN_S_OK;
}

HynResult CHynSQRecordSet::GetFieldValue(std::int32_t index, FILETIME* value)
{
    if (value == nullptr)
        return HYN_E_FAIL;
    double seconds = 0.0;
    const HynResult result = GetFieldValue(index, &seconds);
    if (HynSucceeded(result))
        CHynPubTools::ConvertToFileTime(value, seconds);
    return result;
}

HynResult CHynSQRecordSet::GetFieldValue(std::int32_t index, void* buffer, std::uint32_t* length)
{
    sqlite3_stmt* statement = StatementForColumn(index);
    if (statement == nullptr || length == nullptr)
        return HYN_E_FAIL;
    // The UTF-16 size, deliberately: it turns a text column into UTF-16, which the blob call below then delivers.
    const auto size = static_cast<std::uint32_t>(sqlite3_column_bytes16(statement, index));
    if (size == 0 && NoMemory(statement))
        return HYN_E_FAIL;
    if (buffer == nullptr)
    {
        *length = size;
        return HYN_S_OK;
    }
    if (*length < size)
        return HYN_E_FAIL;
    if (size == 0)
        return HYN_S_OK;
    const void* bytes = sqlite3_column_blob(statement, index);
    if (bytes == nullptr)
        return HYN_E_FAIL;
    std::memcpy(buffer, bytes, size);
    return HYN_S_OK;
}

template <class... Outputs>
HynResult CHynSQRecordSet::ReadByName(const char16_t* name, Outputs... outputs)
{
    if (IsEof() != 0)
        return HYN_E_FAIL;
    return GetFieldValue(GetFieldIndexByName(name), outputs...);
}

HynResult CHynSQRecordSet::GetFieldValue(const char16_t* name, std::int32_t* value)
{
    return ReadByName(name, value);
}

HynResult CHynSQRecordSet::GetFieldValue(const char16_t* name, std::uint32_t* value)
{
    return ReadByName(name, value);
}

HynResult CHynSQRecordSet::GetFieldValue(const char16_t* name, long long* value)
{
    return ReadByName(name, value);
}

HynResult CHynSQRecordSet::GetFieldValue(const char16_t* name, double* value)
{
    return ReadByName(name, value);
}

HynResult CHynSQRecordSet::GetFieldValue(const char16_t* name, char16_t* buffer, std::uint32_t* length)
{
    return ReadByName(name, buffer, length);
}

HynResult CHynSQRecordSet::GetFieldValue(const char16_t* name, FILETIME* value)
{
    return ReadByName(name, value);
}

HynResult CHynSQRecordSet::GetFieldValue(const char16_t* name, void* buffer, std::uint32_t* length)
{
    return ReadByName(name, buffer, length);
}
