// `hynhost import` on real files.
#include <tests/system/HostTest.h>

#include <fstream>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

#include <tests/support/Command.h>

using namespace HalyonTest;

namespace
{
constexpr uid_t kNobody = 65534;

class ImportTest : public HalyonTest::HostTest
{
protected:
    // Each row as "name|columns", ordered by name.
    [[nodiscard]] std::string Facts(const std::string& columns, const std::string& where) const
    {
        return Query("SELECT name || '|' || " + columns + " FROM media WHERE " + where + " ORDER BY name");
    }
};

void Write(const std::filesystem::path& file, const std::string& content)
{
    std::ofstream(file, std::ios::binary) << content;
}
} // namespace

TEST_F(ImportTest, FindsMediaByContentTheirMomentsPixelsAndRatings)
{
    m_zone = "America/New_York";
    const HostOutcome outcome = Import(CopySamples());
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(Shows(outcome.out, "37 new, 0 changed, 0 unchanged, 0 gone"));
    EXPECT_TRUE(Shows(outcome.out, "2 other files"));
    EXPECT_TRUE(Shows(outcome.err, "1 problem:\n"));
    EXPECT_TRUE(Shows(outcome.err, "Old album/cut short.jpg: "));
    EXPECT_EQ(Query("SELECT kind, count(*) FROM media GROUP BY kind ORDER BY kind"),
              "FLAC,1\nGIF,1\nHEIF,2\nJPEG,20\nMKV,1\nMOV,1\nMP3,1\nMP4,2\nPNG,3\nTIFF,2\nWAV,1\nWebP,2\n");
    EXPECT_EQ(Facts("kind", "name IN ('IMG_0042', 'really a PNG.jpg')"), "IMG_0042|JPEG\nreally a PNG.jpg|PNG\n");

    const std::string taken = "strftime('%Y-%m-%d %H:%M:%f', taken + 978307200, 'unixepoch')"; // in UTC
    // With a zone of the camera's own; quarters of an hour and fractions of a second count.
    EXPECT_EQ(Facts(taken, "name IN ('burst-2.jpg', 'last tram.jpg', 'Pokhara.jpg', 'powder.heic')"),
              "Pokhara.jpg|2024-10-26 01:10:00.000\nburst-2.jpg|2024-05-18 05:03:22.375\n"
              "last tram.jpg|2024-02-10 14:40:05.000\npowder.heic|2024-02-11 23:31:17.000\n");
    // Without one the moment is local, by the rules of its day.
    EXPECT_EQ(
        Facts(taken, "name IN ('azulejos.png', 'farol.tif', 'farol à noite.webp', 'grandmother''s lighthouse.jpg')"),
        "azulejos.png|2024-03-22 15:02:09.000\nfarol à noite.webp|2024-03-24 01:10:02.000\n"
        "farol.tif|2024-03-24 00:58:33.000\ngrandmother's lighthouse.jpg|1968-06-02 19:30:00.000\n");
    // Without any it is the file's.
    EXPECT_EQ(Facts(taken, "name IN ('no date.jpg', 'fado.mp3', 'cut short.jpg')"),
              "cut short.jpg|2024-06-01 12:00:00.000\nfado.mp3|2024-06-01 12:00:00.000\n"
              "no date.jpg|2024-06-01 12:00:00.000\n");

    EXPECT_EQ(Facts("width || 'x' || height || ' ' || ifnull(rating, '-')",
                    "name IN ('panorama.jpg', 'Pokhara.jpg', 'azulejos.png', 'dunes.gif', 'farol à noite.webp',"
                    " 'hut.tiff', 'balloon meet.heif', 'paraglider.mp4', 'fireworks.mov', 'prayer flags.mkv')"),
              "Pokhara.jpg|533x400 3\nazulejos.png|480x480 4\nballoon meet.heif|480x360 -\ndunes.gif|320x200 -\n"
              "farol à noite.webp|400x600 2\nfireworks.mov|320x180 -\nhut.tiff|320x240 -\npanorama.jpg|800x260 5\n"
              "paraglider.mp4|320x240 -\nprayer flags.mkv|320x240 -\n");
    EXPECT_EQ(Query("SELECT count(*) FROM media WHERE width IS NULL AND kind NOT IN ('WAV', 'MP3', 'FLAC')"), "1\n")
        << "only the broken picture has no size";
}

