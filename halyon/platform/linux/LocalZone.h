// The system's time zone as a table: which offset from UTC holds from which moment on.
//
// For the date services of this folder. Not for programs: those use DateTimeUtils.h. Times here are whole seconds since
// 1904-01-01 00:00:00, of UTC (a moment) or of the wall clock.
//
// A table is learnt from the C library, whole, at the moment the zone is read, and never changes again. So a reader
// takes no lock, and what it gets does not depend on what it asked before, nor on other code of the process that makes
// the C library go to another zone. A zone that was read once is kept until the library unloads: readers never ask
// whether theirs is still there, and reading the same zone again finds it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <halyon/platform/linux/Calendar.h>

namespace Halyon::Linux
{
class LocalZone
{
public:
    // The zone in force; read on first use. Null when there is no memory to read it. [any]
    static const LocalZone* Current() noexcept;

    // Asks the C library for its zone and learns that, from one probe each `step` seconds: it must be shorter than the
    // time for which any offset interrupts another. Throws std::bad_alloc. Requires: one thread at a time.
    explicit LocalZone(std::int64_t step);

    // What the wall clock shows at `moment`. Requires: within 2^62 of 0. [any]
    [[nodiscard]] std::int64_t ToWall(std::int64_t moment) const noexcept
    {
        const std::int64_t shift = IsInTable(moment) ? 0 : ShiftIntoTable(moment);
        return moment + m_stretches[Find(moment + shift)].offset;
    }

    // The first moment at which the wall clock shows `wall`; for a time that it skips, the moment at which it would
    // show it had it not skipped. Requires: within 2^62 of 0. [any]
    [[nodiscard]] std::int64_t ToMoment(std::int64_t wall) const noexcept
    {
        const std::int64_t shift = IsInTable(wall) ? 0 : ShiftIntoTable(wall);
        return FirstMoment(wall + shift) - shift;
    }

private:
    // A time of one constant offset, up to the begin of the next.
    struct Stretch
    {
        std::int64_t begin;
        std::int64_t offset;
    };

    // The table answers for the years 1805 to 2132, and is learnt for one year more at either end. Before and after
    // nothing but yearly rules holds, or nothing at all, and a year stands for all years of its kind.
    static constexpr std::int64_t kFirstYear = 1805;
    static constexpr std::int64_t kEndYear = 2133;
    static constexpr std::int64_t kFirst = DaysFromCivil(kFirstYear, 1, 1) * kSecondsPerDay;
    static constexpr std::int64_t kEnd = DaysFromCivil(kEndYear, 1, 1) * kSecondsPerDay;
    static constexpr std::int64_t kLearnFrom = DaysFromCivil(kFirstYear - 1, 1, 1) * kSecondsPerDay;
    static constexpr std::int64_t kLearnTo = DaysFromCivil(kEndYear + 1, 1, 1) * kSecondsPerDay;

    // The index has one entry for each 2^22 s, about seven weeks: most hold no change of the offset.
    static constexpr int kIndexShift = 22;

    [[nodiscard]] static bool IsInTable(std::int64_t time) noexcept
    {
        return static_cast<std::uint64_t>(time - kFirst) < static_cast<std::uint64_t>(kEnd - kFirst);
    }

    // Where the stretch of `moment` stands. Requires: kLearnFrom <= moment < kLearnTo.
    [[nodiscard]] std::size_t Find(std::int64_t moment) const noexcept
    {
        std::size_t i = m_index[static_cast<std::size_t>(moment - kLearnFrom) >> kIndexShift];
        while (m_stretches[i + 1].begin <= moment)
            ++i;
        return i;
    }

    [[nodiscard]] static std::int64_t ShiftIntoTable(std::int64_t time) noexcept;
    [[nodiscard]] std::int64_t FirstMoment(std::int64_t wall) const noexcept;
    void LearnChanges(std::int64_t from, std::int64_t to, std::int64_t offsetAtEnd);
    void MakeIndex();

    std::vector<Stretch> m_stretches; // ends with one that begins after all time
    std::vector<std::uint32_t> m_index;
    std::int64_t m_least = 0; // of all offsets
    std::int64_t m_greatest = 0;
};
} // namespace Halyon::Linux
