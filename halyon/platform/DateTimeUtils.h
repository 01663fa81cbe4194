// The platform's date and time services: the moment, the calendar, and the step between them.
//
// Three forms of a time are told apart by their types. A UTCDateTime and a CFAbsoluteTime are moments; a LongDateTime
// is what a clock on the wall shows, in the system's time zone. The calendar is the proleptic Gregorian one. Programs
// use CHynPubTools, which stands on these.
#pragma once

#include <halyon/platform/CoreFoundation.h>

namespace Halyon
{
#pragma pack(push, 1)
// Seconds since 1904-01-01 00:00:00 UTC: 48 bits, and a fraction in units of 1/65536 s. Not negative.
struct UTCDateTime
{
    std::uint16_t highSeconds;
    std::uint32_t lowSeconds;
    std::uint16_t fraction;
};
#pragma pack(pop)
static_assert(sizeof(UTCDateTime) == 8);

// Seconds since 1904-01-01 00:00:00 local time; negative before.
using LongDateTime = std::int64_t;

// Calendar fields. `year` counts through 0 and below, era is kept at 0; month 1 to 12, day 1 to 31, dayOfWeek 1
// (Sunday) to 7, dayOfYear 1 to 366, weekOfYear 1 to 54 (week 1 holds January 1st, weeks begin on Sunday), pm 1 from
// noon.
struct LongDateRec
{
    std::int16_t era;
    std::int16_t year;
    std::int16_t month;
    std::int16_t day;
    std::int16_t hour;
    std::int16_t minute;
    std::int16_t second;
    std::int16_t dayOfWeek;
    std::int16_t dayOfYear;
    std::int16_t weekOfYear;
    std::int16_t pm;
    std::int16_t res1;
    std::int16_t res2;
    std::int16_t res3;
};
static_assert(sizeof(LongDateRec) == 28);

// From 1904 to 2001: 35,430 days.
inline constexpr std::int64_t kSecondsFrom1904To2001 = 3061152000;
// From 1904 to 1970: 24,107 days.
inline constexpr std::int64_t kSecondsFrom1904To1970 = 2082844800;

// The current moment. noErr, or paramErr for null. `options` is 0. [any]
OSStatus GetUTCDateTime(UTCDateTime* pUTC, OptionBits options) noexcept;

// Moment to seconds since 2001 UTC, exactly. noErr, or paramErr for null. [any]
OSStatus UCConvertUTCDateTimeToCFAbsoluteTime(const UTCDateTime* pUTC, CFAbsoluteTime* pSeconds) noexcept;

// Seconds since 2001 UTC to a moment; the fraction is rounded to the nearest 1/65536 s. paramErr, and `*pUTC`
// untouched, for not-a-number, infinities and moments that 48 bits since 1904 do not hold. [any]
OSStatus UCConvertCFAbsoluteTimeToUTCDateTime(CFAbsoluteTime seconds, UTCDateTime* pUTC) noexcept;

// Seconds since 2001 UTC to local wall-clock seconds, by floor. paramErr, and the output untouched, for not-a-number,
// infinities and moments outside 48 bits on either side of 1904. [any]
OSStatus UCConvertCFAbsoluteTimeToLongDateTime(CFAbsoluteTime seconds, LongDateTime* pLocal) noexcept;

// Local wall-clock seconds to seconds since 2001 UTC. A wall-clock time that occurs twice means the earlier moment; one
// that does not occur is shifted forward by the gap. paramErr, and the output untouched, outside 48 bits. [any]
OSStatus UCConvertLongDateTimeToCFAbsoluteTime(LongDateTime local, CFAbsoluteTime* pSeconds) noexcept;

// Splits wall-clock seconds into all calendar fields. Years outside 16 bits wrap. [any]
void LongSecondsToDate(const LongDateTime* pLocal, LongDateRec* pDate) noexcept;

// Joins year, month, day, hour, minute and second; fields out of range carry over, the others are not read. [any]
void LongDateToSeconds(const LongDateRec* pDate, LongDateTime* pLocal) noexcept;
} // namespace Halyon
