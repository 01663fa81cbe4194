// Moments as the host meets them, turned into FILETIMEs.
#pragma once

#include <optional>
#include <string_view>

#include <halyon/framework/HynTypes.h>

namespace HynHost
{
// The moment `ns` nanoseconds after 1970 UTC, to 1/65536 s; all zero bits before 1904. [any]
[[nodiscard]] FILETIME MomentFromUnixNs(long long ns) noexcept;

// The moment that a camera wrote down: "2024:03:07 14:05:09" (cameras that write "-" or "T" for a separator are
// understood), digits of a second ("25" is a quarter), and an offset from UTC ("+09:00"). The last two may be empty;
// without an offset, or with one that makes no sense, the date is local. Nothing for what is no date: blanks, zeros, a
// 30th of February. [any]
[[nodiscard]] std::optional<FILETIME> MomentFromExif(std::string_view date, std::string_view subSecond,
                                                     std::string_view offset) noexcept;
} // namespace HynHost
