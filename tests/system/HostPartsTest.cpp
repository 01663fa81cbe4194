// What journeys of the host cannot reach: odd dates of cameras, odd headers of films, narrow terminals, and files that
// shrink while they are looked at.
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <halyon/platform/TovPCMac.h>
#include <halyon/tools/CHynPubTools.h>
#include <host/Catalog.h>
#include <host/FileBytes.h>
#include <host/Moment.h>
#include <host/PrintableText.h>
#include <host/Progress.h>
#include <host/VideoFacts.h>

#include <tests/support/Asleep.h>
#include <tests/support/Environment.h>
#include <tests/support/TempFolder.h>

using namespace std::string_literals;

TEST(HostMoment, ReadsWhatCamerasWriteInTheirZoneOrTheLocalOne)
{
    HalyonTest::Environment environment;
    environment.Set("TZ", "JST-9");
    TovTimeZoneChanged();
    constexpr double kNoon = 731419200; // 2024-03-06 12:00:00 UTC
    constexpr double kNoDate = -1;
    const struct
    {
        const char* date;
        const char* subSecond;
        const char* offset;
        double seconds;
    } cases[] = {
        {"2024:03:06 12:00:00", "", "+00:00", kNoon},
        {"2024:03:06 21:00:00", "", "", kNoon}, // local
        {"2024-03-06T06:30:00", "250", "-05:30", kNoon + 0.25},
        {"2024:03:06 12:00:00", "5   ", "+00:00", kNoon + 0.5},
        {"2024:03:06 21:00:00", "x", "   :  ", kNoon}, // senseless beside a date: as if it were not there
        {"2024:03:06 21:00:00", "", "+99:00", kNoon},
        {"2023:02:29 12:00:00", "", "", kNoDate},
        {"2024:03:06 24:00:00", "", "", kNoDate},
        {"0000:00:00 00:00:00", "", "", kNoDate},
        {"2024:03:06 12:00", "", "", kNoDate},
        {"", "", "", kNoDate},
    };
    for (const auto& [date, subSecond, offset, seconds] : cases)
    {
        const auto moment = HynHost::MomentFromExif(date, subSecond, offset);
        EXPECT_EQ(moment ? Halyon::CHynPubTools::ConvertFromFileTime(&*moment) : kNoDate, seconds)
            << date << ' ' << subSecond << ' ' << offset;
    }
}

namespace
{
std::string Box(const std::string& name, const std::string& content)
{
    std::string size(4, '\0');
    size[2] = static_cast<char>((content.size() + 8) >> 8);
    size[3] = static_cast<char>(content.size() + 8);
    return size + name + content;
}

// The header of a track, of either version, of 640 by 360 pixels or of sound.
std::string Track(char version, bool sound)
{
    std::string header(version == 1 ? 88 : 76, '\0');
    header[0] = version;
    return Box("trak", Box("tkhd", header + (sound ? std::string(8, '\0') : "\x02\x80\0\0\x01\x68\0\0"s)));
}

std::string Size(HynHost::MediaKind kind, const std::string& film)
{
    const HynHost::VideoFacts facts =
        HynHost::ReadVideoFacts(kind, {reinterpret_cast<const std::uint8_t*>(film.data()), film.size()});
    return std::to_string(facts.width) + "x" + std::to_string(facts.height);
}
} // namespace

TEST(HostVideo, FindsThePictureTrackInEveryFormOfHeader)
{
    using HynHost::MediaKind;
    const std::string large = "\0\0\0\1mdat\0\0\0\0\0\0\0\x12..."s; // a size of 64 bits, and 2 bytes of content
    EXPECT_EQ(Size(MediaKind::Mp4, Box("moov", Track(0, true) + Track(1, false))), "640x360");
    EXPECT_EQ(Size(MediaKind::Mov, large.substr(0, 18) + Box("moov", Track(0, false))), "640x360");
    EXPECT_EQ(Size(MediaKind::Mp4, "\0\0\0\0moov"s + Track(0, false)), "640x360") << "up to the end of the file";
    EXPECT_EQ(Size(MediaKind::Mp4, Box("moov", Track(0, true))), "0x0");

    const std::string video = "\xE0\x88\xB0\x82\x02\x80\xBA\x82\x01\x68"s;
    const std::string unknown = "\x01\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s; // a size that was not known
    const std::string tracks = "\x16\x54\xAE\x6B\x90"s + "\xAE\x82\x83\x81"s + "\xAE\x8A"s + video;
    EXPECT_EQ(Size(MediaKind::Mkv, "\x1A\x45\xDF\xA3\x81\0"s + "\x18\x53\x80\x67"s + unknown + tracks), "640x360");
}

