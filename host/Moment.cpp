#include <host/Moment.h>

#include <array>
#include <chrono>
#include <cstddef>

#include <halyon/platform/DateTimeUtils.h>
#include <halyon/tools/CHynPubTools.h>

namespace HynHost
{
namespace
{
constexpr double kSecondsFrom1970To2001 = 978307200.0;

bool IsDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

// The number in `text` from `first`, exactly `count` digits wide.
std::optional<std::int16_t> Digits(std::string_view text, std::size_t first, std::size_t count) noexcept
{
    std::int16_t value = 0;
    for (std::size_t i = first; i < first + count; ++i)
    {
        if (i >= text.size() || !IsDigit(text[i]))
            return std::nullopt;
        value = static_cast<std::int16_t>(value * 10 + (text[i] - '0'));
    }
    return value;
}

// Wall-clock seconds since 1904 of "YYYY:MM:DD HH:MM:SS".
std::optional<Halyon::LongDateTime> WallClock(std::string_view date) noexcept
{
    constexpr std::array<std::size_t, 6> kFirst = {0, 5, 8, 11, 14, 17};
    std::array<std::int16_t, 6> fields{};
    for (std::size_t i = 0; i < fields.size(); ++i)
    {
        const auto field = Digits(date, kFirst[i], i == 0 ? 4 : 2);
        if (!field)
            return std::nullopt;
        fields[i] = *field;
    }
    const auto [year, month, day, hour, minute, second] = fields;
    const std::chrono::year_month_day ymd(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                          std::chrono::day(static_cast<unsigned>(day)));
    if (year == 0 || !ymd.ok() || hour > 23 || minute > 59 || second > 60)
        return std::nullopt;
    const std::chrono::seconds midnight = std::chrono::sys_days(ymd).time_since_epoch();
    return Halyon::kSecondsFrom1904To1970 + midnight.count() + (hour * 60LL + minute) * 60 + second;
}

// Seconds east of UTC of "+HH:MM".
std::optional<int> Offset(std::string_view text) noexcept
{
    if (text.size() < 6 || (text[0] != '+' && text[0] != '-') || text[3] != ':')
        return std::nullopt;
    const auto hours = Digits(text, 1, 2);
    const auto minutes = Digits(text, 4, 2);
    if (!hours || !minutes || *hours > 15 || *minutes > 59)
        return std::nullopt;
    const int seconds = *hours * 3600 + *minutes * 60;
    return text[0] == '-' ? -seconds : seconds;
}

// "25" is a quarter, "250" is as well.
double SubSecond(std::string_view digits) noexcept
{
    double value = 0;
    double unit = 0.1;
    for (std::size_t i = 0; i < digits.size() && IsDigit(digits[i]); ++i)
    {
        value += unit * (digits[i] - '0');
        unit /= 10;
    }
    return value;
}
} // namespace

FILETIME MomentFromUnixNs(long long ns) noexcept
{
    FILETIME moment{};
    Halyon::CHynPubTools::ConvertToFileTime(&moment, static_cast<double>(ns) / 1e9 - kSecondsFrom1970To2001);
    return moment;
}

std::optional<FILETIME> MomentFromExif(std::string_view date, std::string_view subSecond,
                                       std::string_view offset) noexcept
{
    const auto wallClock = WallClock(date);
    if (!wallClock)
        return std::nullopt;
    double seconds = 0;
    if (const auto east = Offset(offset); east)
        seconds = static_cast<double>(*wallClock - *east - Halyon::kSecondsFrom1904To2001);
    else if (Halyon::UCConvertLongDateTimeToCFAbsoluteTime(*wallClock, &seconds) != Halyon::noErr)
        return std::nullopt;
    FILETIME moment{};
    Halyon::CHynPubTools::ConvertToFileTime(&moment, seconds + SubSecond(subSecond));
    return moment;
}
} // namespace HynHost
