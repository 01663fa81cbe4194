// What a command has learnt of its statement's column names, so that reading by name costs about as much as by index.
//
// Names are asked for again and again through the same few literals, so the address of an asked name leads to a column
// at once. The address is only a hint: the text found there is compared with the column's name each time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include <halyon/framework/HynUnit.h>

struct sqlite3_stmt;

class CHynSQColumnNames
{
public:
    // The lowest column of `pStatement` whose name equals `name` without regard to letter case, or -1. What is learnt
    // holds for that statement until Forget. Requires: `name` is not null. [owner]
    [[nodiscard]] std::int32_t Find(sqlite3_stmt* pStatement, std::int32_t nColumns, const char16_t* name) noexcept;

    // Forgets everything: the statement is gone. [owner]
    void Forget() noexcept;

private:
    struct Hint
    {
        const char16_t* pName;
        std::int32_t nColumn;
    };

    bool Learn(sqlite3_stmt* pStatement, std::int32_t nColumns) noexcept;
    [[nodiscard]] const char16_t* NameOf(std::int32_t nColumn) const noexcept
    {
        return m_texts.get() + m_offsets[static_cast<std::size_t>(nColumn)];
    }
    [[nodiscard]] Hint& HintFor(const char16_t* name) const noexcept;

    std::int32_t m_nColumns = 0;
    std::uint32_t m_uHintMask = 0;
    std::unique_ptr<char16_t[]> m_texts; // the names one after the other, each zero-terminated
    std::unique_ptr<std::uint32_t[]> m_offsets;
    std::unique_ptr<Hint[]> m_hints; // null until something is learnt
};