TEST(HostVideo, AnyCutOfAFilmIsHarmless)
{
    const std::string film = Box("moov", Track(1, true) + Track(0, false));
    for (std::size_t length = 0; length < film.size(); ++length)
    {
        // A block of its own, so that a read behind the end is seen by the address sanitizer.
        const std::vector<std::uint8_t> cut(film.begin(), film.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_EQ(HynHost::ReadVideoFacts(HynHost::MediaKind::Mp4, cut).width, 0) << length;
        static_cast<void>(HynHost::ReadVideoFacts(HynHost::MediaKind::Mkv, cut));
    }
}

TEST(HostProgress, BarFitsTheTerminal)
{
    const struct
    {
        std::uint64_t done;
        std::uint64_t total;
        std::size_t width;
        const char* text;
    } cases[] = {
        {500, 1000, 60, "[#############--------------]  500 of 1000  50/s  00:10 left"},
        {500, 1000, 40, "500 of 1000  50/s  00:10 left"},
        {500, 1000, 20, "500 of 1000"},
        {500, 1000, 5, "500 o"},
        {500, 0, 60, "500  50/s"},
        {1200, 1000, 40, "1000 of 1000  100/s  00:00 left"}, // more was found than was counted
        {1, 100000, 40, "1 of 100000  0/s  277:46:30 left"},
    };
    for (const auto& [done, total, width, text] : cases)
    {
        const std::string bar = HynHost::ProgressBar(done, total, 10, width);
        EXPECT_EQ(bar, text);
        EXPECT_LE(bar.size(), width) << bar;
    }
}

TEST(HostText, ShowsNoNameThatCouldBreakALine)
{
    EXPECT_EQ(HynHost::PrintableText("日本語 é.jpg"), "日本語 é.jpg");
    EXPECT_EQ(HynHost::PrintableText("a\nb\x1b[2J\x7f"), "a\\x0ab\\x1b[2J\\x7f");
    EXPECT_EQ(HynHost::PrintableText("c1:\xC2\x9B cut:\xE6\x97 alone:\xFF"),
              "c1:\\xc2\\x9b cut:\\xe6\\x97 alone:\\xff");
}

TEST(HostFileBytes, AFileThatShrinksReadsAsZerosAndSaysSo)
{
    const HalyonTest::TempFolder folder;
    const std::filesystem::path path = folder.Path() / "shrinks";
    folder.Write("shrinks", std::string(1 << 20, 'x'));
    HynHost::FileBytes file;
    ASSERT_EQ(file.Open(path), 0);
    const auto bytes = file.Bytes();
    ASSERT_EQ(bytes.size(), 1U << 20);
    EXPECT_EQ(bytes.front(), 'x');
    EXPECT_FALSE(file.Failed());
    std::filesystem::resize_file(path, 0);
    EXPECT_EQ(bytes.back(), 0);
    EXPECT_TRUE(file.Failed());

    folder.Write("shrinks", "small");
    ASSERT_EQ(file.Open(path), 0);
    EXPECT_FALSE(file.Failed()) << "each file anew";
    EXPECT_EQ(file.Bytes().size(), 5U);
}

// tests/faults shows which setting of the engine keeps what.
TEST(HostCatalog, IsWrittenOnEveryThreadSoThatAPowerCutTakesNothingBack)
{
    const HalyonTest::TempFolder folder;
    HalyonTest::Environment environment;
    environment.Set("HALYON_MODULE", HYNSQ_MODULE);
    HynHost::Catalog catalog(folder.Path() / "catalog.db", HynHost::Catalog::Mode::Create);
    std::thread(
        [&]
        {
            const HynHost::Transaction transaction(catalog.GetDatabase());
            EXPECT_EQ(catalog.GetDatabase().query(u"PRAGMA synchronous").row().get<std::int32_t>(0), 3);
        })
        .join();
}

TEST(HostCatalog, IsTakenAsItIsWhenAnotherProgramMakesItMeanwhile)
{
    const HalyonTest::TempFolder folder;
    HalyonTest::Environment environment;
    environment.Set("HALYON_MODULE", HYNSQ_MODULE);
    HynHost::Catalog model(folder.Path() / "model.db", HynHost::Catalog::Mode::Create);
    HynHost::Database maker(folder.Path() / "catalog.db");
    maker.execute(u"PRAGMA encoding = 'UTF-8'");
    maker.execute(u"BEGIN IMMEDIATE");
    std::atomic<std::uint32_t> threadID{0};
    std::thread late(
        [&]
        {
            threadID = GetCurrentTovThreadID();
            EXPECT_NO_THROW(HynHost::Catalog(folder.Path() / "catalog.db", HynHost::Catalog::Mode::Create));
        });
    HalyonTest::UntilAsleep(threadID); // it waits for the lock
    for (HynHost::Rows rows = model.GetDatabase().query(u"SELECT sql FROM sqlite_master WHERE sql IS NOT NULL");
         !rows.at_end(); rows.next())
        maker.execute(rows.row().get<std::u16string>(0));
    for (const std::u16string pragma : {u"PRAGMA application_id", u"PRAGMA user_version"})
        maker.execute(pragma + u" = " + model.GetDatabase().query(pragma).row().get<std::u16string>(0));
    maker.execute(u"COMMIT");
    late.join();
}

TEST(HostFileBytes, ALargeFileIsSeenWholeOrNotAtAll)
{
    const HalyonTest::TempFolder folder;
    folder.Write("large");
    constexpr std::uint64_t kSize = (1ULL << 32) + 5; // as 32 bits: 5
    std::filesystem::resize_file(folder.Path() / "large", kSize);
    HynHost::FileBytes file;
    const int error = file.Open(folder.Path() / "large");
    EXPECT_EQ(error, sizeof(void*) == 8 ? 0 : EFBIG);
    EXPECT_TRUE(error != 0 || file.Bytes().size() == kSize);
}
