#include <halyon/tools/CHynPubTools.h>

#include <cstring>

#include <halyon/platform/DateTimeUtils.h>
#include <halyon/platform/TovPCMac.h>

// Every result of the platform's services is passed over, deliberately: what failed leaves the zeros that it found.
namespace Halyon
{
namespace
{
LongDateRec LocalDate(const FILETIME* ft) noexcept
{
    LongDateTime local = 0;
    UCConvertCFAbsoluteTimeToLongDateTime(CHynPubTools::ConvertFromFileTime(ft), &local);
    LongDateRec date{};
    LongSecondsToDate(&local, &date);
    return date;
}

void FromLocalDate(FILETIME* ft, const LongDateRec& date) noexcept
{
    LongDateTime local = 0;
    LongDateToSeconds(&date, &local);
    CFAbsoluteTime seconds = 0.0;
    UCConvertLongDateTimeToCFAbsoluteTime(local, &seconds);
    CHynPubTools::ConvertToFileTime(ft, seconds);
}
} // namespace

double CHynPubTools::ConvertFromFileTime(const FILETIME* ft) noexcept
{
    double seconds = 0.0;
    if (ft == nullptr)
        return seconds;
    UTCDateTime utc{};
    std::memcpy(&utc, ft, sizeof utc);
    UCConvertUTCDateTimeToCFAbsoluteTime(&utc, &seconds);
    return seconds;
}

void CHynPubTools::ConvertToFileTime(FILETIME* ft, double seconds) noexcept
{
    if (ft == nullptr)
        return;
    UTCDateTime utc{};
    UCConvertCFAbsoluteTimeToUTCDateTime(seconds, &utc);
    std::memcpy(ft, &utc, sizeof utc);
}

std::uint32_t CHynPubTools::ConvertFromFileTimeDW(const FILETIME* ft) noexcept
{
    std::uint32_t year = 0;
    std::uint32_t month = 0;
    std::uint32_t day = 0;
    if (GetDateFromFileTime(ft, year, month, day) == 0)
        return 0;
    return year * 10000 + month * 100 + day;
}

void CHynPubTools::ConvertToFileTimeDW(FILETIME* ft, std::uint32_t dw) noexcept
{
    if (ft == nullptr)
        return;
    LongDateRec date{};
    date.year = static_cast<std::int16_t>(dw / 10000);
    date.month = static_cast<std::int16_t>(dw % 10000 / 100);
    date.day = static_cast<std::int16_t>(dw % 100);
    FromLocalDate(ft, date);
}

int CHynPubTools::GetDateFromFileTime(const FILETIME* ft, std::uint32_t& year, std::uint32_t& month,
                                      std::uint32_t& day) noexcept
{
    if (ft == nullptr)
        return 0;
    const LongDateRec date = LocalDate(ft);
    year = static_cast<std::uint32_t>(date.year);
    month = static_cast<std::uint32_t>(date.month);
    day = static_cast<std::uint32_t>(date.day);
    return 1;
}

// By way of the seconds, so that dates out of range carry over here as they do everywhere.
std::uint16_t CHynPubTools::GetDayofweek(std::uint16_t year, std::uint16_t month, std::uint16_t day) noexcept
{
    LongDateRec date{};
    date.year = static_cast<std::int16_t>(year);
    date.month = static_cast<std::int16_t>(month);
    date.day = static_cast<std::int16_t>(day);
    LongDateTime local = 0;
    LongDateToSeconds(&date, &local);
    LongSecondsToDate(&local, &date);
    return static_cast<std::uint16_t>(date.dayOfWeek - 1);
}

std::int32_t CHynPubTools::CurrentDateTime(FILETIME* ft) noexcept
{
    if (ft == nullptr)
        return 0;
    UTCDateTime utc{};
    const OSStatus status = GetUTCDateTime(&utc, 0);
    std::memcpy(ft, &utc, sizeof utc);
    return status;
}

void CHynPubTools::CurrentDate(FILETIME* ft) noexcept
{
    if (ft == nullptr)
        return;
    CurrentDateTime(ft);
    LongDateRec date = LocalDate(ft);
    date.hour = 0;
    date.minute = 0;
    date.second = 0;
    FromLocalDate(ft, date);
}

int CHynPubTools::StripFileTimeMS(FILETIME* /*ft*/) noexcept
{
    return 1;
}

CTovStringW CHynPubTools::FileTimeToString(const char16_t* format, const FILETIME* ft) noexcept
{
    const LongDateRec date = LocalDate(ft);
    char16_t buffer[100] = {};
    tov_swprintf(buffer, format, std::int32_t{date.year}, std::int32_t{date.month}, std::int32_t{date.day},
                 std::int32_t{date.hour}, std::int32_t{date.minute}, std::int32_t{date.second});
    return buffer;
}
} // namespace Halyon
