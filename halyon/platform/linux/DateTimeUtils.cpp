// Moments and the calendar.

#include <halyon/platform/DateTimeUtils.h>

#include <cmath>
#include <ctime>

#include <halyon/platform/linux/Calendar.h>
#include <halyon/platform/linux/LocalZone.h>

namespace Halyon
{
namespace
{
// Moments lie within 48 bits of seconds on either side of 1904.
constexpr std::int64_t kMomentLimit = std::int64_t{1} << 48;

// Whole seconds since 1904, down from a fraction, also before 2001. False for what is no number or lies outside. Added
// as an integer: where a double has fractions of a second left, the sum with the distance of the epochs may not.
bool WholeSecondsSince1904(CFAbsoluteTime seconds, std::int64_t* pWhole) noexcept
{
    if (!(std::abs(seconds) < 2.0 * static_cast<double>(kMomentLimit)))
        return false;
    const auto towardsZero = static_cast<std::int64_t>(seconds);
    const std::int64_t floor = towardsZero - (static_cast<double>(towardsZero) > seconds ? 1 : 0);
    *pWhole = floor + kSecondsFrom1904To2001;
    return *pWhole >= -kMomentLimit && *pWhole < kMomentLimit;
}

// Requires: 0 <= seconds < 2^48.
UTCDateTime MakeUTCDateTime(std::int64_t seconds, std::uint16_t fraction) noexcept
{
    return {static_cast<std::uint16_t>(seconds >> 32), static_cast<std::uint32_t>(seconds), fraction};
}
} // namespace

OSStatus GetUTCDateTime(UTCDateTime* pUTC, OptionBits /*options*/) noexcept
{
    if (pUTC == nullptr)
        return paramErr;
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const auto fraction = static_cast<std::uint16_t>((static_cast<std::uint64_t>(now.tv_nsec) << 16) / 1'000'000'000);
    *pUTC = MakeUTCDateTime(now.tv_sec + kSecondsFrom1904To1970, fraction);
    return noErr;
}

OSStatus UCConvertUTCDateTimeToCFAbsoluteTime(const UTCDateTime* pUTC, CFAbsoluteTime* pSeconds) noexcept
{
    if (pUTC == nullptr || pSeconds == nullptr)
        return paramErr;
    const auto seconds = static_cast<std::int64_t>((std::uint64_t{pUTC->highSeconds} << 32) | pUTC->lowSeconds);
    *pSeconds = static_cast<double>(seconds - kSecondsFrom1904To2001) + static_cast<double>(pUTC->fraction) / 65536.0;
    return noErr;
}

OSStatus UCConvertCFAbsoluteTimeToUTCDateTime(CFAbsoluteTime seconds, UTCDateTime* pUTC) noexcept
{
    std::int64_t whole = 0;
    if (pUTC == nullptr || !WholeSecondsSince1904(seconds, &whole))
        return paramErr;
    // The difference and the product are exact, up to a fraction just under 1, which may round to the next second.
    const double units = (seconds - static_cast<double>(whole - kSecondsFrom1904To2001)) * 65536.0;
    auto fraction = static_cast<std::int64_t>(units);
    if (units - static_cast<double>(fraction) >= 0.5)
        ++fraction;
    whole += fraction >> 16;
    if (whole < 0 || whole >= kMomentLimit)
        return paramErr;
    *pUTC = MakeUTCDateTime(whole, static_cast<std::uint16_t>(fraction));
    return noErr;
}

OSStatus UCConvertCFAbsoluteTimeToLongDateTime(CFAbsoluteTime seconds, LongDateTime* pLocal) noexcept
{
    std::int64_t moment = 0;
    if (pLocal == nullptr || !WholeSecondsSince1904(seconds, &moment))
        return paramErr;
    const Linux::LocalZone* zone = Linux::LocalZone::Current();
    if (zone == nullptr)
        return memFullErr;
    *pLocal = zone->ToWall(moment);
    return noErr;
}

OSStatus UCConvertLongDateTimeToCFAbsoluteTime(LongDateTime local, CFAbsoluteTime* pSeconds) noexcept
{
    // The limit is the moment's; the clock on the wall may show a little more.
    if (pSeconds == nullptr || local < -2 * kMomentLimit || local > 2 * kMomentLimit)
        return paramErr;
    const Linux::LocalZone* zone = Linux::LocalZone::Current();
    if (zone == nullptr)
        return memFullErr;
    const std::int64_t moment = zone->ToMoment(local);
    if (moment < -kMomentLimit || moment >= kMomentLimit)
        return paramErr;
    *pSeconds = static_cast<double>(moment - kSecondsFrom1904To2001);
    return noErr;
}

void LongSecondsToDate(const LongDateTime* pLocal, LongDateRec* pDate) noexcept
{
    const Linux::CivilTime civil = Linux::CivilFromSeconds(*pLocal);
    const std::uint32_t minute = civil.second / 60;
    const std::uint32_t hour = minute / 60;
    *pDate = {.era = 0,
              .year = static_cast<std::int16_t>(civil.year),
              .month = static_cast<std::int16_t>(civil.month),
              .day = static_cast<std::int16_t>(civil.day),
              .hour = static_cast<std::int16_t>(hour),
              .minute = static_cast<std::int16_t>(minute % 60),
              .second = static_cast<std::int16_t>(civil.second % 60),
              .dayOfWeek = static_cast<std::int16_t>(civil.weekday + 1),
              .dayOfYear = static_cast<std::int16_t>(civil.dayOfYear + 1),
              .weekOfYear = static_cast<std::int16_t>((civil.dayOfYear + 6 - civil.weekday) / 7 + 1),
              .pm = static_cast<std::int16_t>(hour >= 12 ? 1 : 0),
              .res1 = 0,
              .res2 = 0,
              .res3 = 0};
}

void LongDateToSeconds(const LongDateRec* pDate, LongDateTime* pLocal) noexcept
{
    const std::int64_t days = Linux::DaysFromCivil(pDate->year, pDate->month, pDate->day);
    *pLocal = ((days * 24 + pDate->hour) * 60 + pDate->minute) * 60 + pDate->second;
}
} // namespace Halyon