TEST_F(ImportTest, TouchesOnlyWhatChanged)
{
    const auto media = CopySamples();
    ASSERT_EQ(Import(media).status, 0);
    const auto written = std::filesystem::last_write_time(Catalog());

    EXPECT_TRUE(Shows(Import(media).out, "0 new, 0 changed, 37 unchanged, 0 gone"));
    EXPECT_EQ(std::filesystem::last_write_time(Catalog()), written);

    std::filesystem::remove(media / "2024-05 Alps/burst-1.jpg");
    std::filesystem::remove_all(media / "2024-03 Lisboa");
    std::filesystem::copy_file(media / "2024-05 Alps/burst-2.jpg", media / "burst-4.jpg");
    std::filesystem::copy_file(media / "Old album/no date.jpg", media / "Old album/cut short.jpg",
                               std::filesystem::copy_options::overwrite_existing);
    const HostOutcome outcome = Import(media);
    EXPECT_TRUE(Shows(outcome.out, "1 new, 1 changed, 29 unchanged, 7 gone"));
    EXPECT_EQ(outcome.err, "") << "the broken picture was replaced";
    EXPECT_EQ(Query("SELECT count(*), sum(name = 'burst-4.jpg'), sum(folder LIKE '%Lisboa') FROM media"), "31,1,0\n");
}

#ifdef HALYON_SCARCE_MEMORY
TEST_F(ImportTest, WaitsForMemoryWhenAFileCannotBeHandedOn)
{
    const HostOutcome outcome = Import(CopySamples(), {.environment = {{"LD_PRELOAD", HALYON_SCARCE_MEMORY}}});
    EXPECT_TRUE(Shows(outcome.out, "37 new, 0 changed, 0 unchanged, 0 gone"));
    EXPECT_FALSE(Shows(outcome.err, "refused: 0")) << "nothing was tried";
    EXPECT_TRUE(Shows(outcome.err, "refused: "));
}
#endif

TEST_F(ImportTest, OddFilesAreReportedAndNeverFatal)
{
    const auto media = CopySamples({"2024-12 Merzouga/dunes.jpg", "2024-05 Alps/burst-1.jpg"});
    std::filesystem::create_directory_symlink("..", media / "2024-05 Alps/up");
    std::filesystem::create_symlink("nowhere", media / "dangling");
    Write(media / "\xff\xfe.jpg", "not UTF-8");
    ASSERT_EQ(mkfifo((media / "pipe").c_str(), 0666), 0);

    HostOutcome outcome = Import(media);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(Shows(outcome.out, "2 new"));
    EXPECT_TRUE(Shows(outcome.err, "\\xff\\xfe.jpg: "));

    outcome = Host({"import", "--follow-links", media.string(), "--catalog", Catalog()});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_TRUE(Shows(outcome.out, "0 new, 0 changed, 2 unchanged, 0 gone"));
    EXPECT_TRUE(Shows(outcome.err, "/dangling: "));
}

TEST_F(ImportTest, WhatMayNotBeReadOrWrittenIsNamed)
{
    if (!HalyonTest::CanRunAsSomebodyElse())
        GTEST_SKIP() << "root alone can be somebody else, and only where others reach the program";
    const auto media = CopySamples({"2024-12 Merzouga/dunes.jpg", "2024-05 Alps/burst-1.jpg", "Old album/no date.jpg"});
    ASSERT_EQ(chmod((media / "2024-05 Alps/burst-1.jpg").c_str(), 0), 0);
    ASSERT_EQ(chmod((media / "Old album").c_str(), 0), 0);
    ASSERT_EQ(chmod(Path("").c_str(), 0777), 0);

    const HostOutcome outcome = Import(media, {.user = kNobody});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(Shows(outcome.out, "1 new"));
    EXPECT_TRUE(Shows(outcome.err, "burst-1.jpg: Permission denied"));
    EXPECT_TRUE(Shows(outcome.err, "Old album"));

    ASSERT_EQ(chown(Catalog().c_str(), 0, 0), 0);
    ASSERT_EQ(chmod(Catalog().c_str(), 0444), 0);
    EXPECT_TRUE(
        Fails(Import(media, {.user = kNobody}), "cannot write the catalogue " + Catalog() + ": Permission denied"));
    EXPECT_EQ(List({}, {.user = kNobody}).status, 0) << "reading it needs no more";
}

