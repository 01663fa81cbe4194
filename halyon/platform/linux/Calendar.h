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

// What FloorDivide leaves: 0 to divisor - 1.
constexpr std::int64_t FloorRemainder(std::int64_t value, std::int64_t divisor) noexcept
{
    const std::int64_t remainder = value % divisor;
    return remainder + (remainder < 0 ? divisor : 0);
}

constexpr bool IsLeapYear(std::int64_t year) noexcept
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// A day of the calendar. Month 1 to 12, day 1 to 31, dayOfYear from 0.
struct CivilDay
{
    std::int64_t year;
    std::int32_t month;
    std::int32_t day;
    std::int32_t dayOfYear;
};

// Inside, years begin on March 1st, so that the leap day is the last of its year, of its four years, of its century
// and of its 400 years, and each of these has one length for division. Month `m` from March begins (153 * m + 2) / 5
// days into the year: 31, 30, 31, 30, 31 days, over and over.
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

// The date that lies `days` after 1904-01-01.
constexpr CivilDay CivilFromDays(std::int64_t days) noexcept
{
    const std::int64_t fromMarch0 = days + kDaysFromMarch0To1904;
    const std::int64_t cycle = FloorDivide(fromMarch0, kDaysPer400Years);
    auto left = static_cast<std::uint32_t>(fromMarch0 - cycle * kDaysPer400Years);
    const std::uint32_t century = (left * 4 + 3) / 146097;
    left -= century * 146097 / 4;
    const std::uint32_t year = (left * 4 + 3) / 1461;
    left -= year * 1461 / 4;
    const std::uint32_t month = (left * 5 + 2) / 153;
    const std::uint32_t day = left - (month * 153 + 2) / 5 + 1;

    const bool newYear = month >= 10;
    const std::int64_t civilYear = cycle * 400 + std::int64_t{century} * 100 + year + (newYear ? 1 : 0);
    const std::uint32_t dayOfYear = newYear ? left - 306 : left + (IsLeapYear(civilYear) ? 60 : 59);
    return {civilYear, static_cast<std::int32_t>(newYear ? month - 9 : month + 3), static_cast<std::int32_t>(day),
            static_cast<std::int32_t>(dayOfYear)};
}

// 0 (Sunday) to 6; 1904-01-01 was a Friday.
constexpr std::int32_t WeekdayFromDays(std::int64_t days) noexcept
{
    return static_cast<std::int32_t>(FloorRemainder(days + 5, 7));
}
} // namespace Halyon::Linux
