// Arithmetic of the proleptic Gregorian calendar, over any year that 64 bits of seconds can reach.
//
// For the date services of this folder, which know zones and records. Not for programs: those use DateTimeUtils.h.
#pragma once

#include <cstdint>

#include <halyon/framework/HynUnit.h>

namespace Halyon::Linux
{
inline constexpr std::int64_t kSecondsPerDay = 86400;

constexpr std::int64_t FloorDivide(std::int64_t value, std::int64_t divisor) noexcept
{
    const std::int64_t quotient = value / divisor;
    return quotient - (value % divisor < 0 ? 1 : 0);
}

constexpr bool IsLeapYear(std::int64_t year) noexcept
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// A second of the calendar. Month 1 to 12, day 1 to 31; dayOfYear and weekday (Sunday) from 0; second of the day.
struct CivilTime
{
    std::int64_t year;
    std::uint32_t month;
    std::uint32_t day;
    std::uint32_t dayOfYear;
    std::uint32_t weekday;
    std::uint32_t second;
};

// Inside, years begin on March 1st, so that the leap day is the last of its year, of its four years, of its century
// and of its 400 years. Then day `n` lies in the century (4n + 3) / 146097 and, within one, in the year
// (4n + 3) / 1461; month `m` from March begins (153m + 2) / 5 days into the year: 31, 30, 31, 30, 31 days, repeating.
inline constexpr std::int64_t kDaysPer400Years = 146097;
inline constexpr std::int64_t kDaysFromMarch0To1904 = 695361; // from 0000-03-01 to 1904-01-01

// Days from 1904-01-01 to the given date; months and days out of range carry over.
constexpr std::int64_t DaysFromCivil(std::int64_t year, std::int64_t month, std::int64_t day) noexcept
{
    const std::int64_t months = year * 12 + month - 3;
    const std::int64_t marchYear = FloorDivide(months, 12);
    const std::int64_t cycle = FloorDivide(marchYear, 400);
    const std::int64_t inCycle = marchYear - cycle * 400;
    const std::int64_t yearStart = inCycle * 365 + inCycle / 4 - inCycle / 100;
    const std::int64_t monthStart = ((months - marchYear * 12) * 153 + 2) / 5;
    return cycle * kDaysPer400Years + yearStart + monthStart + day - 1 - kDaysFromMarch0To1904;
}

// The calendar's time that lies `seconds` after 1904-01-01.
constexpr CivilTime CivilFromSeconds(std::int64_t seconds) noexcept
{
    // From -40000-03-01 to 1904-01-01. As long before and after 1904, 32 bits count the days from there; all other
    // times are moved near 1904 by whole cycles of the calendar.
    constexpr std::int64_t kFromFirstDay = (100 * kDaysPer400Years + kDaysFromMarch0To1904) * kSecondsPerDay;
    constexpr std::int64_t kCycle = kDaysPer400Years * kSecondsPerDay;
    std::int64_t firstYear = -40000;
    if (seconds < -kFromFirstDay || seconds >= kFromFirstDay)
    {
        firstYear += seconds / kCycle * 400;
        seconds %= kCycle;
    }
    const auto fromFirstDay = static_cast<std::uint64_t>(seconds + kFromFirstDay);
    const auto days = static_cast<std::uint32_t>(fromFirstDay / kSecondsPerDay);

    // What a division leaves of 4n + 3 becomes 4n + 3 of the next smaller unit when its last two bits are set.
    const std::uint32_t inCenturies = days * 4 + 3;
    const std::uint32_t century = inCenturies / 146097;
    const std::uint32_t inYears = inCenturies % 146097 | 3;
    const std::uint32_t year = inYears / 1461;
    const std::uint32_t day = inYears % 1461 / 4;
    const std::uint32_t inMonths = day * 5 + 2;
    const std::uint32_t month = inMonths / 153;

    // Without branches: which case a date is in cannot be predicted.
    const std::uint32_t isNextYear = day >= 306 ? 1 : 0; // January and February
    const std::uint32_t isLeap = (year % 4 == 0 ? 1U : 0U) & ((year != 0 ? 1U : 0U) | (century % 4 == 0 ? 1U : 0U));
    return {.year = firstYear + std::int64_t{century * 100 + year + isNextYear},
            .month = month + 3 - 12 * isNextYear,
            .day = inMonths % 153 / 5 + 1,
            .dayOfYear = day + 59 + isLeap - ((0 - isNextYear) & (365 + isLeap)),
            .weekday = (days + 3) % 7, // the first day is a Wednesday
            .second = static_cast<std::uint32_t>(fromFirstDay % kSecondsPerDay)};
}
} // namespace Halyon::Linux
