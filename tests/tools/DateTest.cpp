// Timestamps, the calendar, and local dates.
#include <halyon/tools/CHynPubTools.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>

#include <tests/support/Text.h>
#include <tests/tools/DateSupport.h>

using namespace Halyon;
using namespace HalyonTest;

namespace
{
constexpr auto kFrom2001 = static_cast<double>(kSecondsFrom1904To2001);

LongDateRec Record(const std::array<std::int16_t, 6>& fields)
{
    LongDateRec date{};
    std::memcpy(&date.year, fields.data(), sizeof fields);
    return date;
}

std::int64_t Join(const LongDateRec& date)
{
    LongDateTime joined = 0;
    LongDateToSeconds(&date, &joined);
    return joined;
}

template <class T>
std::int16_t Narrow(T value)
{
    return static_cast<std::int16_t>(value);
}
} // namespace

TEST(Timestamp, BytesAreHighSecondsLowSecondsFractionInMachineOrder)
{
    using Bytes = std::array<std::uint8_t, 8>;
    constexpr Bytes bytes = std::endian::native == std::endian::little
                                ? Bytes{0x12, 0x00, 0x9A, 0x78, 0x56, 0x34, 0xF0, 0xDE}
                                : Bytes{0x00, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xDE, 0xF0};
    const double seconds = static_cast<double>(0x00123456789A - 3061152000) + 0xDEF0 / 65536.0;
    auto ft = std::bit_cast<FILETIME>(bytes);
    EXPECT_EQ(CHynPubTools::ConvertFromFileTime(&ft), seconds);
    ft = {};
    CHynPubTools::ConvertToFileTime(&ft, seconds);
    EXPECT_EQ(std::bit_cast<Bytes>(ft), bytes);
    FILETIME half{};
    CHynPubTools::ConvertToFileTime(&half, 0.5 / 65536.0);
    CHynPubTools::ConvertToFileTime(&ft, 1.0 / 65536.0);
    EXPECT_EQ(std::bit_cast<Bytes>(half), std::bit_cast<Bytes>(ft)) << "half a unit counts as one";
}

TEST(Timestamp, ComesBackBitForBitWithin37BitsOfSeconds)
{
    RandomMoments random;
    for (int i = 0; i < 100000; ++i)
    {
        const std::int64_t seconds = random.Between(0, kSecondsFrom1904To2001 + (std::int64_t{1} << 37));
        const FILETIME ft = TimeOf(seconds, static_cast<std::uint16_t>(random.Between(0, 65536)));
        FILETIME back{};
        CHynPubTools::ConvertToFileTime(&back, CHynPubTools::ConvertFromFileTime(&ft));
        ASSERT_EQ(CHynPubTools::StripFileTimeMS(&back), 1); // which strips nothing
        ASSERT_EQ(BitsOf(back), BitsOf(ft)) << random.Seed() << ", second " << seconds;
    }
}

TEST(Timestamp, RoundsToTheNearestUnitAndIsZeroWhereNoFileTimeCanBe)
{
    constexpr auto kEnd = static_cast<double>(kMomentLimit) - kFrom2001;
    const std::pair<double, FILETIME> cases[] = {
        {-0.25, TimeOf(kSecondsFrom1904To2001 - 1, 49152)},
        {0.99999, TimeOf(kSecondsFrom1904To2001, 65535)},
        {0.99999999, TimeOf(kSecondsFrom1904To2001 + 1)},
        {-1e-300, TimeOf(kSecondsFrom1904To2001)},
        {-kFrom2001 + 1.0, TimeOf(1)},
        {-kFrom2001 - 0.25, TimeOf(0)},
        {kEnd - 0.03125, TimeOf(kMomentLimit - 1, 63488)},
        {kEnd, TimeOf(0)},
        {HUGE_VAL, TimeOf(0)},
        {std::nan(""), TimeOf(0)},
    };
    for (const auto& [seconds, expected] : cases)
    {
        FILETIME ft = {0xDEADBEEF, 0xDEADBEEF};
        CHynPubTools::ConvertToFileTime(&ft, seconds);
        EXPECT_EQ(BitsOf(ft), BitsOf(expected)) << seconds;
    }
}

