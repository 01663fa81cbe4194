#include <halyon/database/CHynSQColumnNames.h>

#include <bit>
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

std::int32_t CHynSQColumnNames::Find(sqlite3_stmt* pStatement, std::int32_t nColumns, const char16_t* name) noexcept
{
    if (m_hints == nullptr && !Learn(pStatement, nColumns))
        return FindInEngine(pStatement, nColumns, name);

    Hint& hint = HintFor(name);
    if (hint.pName == name && tov_wcscmpi(name, NameOf(hint.nColumn)) == 0)
        return hint.nColumn;
    for (std::int32_t column = 0; column < m_nColumns; ++column)
    {
        if (tov_wcscmpi(name, NameOf(column)) == 0)
        {
            hint = {name, column};
            return column;
        }
    }
    return -1;
}

void CHynSQColumnNames::Forget() noexcept
{
    m_hints.reset();
    m_offsets.reset();
    m_texts.reset();
    m_nColumns = 0;
}

bool CHynSQColumnNames::Learn(sqlite3_stmt* pStatement, std::int32_t nColumns) noexcept
{
    std::size_t units = 0;
    for (std::int32_t column = 0; column < nColumns; ++column)
    {
        const char16_t* name = EngineName(pStatement, column);
        if (name == nullptr)
            return false;
        units += tov_wcslen(name) + 1;
    }

    const auto count = static_cast<std::size_t>(nColumns);
    const std::size_t hintCount = std::bit_ceil(count * 4 + 1);
    m_texts.reset(new (std::nothrow) char16_t[units]);
    m_offsets.reset(new (std::nothrow) std::uint32_t[count]);
    m_hints.reset(new (std::nothrow) Hint[hintCount]());
    if (m_texts == nullptr || m_offsets == nullptr || m_hints == nullptr)
    {
        Forget();
        return false;
    }

    std::uint32_t offset = 0;
    for (std::int32_t column = 0; column < nColumns; ++column)
    {
        const char16_t* name = EngineName(pStatement, column);
        m_offsets[static_cast<std::size_t>(column)] = offset;
        tov_wcscpy(m_texts.get() + offset, name);
        offset += static_cast<std::uint32_t>(tov_wcslen(name)) + 1;
    }
    m_nColumns = nColumns;
    m_uHintMask = static_cast<std::uint32_t>(hintCount - 1);
    return true;
}

CHynSQColumnNames::Hint& CHynSQColumnNames::HintFor(const char16_t* name) const noexcept
{
    // Literals lie close together, so the low bits are multiplied up and the high ones used.
    const auto address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(name) >> 1);
    return m_hints[static_cast<std::uint32_t>((address * 0x9E3779B97F4A7C15u) >> 32) & m_uHintMask];
}
