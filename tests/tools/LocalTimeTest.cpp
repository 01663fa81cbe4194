// Local time: the rules of every kind of zone, the same whatever was asked before and whoever else asks.
#include <array>
#include <atomic>
#include <barrier>
#include <cmath>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <optional>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

#include <malloc.h>
#include <unistd.h>

#include <tests/tools/DateSupport.h>

using namespace Halyon;
using namespace HalyonTest;

namespace
{
// Named: plain, half-hour, date-line changes, changes at midnight, wartime, Ramadan, negative and two-hour summer.
// Written out: no summer, north, south, half-hour, across a year's end, east of east, a summer of a day.
constexpr const char* kZones =
    "UTC Asia/Tokyo America/New_York Australia/Lord_Howe Asia/Kathmandu Pacific/Apia Pacific/Kwajalein America/Juneau "
    "Asia/Manila America/Sao_Paulo America/Havana Africa/Cairo Asia/Gaza Africa/Casablanca Europe/Dublin Europe/London "
    "Europe/Warsaw Africa/Freetown Antarctica/Troll America/Caracas Pacific/Chatham Africa/Monrovia right/Europe/Paris "
    "JST-9 EST5EDT,M3.2.0,M11.1.0 AEST-10AEDT,M10.1.0,M4.1.0/3 LHST-10:30LHDT-11,M10.1.0,M4.1.0 "
    "AAA0BBB,J365/3,0/5 AAA12BBB,M12.5.0/23,M1.1.0 <+14>-14<+15>,J1/0,J180 XXX3YYY-20,M4.1.0,M9.1.0 "
    "AAA5:30:15BBB4,59/3,J100/4:30:30 AAA0BBB,J100,J101";

std::vector<std::string> Zones()
{
    std::istringstream names(kZones);
    return {std::istream_iterator<std::string>(names), {}};
}

std::int64_t WallAt(std::int64_t moment)
{
    LongDateTime wall = 0;
    EXPECT_EQ(UCConvertCFAbsoluteTimeToLongDateTime(static_cast<double>(moment - kSecondsFrom1904To2001), &wall),
              noErr);
    return wall;
}

std::int64_t MomentOf(std::int64_t wall)
{
    double seconds = 0.0;
    EXPECT_EQ(UCConvertLongDateTimeToCFAbsoluteTime(wall, &seconds), noErr);
    return static_cast<std::int64_t>(seconds) + kSecondsFrom1904To2001;
}

tm Reference(std::int64_t moment)
{
    const std::time_t time = moment - kSecondsFrom1904To1970;
    tm fields{};
    localtime_r(&time, &fields);
    return fields;
}

// By what local time means: of all offsets in use around `wall`, the earliest moment that shows it; when none does, the
// offset before the clock first leaps over it.
std::int64_t ReferenceMoment(std::int64_t wall)
{
    std::set<std::int64_t, std::greater<>> offsets;
    std::optional<std::int64_t> leaping;
    std::int64_t offset = Reference(wall - 2 * kDay).tm_gmtoff;
    for (std::int64_t moment = wall - 2 * kDay; moment < wall + 2 * kDay; moment += 1800)
    {
        const std::int64_t before = offset;
        offset = Reference(moment).tm_gmtoff;
        offsets.insert(offset);
        if (!leaping && moment + offset > wall)
            leaping = wall - before;
    }
    for (const std::int64_t greatest : offsets)
        if (Reference(wall - greatest).tm_gmtoff == greatest)
            return wall - greatest;
    return *leaping;
}

// The first moment of the only change of the offset between the two.
std::int64_t ChangeBetween(std::int64_t from, std::int64_t to)
{
    const std::int64_t offset = Reference(from).tm_gmtoff;
    while (to - from > 1)
    {
        const std::int64_t middle = from + (to - from) / 2;
        (Reference(middle).tm_gmtoff == offset ? from : to) = middle;
    }
    return to;
}

// Writes a zone file of the first, 32-bit form: `offset` holds until the first change, and then each change's own.
void WriteZoneFile(const std::filesystem::path& path, std::int64_t offset,
                   const std::vector<std::pair<std::int64_t, std::int64_t>>& changes)
{
    std::ofstream file(path, std::ios::binary);
    const auto put = [&file](std::int64_t value)
    {
        for (const int shift : {24, 16, 8, 0})
            file.put(static_cast<char>(value >> shift));
    };
    const auto count = static_cast<char>(changes.size());
    file << "TZif" << std::string(28, '\0');
    for (const int number : {+count, count + 1, 4})
        put(number);
    for (const auto& [moment, offsetFromThere] : changes)
        put(moment - kSecondsFrom1904To1970);
    for (char type = 1; type <= count; ++type)
        file.put(type);
    put(offset);
    for (const auto& [moment, offsetFromThere] : changes)
    {
        file << std::string(2, '\0');
        put(offsetFromThere);
    }
    file << std::string("\0\0AAA\0", 6);
}
} // namespace