TEST_F(ImportTest, RefusesWhatIsNoCatalogueAndLeavesItAlone)
{
    const auto media = CopySamples({"2024-12 Merzouga/dunes.jpg"});
    const std::string text = "This is a diary, and no database at all.\n";
    Write(Path("diary"), text);
    const std::string other = Path("other.db").string();
    ASSERT_EQ(Host({"sql", "--create", other, "CREATE TABLE mine (x)"}).status, 0);
    const std::pair<std::string, const char*> cases[] = {{Path("diary"), "it is not a database"},
                                                         {other, "it is a database of something else"},
                                                         {Path(""), "it is not a regular file"}};
    for (const auto& [catalog, reason] : cases)
        EXPECT_TRUE(Fails(Host({"import", media.string(), "--catalog", catalog}), reason));
    EXPECT_EQ(HalyonTest::ContentOf(Path("diary")), text);
    EXPECT_EQ(Host({"sql", "--csv", other, "SELECT name FROM sqlite_schema"}).out, "name\r\nmine\r\n");
}

TEST_F(ImportTest, MissingModuleIsNamed)
{
    const auto media = CopySamples({"Old album/no date.jpg"});
    EXPECT_TRUE(Fails(Import(media, {.environment = {{"HALYON_MODULE", "/nowhere/HynSQ.so"}}}), "/nowhere/HynSQ.so"));
    EXPECT_FALSE(std::filesystem::exists(Catalog()));
}

TEST_F(ImportTest, TheCatalogueAndWhatTheEngineKeepsBesideItAreNoFilesOfTheFolder)
{
    const auto media = CopySamples({"2024-12 Merzouga/dunes.jpg"});
    const std::string catalog = media / "catalog.db";
    for (const char* journal : {"DELETE", "WAL"})
    {
        EXPECT_EQ(Host({"sql", "--create", catalog, std::string("PRAGMA journal_mode = ") + journal}).status, 0);
        const HostOutcome outcome = Host({"import", media.string(), "--catalog", catalog, "--jobs", "1"});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.out.find("other files"), std::string::npos) << journal << ": " << outcome.out;
    }
}

TEST_F(ImportTest, ManyIntoOneCatalogueAtOnceEndWellAndLoseNothing)
{
    const auto first = CopySamples();
    const auto second = Path("second");
    std::filesystem::copy(first, second, std::filesystem::copy_options::recursive);
    for (const bool isNew : {true, false}) // all make the catalogue, then all find it
    {
        // The third covers what the others do: what one stores another must neither lose nor store twice.
        std::vector<std::unique_ptr<HostProcess>> imports;
        for (const auto& folder : {first, second, Path("")})
            imports.push_back(std::make_unique<HostProcess>(
                std::vector<std::string>{"import", folder.string(), "--catalog", Catalog()}, InZone({})));
        for (const auto& import : imports)
        {
            const HostOutcome outcome = import->Finish();
            EXPECT_EQ(outcome.status, 0) << outcome.err;
            EXPECT_TRUE(isNew || Shows(outcome.out, "0 new, 0 changed, "));
            EXPECT_TRUE(Shows(outcome.out, " 0 gone"));
        }
        EXPECT_EQ(Query("SELECT count(*), count(DISTINCT path), count(DISTINCT volume) FROM media"), "74,74,1\n");
    }
    EXPECT_EQ(Query("PRAGMA integrity_check"), "ok\n");
}
