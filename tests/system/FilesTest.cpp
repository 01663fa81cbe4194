// `hynhost info`, `open` and `trash` on real files.
#include <tests/system/HostTest.h>

#include <algorithm>
#include <fstream>

#include <sys/stat.h>

using namespace HalyonTest;

namespace
{
namespace fs = std::filesystem;

class FilesTest : public HalyonTest::HostTest
{
protected:
    void SetUp() override
    {
        m_media = CopySamples({"2024-02 Sapporo/night walk.jpg", "2024-02 Sapporo/日本語 雪まつり.jpg"});
        m_picture = m_media / "2024-02 Sapporo/日本語 雪まつり.jpg";
    }

    // A program that tells its arguments through the pipe `ran`.
    [[nodiscard]] fs::path Program(const std::string& name) const
    {
        fs::path program = Path(name);
        std::ofstream(program) << "#!/bin/sh\nprintf '%s|' \"$@\" >'" << Path("ran").string() << "'\n";
        fs::permissions(program, fs::perms::owner_all);
        EXPECT_EQ(mkfifo(Path("ran").c_str(), 0600), 0);
        return program;
    }

    // Opens and gives what the program was started with.
    [[nodiscard]] std::string Opened(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), "open");
        const HostOutcome outcome = Host(arguments);
        if (outcome.status != 0)
            return outcome.err;
        std::ifstream ran(Path("ran"));
        return {std::istreambuf_iterator<char>(ran), {}};
    }

    fs::path m_media;
    fs::path m_picture;
};
} // namespace

TEST_F(FilesTest, InfoTellsWhatNameSystemAndContentSay)
{
    fs::create_symlink(m_picture, Path("link.png"));
    std::string outcome = Host({"info", m_picture.string() + "/"}).out;
    EXPECT_TRUE(Shows(outcome, "Name        日本語 雪まつり.jpg\nExtension   .jpg\nFolder      " +
                                   m_picture.parent_path().string() + "\nVolume      "));
    EXPECT_TRUE(Shows(outcome, "Size        17 KB (16,779 bytes)\nModified    2024-06-01 12:00:00\nKind        JPEG\n"
                               "Taken       2024-02-11 00:05:00\nPixels      600x450\nStars       *****\n"));
    outcome = Host({"info", Path("link.png").string()}).out;
    EXPECT_TRUE(Shows(outcome, "Name        link.png\n"));
    EXPECT_TRUE(Shows(outcome, "Kind        JPEG\n"));
    outcome = Host({"info", m_media.string()}).out;
    EXPECT_TRUE(Shows(outcome, "Kind        folder\n"));
    EXPECT_FALSE(Shows(outcome, "Size"));

    fs::remove(m_picture);
    EXPECT_TRUE(Fails(Host({"info", Path("link.png").string()}), "it is a link to nothing"));
    EXPECT_EQ(Host({"info", m_picture.string()}).status, 1);
}

TEST_F(FilesTest, TrashTakesWhatItCanAndReportsTheRest)
{
    const fs::path folder = m_media / "2024-02 Sapporo";
    fs::create_symlink(m_picture, m_media / "link");
    const HostOutcome outcome =
        Host({"trash", m_picture.string(), Path("none").string(), "/proc/self/stat", (m_media / "link").string()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(std::ranges::count(outcome.err, '\n'), 2) << outcome.err;
    EXPECT_TRUE(Shows(outcome.err, "cannot move to the trash " + Path("none").string() + ": No such file"));
    EXPECT_FALSE(fs::exists(m_picture));
    EXPECT_FALSE(fs::is_symlink(m_media / "link"));
    EXPECT_TRUE(fs::exists(folder / "night walk.jpg"));

    EXPECT_EQ(Host({"trash", folder.string()}).status, 0);
    EXPECT_FALSE(fs::exists(folder));
    const HostOutcome import = Import(Path(""));
    EXPECT_TRUE(Shows(import.out, "0 new")) << "what is in the trash is no longer there";
}

TEST_F(FilesTest, OpenStartsApplicationsAndOpensDocumentsWithThem)
{
    const std::string viewer = Program("viewer").string();
    EXPECT_EQ(Opened({m_picture.string(), "--with", viewer}), m_picture.string() + "|");
    EXPECT_EQ(Opened({viewer}), "|");

    EXPECT_TRUE(Fails(Host({"open", m_picture.string()}), "the desktop knows no application for it"));
    EXPECT_EQ(Host({"open", m_picture.string(), "--with", m_picture.string()}).status, 1);

    // The desktop's choice; marked as a program, as on disks without permissions, a picture still is none.
    fs::create_directories(Path(".local/share/applications"));
    std::ofstream(Path(".local/share/applications/viewer.desktop"))
        << "[Desktop Entry]\nType=Application\nName=V\nMimeType=image/jpeg;\nExec=" << viewer << " --show %f\n";
    std::ofstream(Path(".local/share/applications/mimeapps.list"))
        << "[Default Applications]\nimage/jpeg=viewer.desktop\n";
    fs::permissions(m_picture, fs::perms::owner_all);
    EXPECT_EQ(Opened({m_picture.string()}), "--show|" + m_picture.string() + "|");
}
