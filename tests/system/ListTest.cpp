// `hynhost list`: what people read.
#include <tests/system/HostTest.h>

#include <algorithm>

#include <host/DisplayWidth.h>
#include <host/TextTable.h>

using namespace HalyonTest;
using HynHost::TextTable;

namespace
{
class ListTest : public HalyonTest::HostTest
{
protected:
    void SetUp() override
    {
        const auto media = CopySamples({"2024-02 Sapporo/last tram.jpg", "2024-02 Sapporo/night walk.jpg",
                                        "2024-02 Sapporo/日本語 雪まつり.jpg", "2024-05 Alps/cowbells.flac",
                                        "Old album/cut short.jpg"});
        std::filesystem::rename(media / "2024-02 Sapporo", media / "札幌");
        m_media = media.string();
        ASSERT_EQ(Import(media).status, 0);
    }

    // The output with the folder's name as M, and one blank or dash where there are several: their number depends on
    // the folder's name.
    [[nodiscard]] std::string Listed(const std::vector<std::string>& arguments) const
    {
        const HostOutcome outcome = List(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        std::string text = outcome.out;
        for (std::size_t at = text.find(m_media); at != std::string::npos; at = text.find(m_media))
            text.replace(at, m_media.size(), "M");
        const auto repeats = [](char a, char b)
        {
            return a == b && (a == ' ' || a == '-');
        };
        text.erase(std::unique(text.begin(), text.end(), repeats), text.end());
        return text;
    }

    std::string m_media;
};
} // namespace

TEST(TextTableTest, AlignsByDisplayWidthAndShortensOnlyWhatMayShrink)
{
    TextTable table({{"Name", TextTable::Align::Left, true}, {"N", TextTable::Align::Right}, {"Kind"}});
    table.AddRow({"写真/2024年/雪まつり.jpg", "1", "JPEG"});
    table.AddRow({"Cafe\u0301 \u202b\u05d0.png", "1,000", "P\x1b[1mNG"});
    table.AddRule();
    table.AddRow({"Total", "2"});
    EXPECT_EQ(table.Text(37), "Name                    N  Kind\n"
                              "------------------  -----  ----------\n"
                              "写真/…雪まつり.jpg      1  JPEG\n"
                              "Cafe\u0301 \u202b\u05d0.png          1,000  P\\x1b[1mNG\n"
                              "------------------  -----  ----------\n"
                              "Total                   2\n");
}

TEST(ShortenMiddleTest, KeepsTheEndAndWholeCharactersAndFits)
{
    const std::string path = "/家族/2024 e\u0301te\u0301/海辺/IMG_0001.jpg";
    for (int width = 1; width <= HynHost::DisplayWidth(path); ++width)
    {
        const std::string shortened = HynHost::ShortenMiddle(path, width);
        EXPECT_LE(HynHost::DisplayWidth(shortened), width);
        EXPECT_GE(HynHost::DisplayWidth(shortened), width - 2) << "room is used but for half a wide character";
        const std::size_t cut = shortened.find("…");
        if (cut == std::string::npos)
            continue;
        EXPECT_TRUE(path.starts_with(shortened.substr(0, cut)) && path.ends_with(shortened.substr(cut + 3)));
        EXPECT_FALSE(shortened.substr(cut + 3).starts_with("\u0301")) << "a mark without its letter";
    }
    EXPECT_EQ(HynHost::ShortenMiddle(path, 20), "/家族/…/IMG_0001.jpg");
}

TEST_F(ListTest, OneLineAFileTheLatestFirst)
{
    EXPECT_EQ(Listed({}), "Taken Kind Bytes Pixels Stars Path\n"
                          "- - - - - -\n"
                          "2024-06-01 12:00:00 FLAC 19,935 M/2024-05 Alps/cowbells.flac\n"
                          "2024-06-01 12:00:00 JPEG 23 M/Old album/cut short.jpg\n"
                          "2024-02-11 00:05:00 JPEG 16,779 600x450 ***** M/札幌/日本語 雪まつり.jpg\n"
                          "2024-02-10 15:20:41 JPEG 29,967 640x400 *** M/札幌/night walk.jpg\n"
                          "2024-02-10 14:40:05 JPEG 25,286 480x640 M/札幌/last tram.jpg\n"
                          "- - - - - -\n"
                          "Total 5 files 91,990\n"
                          "1 of these files could not be read wholly.\n");
    EXPECT_TRUE(Shows(Listed({"--limit", "1"}), "cowbells.flac\n- - - - - -\nTotal 5 files 91,990\n"
                                                "1 of 5 files are shown; the total counts all.\n"));
}

TEST_F(ListTest, DaysAreThoseOfTheLocalZone)
{
    EXPECT_TRUE(Shows(Listed({"--by", "day"}), "2024-06-01 Sat 2 19,958 12:00:00 12:00:00\n"
                                               "2024-02-11 Sun 1 16,779 00:05:00 00:05:00\n"
                                               "2024-02-10 Sat 2 55,253 14:40:05 15:20:41\n"
                                               "- - - - -\nTotal 5 91,990\n"));
    m_zone = "Asia/Tokyo";
    EXPECT_TRUE(Shows(Listed({"--by", "day"}), "2024-02-11 Sun 2 46,746 00:20:41 09:05:00\n"
                                               "2024-02-10 Sat 1 25,286 23:40:05 23:40:05\n"));
    m_zone = "America/New_York";
    EXPECT_TRUE(Shows(Listed({"--by", "day"}), "2024-02-10 Sat 3 72,032 09:40:05 19:05:00\n"));
}

TEST_F(ListTest, GroupsByFolderKindAndSize)
{
    EXPECT_TRUE(Shows(Listed({"--by", "folder"}), "Folder Files Bytes From To\n- - - - -\n"
                                                  "M/2024-05 Alps 1 19,935 2024-06-01 2024-06-01\n"
                                                  "M/Old album 1 23 2024-06-01 2024-06-01\n"
                                                  "M/札幌 3 72,032 2024-02-10 2024-02-11\n"
                                                  "- - - - -\nTotal 5 91,990\n"));
    EXPECT_TRUE(Shows(Listed({"--by", "kind"}), "Kind Files Bytes Largest\n- - - -\n"
                                                "FLAC 1 19,935 M/2024-05 Alps/cowbells.flac\n"
                                                "JPEG 4 72,055 M/札幌/night walk.jpg\n"
                                                "- - - -\nTotal 5 91,990\n"));
    EXPECT_TRUE(Shows(Listed({"--by", "size", "--limit", "1"}), "Size Files Bytes Largest\n- - - -\n"
                                                                "below 1,000 1 23 M/Old album/cut short.jpg\n"
                                                                "- - - -\nTotal 5 91,990\n"
                                                                "1 of 2 sizes are shown; the total counts all.\n"));
    EXPECT_EQ(List({"--by", "colour"}).status, 2);
}

TEST_F(ListTest, LinesFitATerminalAndAreWholeInAPipe)
{
    EXPECT_TRUE(Shows(List({}).out, m_media + "/札幌/日本語 雪まつり.jpg\n"));
    const HostOutcome shown = List({}, {.terminalColumns = 80});
    EXPECT_TRUE(Shows(shown.out, "…"));
    EXPECT_TRUE(Shows(shown.out, "日本語 雪まつり.jpg\r\n"));
    for (std::size_t begin = 0; begin < shown.out.size(); begin = shown.out.find('\n', begin) + 1)
        EXPECT_LE(HynHost::DisplayWidth(shown.out.substr(begin, shown.out.find('\r', begin) - begin)), 80);
}

TEST_F(ListTest, WithoutACatalogueSaysWhatToDo)
{
    EXPECT_TRUE(Fails(Host({"list"}), Path(".local/share/halyon/catalog.db").string() + ": there is none"));
}
