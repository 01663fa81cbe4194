#include <halyon/database/CHynSQColumnNames.h>

#include <new>

#include <sqlite3.h>

#include <halyon/platform/TovPCMac.h>

namespace
{
const char16_t* EngineName(sqlite3_stmt* statement, std::int32_t column) noexcept
{
    return static_cast<const char16_t*>(sqlite3_column_name16(statement, column));
}

// Without memory to learn in, each name is looked up in the engine.
std::int32_t FindInEngine(sqlite3_stmt* statement, std::int32_t columns, const char16_t* name) noexcept
{
    for (std::int32_t column = 0; column < columns; ++column)
    {
        const char16_t* columnName = EngineName(statement, column);
        if (columnName != nullptr && tov_wcscmpi(name, columnName) == 0)
            return column;
    }
    return -1;
}
} // namespace

std::int32_t CHynSQColumnNames::LearnAndSearch(sqlite3_stmt* pStatement, const char16_t* name) noexcept
{
    if (m_nColumns == 0)
    {
        const std::int32_t columns = sqlite3_column_count(pStatement);
        if (!Learn(pStatement, columns))
            return FindInEngine(pStatement, columns, name);
    }
    const std::uint32_t guess = m_pFacts[m_uLast].uNext;
    if (!IsNameOf(guess, name))
        return Search(name);
    m_uLast = guess;
    return static_cast<std::int32_t>(guess);
}

// Whether `name` is the column's; in another letter case too, but quick when it is the same to the letter.
bool CHynSQColumnNames::IsNameOf(std::uint32_t column, const char16_t* name) const noexcept
{
    return tov_wcssame(name, m_pNames[column], m_pFacts[column].uLength) || tov_wcscmpi(name, m_pNames[column]) == 0;
}

std::int32_t CHynSQColumnNames::Search(const char16_t* name) noexcept
{
    // Folding the case of a text does not change its length.
    const std::size_t length = tov_wcslen(name);
    for (std::uint32_t column = 0; column < static_cast<std::uint32_t>(m_nColumns); ++column)
    {
        if (m_pFacts[column].uLength == length && IsNameOf(column, name))
        {
            m_pFacts[m_uLast].uNext = static_cast<std::uint16_t>(column);
            m_uLast = column;
            return static_cast<std::int32_t>(column);
        }
    }
    return -1;
}

bool CHynSQColumnNames::Learn(sqlite3_stmt* pStatement, std::int32_t nColumns) noexcept
{
    if (nColumns <= 0 || nColumns > UINT16_MAX || !MakeRoom(static_cast<std::size_t>(nColumns)))
        return false;
    for (std::int32_t column = 0; column < nColumns; ++column)
    {
        const char16_t* name = EngineName(pStatement, column);
        const std::size_t length = name != nullptr ? tov_wcslen(name) : SIZE_MAX;
        if (length > UINT16_MAX)
            return false;
        m_pNames[column] = name;
        m_pFacts[column] = {static_cast<std::uint16_t>(length), 0};
    }
    m_uLast = 0;
    m_nColumns = nColumns;
    return true;
}

bool CHynSQColumnNames::MakeRoom(std::size_t columns) noexcept
{
    if (columns <= kFewColumns)
    {
        m_pNames = m_fewNames.data();
        m_pFacts = m_fewFacts.data();
        return true;
    }
    const std::size_t namesSize = columns * sizeof(const char16_t*);
    m_more.reset(new (std::nothrow) std::byte[namesSize + columns * sizeof(Facts)]);
    if (m_more == nullptr)
        return false;
    m_pNames = new (m_more.get()) const char16_t*[columns];
    m_pFacts = new (m_more.get() + namesSize) Facts[columns];
    return true;
}