TEST(LocalTime, AgreesWithTheCLibraryAtAnyMomentOfAnyZone)
{
    RandomMoments random;
    // At twice the last range the C library's own count of days overflows.
    constexpr std::int64_t kFar = kMomentLimit / 2;
    const std::int64_t ranges[][2] = {
        {At(1840, 1, 1), At(2110, 1, 1)}, {At(-400, 1, 1), At(4000, 1, 1)}, {-kFar, kFar}};
    for (const std::string& zone : Zones())
    {
        UseZone(zone);
        for (std::size_t i = 0; i < 1500; ++i)
        {
            const std::int64_t moment = random.Between(ranges[i % 3][0], ranges[i % 3][1]);
            const LongDateRec date = FieldsOf(WallAt(moment));
            const tm fields = Reference(moment);
            const int year = static_cast<std::int16_t>(fields.tm_year + 1900);
            const std::array expected = {year,           fields.tm_mon + 1, fields.tm_mday,
                                         fields.tm_hour, fields.tm_min,     fields.tm_sec};
            const std::array<int, 6> shown = {date.year, date.month, date.day, date.hour, date.minute, date.second};
            ASSERT_EQ(shown, expected) << zone << ", " << random.Seed() << ", moment " << moment;
        }
    }
}

TEST(LocalTime, AWallTimeIsItsFirstMomentAlsoAroundEveryChangeOfTheOffset)
{
    constexpr std::int64_t kSteps[] = {-kDay, -3600, -1, 0, 1, 2, 1799, kDay / 2};
    RandomMoments random;
    for (const std::string& zone : Zones())
    {
        if (zone.starts_with("right/"))
            continue; // the reference leaves its leap seconds out
        UseZone(zone);
        // Some changes at random, some far away where yearly rules make them.
        for (int tries = 0, left = 4; tries < 400 && left > 0; ++tries)
        {
            const std::int64_t from = tries % 4 == 3 ? random.Between(At(2100, 1, 1), At(30000, 1, 1))
                                                     : random.Between(At(1840, 1, 1), At(2100, 1, 1));
            if (Reference(from).tm_gmtoff == Reference(from + 90 * kDay).tm_gmtoff)
                continue;
            --left;
            const std::int64_t change = ChangeBetween(from, from + 90 * kDay);
            for (const std::int64_t edge :
                 {change - 1 + Reference(change - 1).tm_gmtoff, change + Reference(change).tm_gmtoff})
                for (const std::int64_t step : kSteps)
                    ASSERT_EQ(MomentOf(edge + step), ReferenceMoment(edge + step))
                        << zone << ", " << random.Seed() << ", wall " << edge + step << ", change at " << change;
        }
    }
}

TEST(LocalTime, SkippedTimesMoveForwardAndRepeatedOnesAreTheFirst)
{
    const struct
    {
        const char* zone;
        std::int64_t wall;
        std::int64_t expected;
    } cases[] = {
        {"America/New_York", At(2024, 3, 10, 2, 30), At(2024, 3, 10, 7, 30)},
        {"America/New_York", At(2024, 11, 3, 1, 30), At(2024, 11, 3, 5, 30)},
        {"Pacific/Apia", At(2011, 12, 30, 12), At(2011, 12, 30, 22)},
        {"America/Juneau", At(1867, 10, 19), At(1867, 10, 18, 8, 57, 41)},
        {"Africa/Freetown", At(1939, 9, 3, 12), At(1939, 9, 3, 12, 40)}, // an offset of four days
        {"EST5EDT,M3.2.0,M11.1.0", At(12024, 3, 10, 2, 30), At(12024, 3, 10, 7, 30)},
        {"JST-9", At(-7000, 1, 1), At(-7001, 12, 31, 15)},
    };
    for (const auto& [zone, wall, expected] : cases)
    {
        UseZone(zone);
        EXPECT_EQ(MomentOf(wall), expected) << zone;
    }
}

TEST(LocalTime, ChangesMayBeHoursApartAndAReplacedFileIsReadAgain)
{
    constexpr std::int64_t kHour = 3600;
    const std::filesystem::path path = testing::TempDir() + "HalyonZone" + std::to_string(getpid());
    WriteZoneFile(path, -12 * kHour, {{At(2010, 6, 1, 12), 12 * kHour}, {At(2010, 6, 1, 18), -11 * kHour}});
    UseZone(path.string());
    EXPECT_EQ(MomentOf(At(2010, 6, 1, 3)), At(2010, 6, 1, 15)) << "never shown";
    EXPECT_EQ(MomentOf(At(2010, 6, 1, 8)), At(2010, 6, 1, 19)) << "leapt over, then shown after all";
    EXPECT_EQ(MomentOf(At(2010, 6, 2, 3)), At(2010, 6, 1, 15)) << "shown twice";

    // Of what a damaged file says no more than a week is believed.
    WriteZoneFile(path, 0, {{At(1980, 1, 1), -2'000'000}, {At(1990, 1, 1), 2'000'000}});
    UseZone("UTC");
    UseZone(path.string());
    EXPECT_EQ(WallAt(At(1970, 1, 1)), At(1970, 1, 1));
    EXPECT_EQ(WallAt(At(1985, 1, 1)), At(1985, 1, 1) - 7 * kDay);
    std::filesystem::remove(path);
}

