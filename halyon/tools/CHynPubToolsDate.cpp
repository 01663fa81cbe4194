#include <halyon/tools/CHynPubTools.h>

#include <cstring>

#include <halyon/platform/DateTimeUtils.h>

namespace Halyon
{
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
} // namespace Halyon