TEST(Timestamp, NullIsTheMoment2001AndIsNeverWritten)
{
    std::uint32_t date[3] = {1, 2, 3};
    EXPECT_EQ(CHynPubTools::ConvertFromFileTime(nullptr), 0.0);
    EXPECT_EQ(CHynPubTools::ConvertFromFileTimeDW(nullptr), 0U);
    EXPECT_EQ(CHynPubTools::GetDateFromFileTime(nullptr, date[0], date[1], date[2]), 0);
    EXPECT_TRUE(date[0] == 1 && date[1] == 2 && date[2] == 3);
    EXPECT_EQ(CHynPubTools::CurrentDateTime(nullptr), 0);
    CHynPubTools::ConvertToFileTime(nullptr, 1.0);
    CHynPubTools::ConvertToFileTimeDW(nullptr, 20240307);
    CHynPubTools::CurrentDate(nullptr);
}

TEST(Calendar, EveryFieldAgreesWithTheProlepticGregorianCalendar)
{
    using namespace std::chrono;
    const auto check = [](std::int64_t day)
    {
        const sys_days reference = sys_days(1904y / 1 / 1) + days(day);
        const year_month_day date(reference);
        const sys_days newYear = date.year() / 1 / 1;
        const sys_days firstSunday = newYear - (weekday(newYear) - Sunday);
        LongDateRec expected = Record(
            {Narrow(int{date.year()}), Narrow(unsigned{date.month()}), Narrow(unsigned{date.day()}), 12, 34, 56});
        expected.dayOfWeek = Narrow(weekday(reference).c_encoding() + 1);
        expected.dayOfYear = Narrow((reference - newYear).count() + 1);
        expected.weekOfYear = Narrow((reference - firstSunday).count() / 7 + 1);
        expected.pm = 1;
        const LongDateRec fields = FieldsOf(day * kDay + 45296);
        ASSERT_EQ(std::memcmp(&fields, &expected, sizeof fields), 0)
            << fields.year << '-' << fields.month << '-' << fields.day << ", weekday " << fields.dayOfWeek << ", day "
            << fields.dayOfYear << ", week " << fields.weekOfYear << "; day " << day;
        ASSERT_EQ(Join(fields), day * kDay + 45296);
    };
    for (std::int64_t day = At(1899, 1, 1) / kDay; day < At(2301, 1, 1) / kDay; ++day)
        check(day);
    for (std::int64_t day = At(-32767, 1, 1) / kDay; day < At(32767, 12, 31) / kDay; day += 97)
        check(day);
}

TEST(Calendar, FieldsOutOfRangeCarryOverAndYearsWrapAt16Bits)
{
    constexpr std::int16_t kMost = 32767;
    const std::pair<std::array<std::int16_t, 6>, std::int64_t> cases[] = {
        {{2024, 0, 10}, At(2023, 12, 10)},
        {{2024, -5, 10}, At(2023, 7, 10)},
        {{2024, 14, 29}, At(2025, 3, 1)},
        {{2024, 3, 0}, At(2024, 2, 29)},
        {{2024, 1, 400}, At(2025, 2, 3)},
        {{2024, 1, 1, -1, 61, 3600}, At(2024, 1, 1, 1, 1)},
        {{0, 3, 0}, At(0, 2, 29)},
        {{kMost, kMost, kMost, kMost, kMost, kMost},
         At(32697, 7, 1) + 7 * kSecondsPer400Years + 32766 * kDay + 32767 * 3661LL},
    };
    for (const auto& [fields, expected] : cases)
        EXPECT_EQ(Join(Record(fields)), expected) << fields[0] << '-' << fields[1] << '-' << fields[2];
    EXPECT_EQ(FieldsOf(At(30000, 1, 1) + 7 * kSecondsPer400Years).year, Narrow(32800));
    for (const std::int64_t wall : {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()})
        EXPECT_EQ(FieldsOf(wall).dayOfWeek - 1, ((wall / kDay - (wall < 0 ? 1 : 0) + 5) % 7 + 7) % 7);
}

TEST(Calendar, DayOfWeekOfAnyDate)
{
    const struct
    {
        std::uint16_t date[3];
        std::uint16_t expected;
    } cases[] = {
        {{2024, 3, 7}, 4},  {{2000, 1, 2}, 0},     {{1, 1, 1}, 1},    {{2024, 13, 1}, 3},
        {{30000, 1, 1}, 6}, {{0xFFFF, 12, 31}, 5}, {{2024, 0, 0}, 4},
    };
    for (const auto& [date, expected] : cases)
        EXPECT_EQ(CHynPubTools::GetDayofweek(date[0], date[1], date[2]), expected)
            << date[0] << '-' << date[1] << '-' << date[2];
}