TEST(LocalTime, CoversExactly48BitsOnEitherSideOf1904)
{
    constexpr auto kFrom2001 = static_cast<double>(kSecondsFrom1904To2001);
    constexpr auto kLimit = static_cast<double>(kMomentLimit);
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    UseZone("EST5EDT,M3.2.0,M11.1.0");
    for (const std::int64_t moment : {-kMomentLimit, kMomentLimit - 1})
        EXPECT_EQ(MomentOf(WallAt(moment)), moment);
    for (const double seconds : {-kLimit - kFrom2001 - 0.25, kLimit - kFrom2001, std::nan(""), HUGE_VAL, -1e300})
    {
        LongDateTime wall = 77;
        EXPECT_EQ(UCConvertCFAbsoluteTimeToLongDateTime(seconds, &wall), paramErr) << seconds;
        EXPECT_EQ(wall, 77);
    }
    for (const std::int64_t wall : {WallAt(-kMomentLimit) - 1, WallAt(kMomentLimit - 1) + 1, -kMost - 1, kMost})
    {
        double seconds = 77.0;
        EXPECT_EQ(UCConvertLongDateTimeToCFAbsoluteTime(wall, &seconds), paramErr) << wall;
        EXPECT_EQ(seconds, 77.0);
    }
}

TEST(LocalTime, AnswersDependNeitherOnEarlierOnesNorOnTheCLibrarysLaterZone)
{
    UseZone("America/New_York");
    for (const std::int64_t before : {At(2024, 7, 1), At(2024, 12, 1), At(-5000, 1, 1)})
    {
        MomentOf(before);
        EXPECT_EQ(MomentOf(At(2024, 11, 3, 1, 30)), At(2024, 11, 3, 5, 30));
    }
    setenv("TZ", "Asia/Tokyo", 1);
    tzset();
    EXPECT_EQ(WallAt(At(2024, 7, 1, 12)), At(2024, 7, 1, 8));
    EXPECT_EQ(WallAt(At(1999, 7, 1, 12)), At(1999, 7, 1, 8)) << "a year not asked for before";
    TovTimeZoneChanged();
    EXPECT_EQ(WallAt(At(2024, 7, 1, 12)), At(2024, 7, 1, 21));
}

TEST(LocalTime, ReadingTheSameZonesAgainTakesNoMemory)
{
    const auto readBoth = []
    {
        UseZone("Asia/Tokyo");
        UseZone("EST5EDT,M3.2.0,M11.1.0");
    };
    readBoth();
    const std::size_t before = mallinfo2().uordblks;
    for (int i = 0; i < 100; ++i)
        readBoth();
    // setenv may keep some words; one zone is more than 10,000 bytes.
    EXPECT_LT(mallinfo2().uordblks, before + 8192);
}

TEST(LocalTime, ThreadsConvertWhileTheZoneChanges)
{
    constexpr const char* kNames[] = {"EST5", "JST-9"};
    constexpr std::int64_t kHour = 3600;
    setenv("TZ", kNames[1], 1);
    std::barrier start(3);
    std::atomic<bool> changed{false};
    std::atomic<int> running{2};
    std::atomic<int> strange{0};
    const auto convert = [&]
    {
        start.arrive_and_wait();
        for (int i = 0; i < 50000; ++i)
        {
            const bool isOurs = changed;
            const std::int64_t moment = At(2024, 7, 1, 12) + i * kDay;
            const std::int64_t shown = WallAt(moment) - moment;
            const std::int64_t back = MomentOf(moment) - moment;
            strange += isOurs && (shown != 9 * kHour && shown != -5 * kHour);
            strange += isOurs && (back != -9 * kHour && back != 5 * kHour);
        }
        --running;
    };
    std::thread first(convert);
    std::thread second(convert);
    start.arrive_and_wait();
    TovTimeZoneChanged();
    changed = true; // from here on no conversion reads the environment
    for (int i = 0; running > 0; ++i)
    {
        setenv("TZ", kNames[i % 2], 1);
        TovTimeZoneChanged();
    }
    first.join();
    second.join();
    EXPECT_EQ(strange, 0);
}
