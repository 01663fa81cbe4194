// Moments, calendar dates and the formats that print them: conversions there and back, and number formats beside those
// of the C library.

#include <array>
#include <cmath>
#include <cstdlib>

#include <halyon/platform/TovPCMac.h>
#include <halyon/tools/CHynPubTools.h>

#include "Input.h"

using namespace Halyon;
using HalyonFuzz::Hold;

namespace
{
void UseZone(unsigned number)
{
    constexpr std::array<const char*, 4> kZones = {"UTC", "Europe/Berlin", "NZST-12NZDT,M9.5.0,M4.1.0/3", "XXX24YYY"};
    static unsigned last = kZones.size();
    if (number % kZones.size() == last)
        return;
    last = number % kZones.size();
    setenv("TZ", kZones[last], 1);
    TovTimeZoneChanged();
}

bool AreSame(const FILETIME& a, const FILETIME& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

void ThereAndBack(const FILETIME& moment)
{
    const double seconds = CHynPubTools::ConvertFromFileTime(&moment);
    FILETIME back = {1, 1};
    CHynPubTools::ConvertToFileTime(&back, seconds);
    // A double has 53 bits: the fraction and some 4,000 years.
    if (std::abs(seconds) < 0x1p36)
        Hold(AreSame(moment, back), "a moment survives the way through a database");
    Hold(std::isfinite(seconds), "a moment is a number of seconds");

    std::uint32_t year = 0;
    std::uint32_t month = 0;
    std::uint32_t day = 0;
    Hold(CHynPubTools::GetDateFromFileTime(&moment, year, month, day) == 1, "every moment has a date");
    Hold(month >= 1 && month <= 12 && day >= 1 && day <= 31, "a date has a month and a day of the calendar");
    const std::uint32_t packed = CHynPubTools::ConvertFromFileTimeDW(&moment);
    Hold(packed == year * 10000 + month * 100 + day, "the packed date is the date");
    Hold(CHynPubTools::GetDayofweek(static_cast<std::uint16_t>(year), static_cast<std::uint16_t>(month),
                                    static_cast<std::uint16_t>(day)) <= 6,
         "a week has seven days");
}

void FromNumbers(HalyonFuzz::Input& input)
{
    FILETIME moment = {1, 1};
    const auto seconds = input.Take<double>();
    CHynPubTools::ConvertToFileTime(&moment, seconds);
    if (moment.dwLowDateTime != 0 || moment.dwHighDateTime != 0)
        Hold(std::abs(CHynPubTools::ConvertFromFileTime(&moment) - seconds) <= 1.0 / 65536 + std::abs(seconds) * 1e-15,
             "seconds become the nearest moment");
    CHynPubTools::ConvertToFileTimeDW(&moment, input.Take<std::uint32_t>());
    ThereAndBack(moment);
    const auto year = input.Take<std::uint16_t>();
    const auto month = input.Take<std::uint16_t>();
    const auto day = input.Take<std::uint16_t>();
    Hold(CHynPubTools::GetDayofweek(year, month, day) <= 6, "a week has seven days, also for what is no date");
}

void Print(const FILETIME& moment, const std::u16string& format)
{
    const CTovStringW text = CHynPubTools::FileTimeToString(format.c_str(), &moment);
    Hold(text.GetLength() <= 99, "a printed moment has at most 99 units");
    if (format.find(u'%') == std::u16string::npos && format.size() <= 99)
        Hold(text == format, "what asks for nothing is printed as it is");
}

// One conversion, made of what both sides know, printed by both.
void BesideTheLibrary(HalyonFuzz::Input& input)
{
    constexpr std::string_view kLetters = "diuxXofFeEgG";
    std::string format = "%";
    const auto flags = input.Take<std::uint8_t>();
    for (unsigned k = 0; k < 5; ++k)
        format += (flags >> k & 1) != 0 ? std::string(1, "-+ #0"[k]) : "";
    if ((flags & 0x20) != 0)
        format += std::to_string(input.Take<std::uint8_t>());
    if ((flags & 0x40) != 0)
        format += "." + std::to_string(input.Take<std::uint8_t>());
    const char letter = kLetters[input.Take<std::uint8_t>() % kLetters.size()];
    const std::u16string wide = std::u16string(format.begin(), format.end()) + static_cast<char16_t>(letter);

    const auto bits = input.Take<std::uint64_t>();
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    const bool isInteger = kLetters.find(letter) < 6;
    const TovFormatArgument argument =
        isInteger ? TovFormatArgument(static_cast<std::int64_t>(bits)) : TovFormatArgument(number);
    std::array<char, 1024> expected{};
    const std::string narrow = format + (isInteger ? "ll" : "") + letter;
    const int length = isInteger ? std::snprintf(expected.data(), expected.size(), narrow.c_str(), bits)
                                 : std::snprintf(expected.data(), expected.size(), narrow.c_str(), number);

    const std::size_t room = input.Take<std::uint8_t>() + std::size_t{1};
    const HalyonFuzz::Buffer buffer(room);
    TovFormat({static_cast<char16_t*>(buffer), room}, wide.c_str(), {&argument, 1});
    std::string narrowed(expected.data(), std::min<std::size_t>(static_cast<std::size_t>(length), room - 1));
    Hold(buffer.Text() == std::u16string(narrowed.begin(), narrowed.end()),
         "a number is printed as the C library prints it, as far as there is room");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    HalyonFuzz::Input input(data, size);
    UseZone(input.Take<std::uint8_t>());
    const auto bits = input.Take<std::uint64_t>();
    FILETIME moment;
    std::memcpy(&moment, &bits, sizeof moment);
    Print(moment, input.TakeText());
    ThereAndBack(moment);
    FromNumbers(input);
    BesideTheLibrary(input);
    return 0;
}