TEST(LocalDate, IsTheDayOnTheWallAsFieldsAndPacked)
{
    const struct
    {
        const char* zone;
        std::int64_t moment;
        std::int32_t date[3];
    } cases[] = {
        {"CET-1", At(2024, 3, 7, 23, 30), {2024, 3, 8}},
        {"UTC", At(2024, 3, 7, 23, 30), {2024, 3, 7}},
        {"EST5", At(1904, 1, 1), {1903, 12, 31}},
        {"JST-9", At(30000, 2, 28, 15), {30000, 2, 29}},
        {"UTC", At(30000, 1, 1) + 25 * kSecondsPer400Years, {40000 - 65536, 1, 1}},
    };
    for (const auto& [zone, moment, date] : cases)
    {
        UseZone(zone);
        const FILETIME ft = TimeOf(moment, 32768);
        std::uint32_t year = 0;
        std::uint32_t month = 0;
        std::uint32_t day = 0;
        EXPECT_EQ(CHynPubTools::GetDateFromFileTime(&ft, year, month, day), 1);
        EXPECT_EQ((std::array{year, month, day}), (std::bit_cast<std::array<std::uint32_t, 3>>(date))) << zone;
        EXPECT_EQ(CHynPubTools::ConvertFromFileTimeDW(&ft), year * 10000 + month * 100 + day);
    }
}

TEST(LocalDate, APackedDateIsTheStartOfItsDay)
{
    const struct
    {
        const char* zone;
        std::uint32_t packed;
        std::uint32_t comesBackAs;
        std::int64_t expected;
    } cases[] = {
        {"Asia/Tokyo", 20240307, 20240307, At(2024, 3, 6, 15)},
        {"America/Sao_Paulo", 20181104, 20181104, At(2018, 11, 4, 3)},
        {"Pacific/Apia", 20111230, 20111231, At(2011, 12, 30, 10)},
        {"UTC", 20249999, 20320607, At(2032, 6, 7)},
        {"UTC", 19031231, 19040101, 0},
        {"UTC", (65536 + 2024) * 10000U + 307, 20240307, At(2024, 3, 7)},
    };
    for (const auto& [zone, packed, comesBackAs, expected] : cases)
    {
        UseZone(zone);
        FILETIME ft = {0xDEADBEEF, 0xDEADBEEF};
        CHynPubTools::ConvertToFileTimeDW(&ft, packed);
        EXPECT_EQ(BitsOf(ft), BitsOf(TimeOf(expected))) << zone << ' ' << packed << ", second " << SecondsOf(ft);
        EXPECT_EQ(CHynPubTools::ConvertFromFileTimeDW(&ft), comesBackAs) << zone << ' ' << packed;
    }
}

TEST(LocalDate, AsTextTakesSixIntegersAndIsCutAt99Units)
{
    UseZone("JST-9");
    const FILETIME ft = TimeOf(At(2024, 3, 6, 15, 4, 5), 65535);
    const std::pair<const char16_t*, std::string> cases[] = {
        {u"%04d\u5E74%02d-%02d %02d:%02d:%02d", "2024\u5E7403-07 00:04:05"},
        {u"", ""},
        {u"%d%d%d%d%d%d%d", ""},
        {u"%090d%090d", std::string(86, '0') + "2024" + std::string(9, '0')},
    };
    for (const auto& [format, expected] : cases)
        EXPECT_EQ(U8(CHynPubTools::FileTimeToString(format, &ft)), expected) << U8(format);
}

TEST(LocalDate, TheCurrentMomentIsTheClocksAndTheCurrentDateItsDaysStart)
{
    constexpr std::int64_t kEast = 49500; // of UTC, 13:45 hours
    UseZone("<+1345>-13:45");
    std::int64_t dayBefore = 0;
    std::int64_t dayAfter = 1;
    FILETIME moment{};
    FILETIME start{};
    while (dayBefore != dayAfter) // midnight may pass
    {
        const std::int64_t before = std::time(nullptr) + kSecondsFrom1904To1970;
        EXPECT_EQ(CHynPubTools::CurrentDateTime(&moment), 0);
        CHynPubTools::CurrentDate(&start);
        const std::int64_t after = std::time(nullptr) + kSecondsFrom1904To1970 + 1; // time() lags behind the clock
        EXPECT_LE(before, SecondsOf(moment));
        EXPECT_LE(SecondsOf(moment), after);
        dayBefore = (before + kEast) / kDay;
        dayAfter = (after + kEast) / kDay;
    }
    EXPECT_EQ(BitsOf(start), BitsOf(TimeOf(dayAfter * kDay - kEast)));
}
