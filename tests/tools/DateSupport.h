// Times in tests, as seconds since 1904; the reference for the calendar is std::chrono, for zones the C library.
#pragma once

#include <bit>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include <halyon/platform/DateTimeUtils.h>
#include <halyon/platform/TovPCMac.h>

namespace HalyonTest
{
inline constexpr std::int64_t kDay = 86400;
inline constexpr std::int64_t kSecondsPer400Years = 146097 * kDay;
inline constexpr std::int64_t kMomentLimit = std::int64_t{1} << 48;

// Of a moment's or of a wall clock's fields.
constexpr std::int64_t At(int year, unsigned month, unsigned day, std::int64_t hour = 0, std::int64_t minute = 0,
                          std::int64_t second = 0)
{
    using namespace std::chrono;
    const sys_days date = std::chrono::year(year) / static_cast<int>(month) / static_cast<int>(day);
    return (date - sys_days(1904y / 1 / 1)).count() * kDay + hour * 3600 + minute * 60 + second;
}

inline FILETIME TimeOf(std::int64_t seconds, std::uint16_t fraction = 0)
{
    return std::bit_cast<FILETIME>(
        Halyon::UTCDateTime{static_cast<std::uint16_t>(seconds >> 32), static_cast<std::uint32_t>(seconds), fraction});
}

inline std::int64_t SecondsOf(const FILETIME& ft)
{
    const auto utc = std::bit_cast<Halyon::UTCDateTime>(ft);
    return (std::int64_t{utc.highSeconds} << 32) | utc.lowSeconds;
}

inline std::uint64_t BitsOf(const FILETIME& ft)
{
    return std::bit_cast<std::uint64_t>(ft);
}

inline Halyon::LongDateRec FieldsOf(std::int64_t wall)
{
    Halyon::LongDateRec date{};
    Halyon::LongSecondsToDate(&wall, &date);
    return date;
}

// A zone that is not installed would be UTC to both sides of every comparison.
inline void UseZone(const std::string& name)
{
    const bool isWrittenOut = name.find_first_of("0123456789<") != std::string::npos;
    ASSERT_TRUE(isWrittenOut || std::filesystem::exists("/usr/share/zoneinfo" / std::filesystem::path(name)))
        << name << ": tzdata is missing";
    setenv("TZ", name.c_str(), 1);
    TovTimeZoneChanged();
}

class RandomMoments
{
public:
    [[nodiscard]] std::string Seed() const { return "seed " + std::to_string(m_seed); }
    std::int64_t Between(std::int64_t from, std::int64_t to)
    {
        return std::uniform_int_distribution<std::int64_t>(from, to - 1)(m_engine);
    }

private:
    std::uint32_t m_seed = std::random_device()();
    std::mt19937_64 m_engine{m_seed};
};
} // namespace HalyonTest
