// What a command has learnt of its statement's column names, so that reading by name costs about as much as by index.
//
// Rows are read in a loop that asks for the same names in the same order, so after each name the one that followed it
// last time is tried first. That is only a guess: the text asked for is compared with the column's name each time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include <halyon/platform/TovPCMac.h>

struct sqlite3_stmt;

class CHynSQColumnNames
{
public:
    // The lowest column of `pStatement` whose name equals `name` without regard to letter case, or -1. What is learnt
    // holds for that statement until Forget. Requires: `name` is not null. [owner]
    [[nodiscard]] std::int32_t Find(sqlite3_stmt* pStatement, const char16_t* name) noexcept
    {
        if (m_nColumns != 0)
        {
            const std::uint32_t guess = m_pFacts[m_uLast].uNext;
            if (tov_wcssame(name, m_pNames[guess], m_pFacts[guess].uLength))
            {
                m_uLast = guess;
                return static_cast<std::int32_t>(guess);
            }
        }
        return LearnAndSearch(pStatement, name);
    }

    // Forgets everything: the statement is gone. [owner]
    void Forget() noexcept
    {
        m_nColumns = 0;
        m_more.reset();
    }

private:
    // Names of up to so many columns are kept in this object, which still is a small block of the heap then.
    static constexpr std::size_t kFewColumns = 64;

    struct Facts
    {
        std::uint16_t uLength; // of the name, in units
        std::uint16_t uNext;   // the column that was asked for after this one; the lowest of its name, like all found
    };

    // Apart, so that the way of a good guess stays short.
    [[nodiscard, gnu::noinline]] std::int32_t LearnAndSearch(sqlite3_stmt* pStatement, const char16_t* name) noexcept;
    bool Learn(sqlite3_stmt* pStatement, std::int32_t nColumns) noexcept;
    [[nodiscard]] bool MakeRoom(std::size_t columns) noexcept;
    [[nodiscard]] std::int32_t Search(const char16_t* name) noexcept;
    [[nodiscard]] bool IsNameOf(std::uint32_t column, const char16_t* name) const noexcept;

    // Nothing below is set before something is learnt: most commands never are asked.
    std::int32_t m_nColumns = 0;
    std::uint32_t m_uLast; // the column found last
    const char16_t** m_pNames;
    Facts* m_pFacts;
    std::unique_ptr<std::byte[]> m_more; // for more columns than a few: names, then facts
    std::array<const char16_t*, kFewColumns> m_fewNames;
    std::array<Facts, kFewColumns> m_fewFacts;
};
