#include <halyon/database/CHynSQRecordSet.h>

#include <cstring>

#include <sqlite3.h>

#include <halyon/database/CHynSQCommand.h>
#include <halyon/framework/HynIdentifiers.h>
#include <halyon/tools/CHynPubTools.h>

using namespace Halyon;

namespace
{
// What the readers read from.
struct Row
{
    sqlite3_stmt* pEngine;
    CHynSQStatement& statement;

    operator sqlite3_stmt*() const noexcept { return pEngine; }
};

// The readers: one column of a statement that has it. HYN_E_FAIL: a null output, or no memory.

HynResult Read(Row row, std::int32_t column, std::int32_t* value) noexcept
{
    if (value == nullptr)
        return HYN_E_FAIL;
    *value = sqlite3_column_int(row, column);
    return HYN_S_OK;
}

HynResult Read(Row row, std::int32_t column, long long* value) noexcept
{
    if (value == nullptr)
        return HYN_E_FAIL;
    *value = sqlite3_column_int64(row, column);
    return HYN_S_OK;
}

HynResult Read(Row row, std::int32_t column, std::uint32_t* value) noexcept
{
    if (value == nullptr)
        return HYN_E_FAIL;
    *value = static_cast<std::uint32_t>(sqlite3_column_int64(row, column));
    return HYN_S_OK;
}

HynResult Read(Row row, std::int32_t column, double* value) noexcept
{
    if (value == nullptr)
        return HYN_E_FAIL;
    *value = sqlite3_column_double(row, column);
    return HYN_S_OK;
}

HynResult Read(Row row, std::int32_t column, FILETIME* value) noexcept
{
    if (value == nullptr)
        return HYN_E_FAIL;
    CHynPubTools::ConvertToFileTime(value, sqlite3_column_double(row, column));
    return HYN_S_OK;
}

HynResult Read(Row row, std::int32_t column, char16_t* buffer, std::uint32_t* length) noexcept
{
    if (buffer == nullptr)
        return HYN_E_FAIL;
    const auto* text = static_cast<const char16_t*>(sqlite3_column_text16(row, column));
    if (text == nullptr)
        return row.statement.HasLostValue() ? HYN_E_FAIL : HYN_E_SQNULLVALUE;
    const std::size_t needed = tov_wcslen(text) + 1;
    if (needed > *length)
        return HYN_E_BUFFERTOOSMALL;
    std::memcpy(buffer, text, needed * sizeof(char16_t));
    return HYN_S_OK;
}

HynResult Read(Row row, std::int32_t column, void* buffer, std::uint32_t* length) noexcept
{
    if (length == nullptr)
        return HYN_E_FAIL;
    // The UTF-16 size, deliberately: it turns a text column into UTF-16, which the blob call below then delivers.
    const auto size = static_cast<std::uint32_t>(sqlite3_column_bytes16(row, column));
    if (size == 0 && row.statement.HasLostValue())
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
    const void* bytes = sqlite3_column_blob(row, column);
    if (bytes == nullptr)
    {
        CHynSQStatement::Told(sqlite3_db_handle(row), SQLITE_NOMEM);
        return HYN_E_FAIL;
    }
    std::memcpy(buffer, bytes, size);
    return HYN_S_OK;
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
    if (GetSQstmt() != nullptr)
        m_spCommand->GetStatement().Reset();
    m_spCommand = nullptr;
}

std::int32_t CHynSQRecordSet::GetFieldCount()
{
    return m_spCommand != nullptr ? m_spCommand->GetStatement().GetColumnCount() : 0;
}

HynResult CHynSQRecordSet::Next()
{
    if (GetSQstmt() == nullptr)
        return HYN_E_FAIL;
    const HynResult result = m_spCommand->GetStatement().Step();
    m_nEof = result == HYN_S_OK ? 0 : 1;
    return result;
}

HynResult CHynSQRecordSet::Reset()
{
    if (GetSQstmt() == nullptr)
        return HYN_E_FAIL;
    m_nEof = 1;
    if (m_spCommand->GetStatement().Reset() != SQLITE_OK)
        return HYN_E_FAIL;
    return Next();
}

std::int32_t CHynSQRecordSet::GetFieldIndexByName(const char16_t* name) noexcept
{
    return name != nullptr && name[0] != 0 && m_spCommand != nullptr ? m_spCommand->FindColumn(name) : -1;
}

template <class... Outputs>
HynResult CHynSQRecordSet::ReadByIndex(std::int32_t index, Outputs... outputs) const noexcept
{
    if (m_spCommand == nullptr)
        return HYN_E_FAIL;
    CHynSQStatement& statement = m_spCommand->GetStatement();
    sqlite3_stmt* engine = statement.ForColumn(index);
    return engine != nullptr ? Read(Row{engine, statement}, index, outputs...) : HYN_E_FAIL;
}

template <class... Outputs>
HynResult CHynSQRecordSet::ReadByName(const char16_t* name, Outputs... outputs) noexcept
{
    if (m_nEof != 0)
        return HYN_E_FAIL;
    const std::int32_t index = GetFieldIndexByName(name);
    return index >= 0 ? Read(Row{GetSQstmt(), m_spCommand->GetStatement()}, index, outputs...) : HYN_E_FAIL;
}

HynResult CHynSQRecordSet::GetFieldValue(const char16_t* name, std::int32_t* value)
{
    return ReadByName(name, value);
}

HynResult CHynSQRecordSet::GetFieldValue(std::int32_t index, std::int32_t* value)
{
    return ReadByIndex(index, value);
}

HynResult CHynSQRecordSet::GetFieldValue(const char16_t* name, std::uint32_t* value)
{
    return ReadByName(name, value);
}

HynResult CHynSQRecordSet::GetFieldValue(std::int32_t index, std::uint32_t* value)
{
    return ReadByIndex(index, value);
}

HynResult CHynSQRecordSet::GetFieldValue(const char16_t* name, long long* value)
{
    return ReadByName(name, value);
}

HynResult CHynSQRecordSet::GetFieldValue(std::int32_t index, long long* value)
{
    return ReadByIndex(index, value);
}

HynResult CHynSQRecordSet::GetFieldValue(const char16_t* name, double* value)
{
    return ReadByName(name, value);
}

HynResult CHynSQRecordSet::GetFieldValue(std::int32_t index, double* value)
{
    return ReadByIndex(index, value);
}

HynResult CHynSQRecordSet::GetFieldValue(const char16_t* name, char16_t* buffer, std::uint32_t* length)
{
    return ReadByName(name, buffer, length);
}

HynResult CHynSQRecordSet::GetFieldValue(std::int32_t index, char16_t* buffer, std::uint32_t* length)
{
    return ReadByIndex(index, buffer, length);
}

HynResult CHynSQRecordSet::GetFieldValue(const char16_t* name, FILETIME* value)
{
    return ReadByName(name, value);
}

HynResult CHynSQRecordSet::GetFieldValue(std::int32_t index, FILETIME* value)
{
    return ReadByIndex(index, value);
}

HynResult CHynSQRecordSet::GetFieldValue(const char16_t* name, void* buffer, std::uint32_t* length)
{
    return ReadByName(name, buffer, length);
}

HynResult CHynSQRecordSet::GetFieldValue(std::int32_t index, void* buffer, std::uint32_t* length)
{
    return ReadByIndex(index, buffer, length);
}
