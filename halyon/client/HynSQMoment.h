// The step between the interfaces' timestamps and the clock of the standard library.
//
// A FILETIME counts 1/65536 s (about 15.3 microseconds) since 1904 UTC, a time point of the system's clock nanoseconds
// since 1970. To the timestamp the nearest 1/65536 s is taken; a timestamp that became a time point comes back as it
// was. Not for local dates: CHynPubTools.
#pragma once

#include <bit>
#include <chrono>
#include <cstdint>
#include <limits>

#include <halyon/platform/DateTimeUtils.h>

namespace Halyon::Client
{
// False, and `to` untouched, for moments that a timestamp does not hold: 1904-01-01 and before, and those after the
// year 8,900,000. The moment of all zero bits counts as none, since every refused conversion gives it. [any]
template <class Duration>
[[nodiscard]] constexpr bool to_timestamp(std::chrono::time_point<std::chrono::system_clock, Duration> from,
                                          FILETIME& to) noexcept
{
    using namespace std::chrono;
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    const auto second = floor<seconds>(from.time_since_epoch());
    const std::int64_t rest = duration_cast<nanoseconds>(from.time_since_epoch() - second).count();
    const std::int64_t fraction = (rest * 65536 + kNanoseconds / 2) / kNanoseconds;
    constexpr std::int64_t kLast = (std::int64_t{1} << 48) - kSecondsFrom1904To1970 - 2; // rounding may add one
    if (second.count() < -kSecondsFrom1904To1970 || second.count() > kLast)
        return false;
    const std::uint64_t count = static_cast<std::uint64_t>(second.count() + kSecondsFrom1904To1970 + (fraction >> 16));
    const UTCDateTime moment{static_cast<std::uint16_t>(count >> 32), static_cast<std::uint32_t>(count),
                             static_cast<std::uint16_t>(fraction)};
    if (count == 0 && moment.fraction == 0)
        return false;
    to = std::bit_cast<FILETIME>(moment);
    return true;
}

// False, and `to` untouched, for all zero bits and for moments past the clock's range (the year 2262). [any]
[[nodiscard]] constexpr bool to_time_point(FILETIME from, std::chrono::system_clock::time_point& to) noexcept
{
    using namespace std::chrono;
    const auto moment = std::bit_cast<UTCDateTime>(from);
    const std::int64_t count = static_cast<std::int64_t>(moment.highSeconds) << 32 | moment.lowSeconds;
    const std::int64_t second = count - kSecondsFrom1904To1970;
    if ((count == 0 && moment.fraction == 0) ||
        second >= floor<seconds>(system_clock::time_point::max()).time_since_epoch().count())
        return false;
    const nanoseconds rest((moment.fraction * std::int64_t{1'000'000'000} + 32768) / 65536);
    to = system_clock::time_point(duration_cast<system_clock::duration>(seconds(second) + rest));
    return true;
}
} // namespace Halyon::Client
