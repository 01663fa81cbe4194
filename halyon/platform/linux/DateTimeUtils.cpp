// Moments and the calendar.

#include <halyon/platform/DateTimeUtils.h>

#include <cmath>
#include <ctime>

namespace Halyon
{
OSStatus GetUTCDateTime(UTCDateTime* pUTC, OptionBits /*options*/) noexcept
{
    if (pUTC == nullptr)
        return paramErr;
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const auto seconds = static_cast<std::uint64_t>(now.tv_sec + kSecondsFrom1904To1970);
    pUTC->highSeconds = static_cast<std::uint16_t>(seconds >> 32);
    pUTC->lowSeconds = static_cast<std::uint32_t>(seconds);
    pUTC->fraction = static_cast<std::uint16_t>((static_cast<std::uint64_t>(now.tv_nsec) << 16) / 1'000'000'000);
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
    if (pUTC == nullptr || !std::isfinite(seconds))
        return paramErr;
    double whole = std::floor(seconds);
    double units = std::nearbyint((seconds - whole) * 65536.0);
    if (units >= 65536.0)
    {
        whole += 1.0;
        units = 0.0;
    }
    const double since1904 = whole + static_cast<double>(kSecondsFrom1904To2001);
    if (since1904 < 0.0 || since1904 >= 281474976710656.0)
        return paramErr;
    const auto count = static_cast<std::uint64_t>(since1904);
    pUTC->highSeconds = static_cast<std::uint16_t>(count >> 32);
    pUTC->lowSeconds = static_cast<std::uint32_t>(count);
    pUTC->fraction = static_cast<std::uint16_t>(units);
    return noErr;
}
} // namespace Halyon
