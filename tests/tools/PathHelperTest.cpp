// The path helper, on text and on files.

#include <filesystem>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <halyon/tools/CHynPathHelper.h>
#include <tests/support/Allocations.h>
#include <tests/support/InChild.h>
#include <tests/support/TempFolder.h>
#include <tests/support/Text.h>

using Halyon::CHynPathHelper;
using Halyon::ExpandTildePath;
using namespace HalyonTest;
namespace fs = std::filesystem;

TEST(PathHelper, StringsChangeAloneAndEmptyOnesStayEmpty)
{
    const CTovStringW before = u"/a/b";
    CTovStringW path = before;
    CHynPathHelper::AddBackslash(path);
    EXPECT_EQ(U8(path), "/a/b/");
    CHynPathHelper::RemoveBacksplash(path);
    EXPECT_EQ(U8(path), "/a/b");
    path = before;
    EXPECT_EQ(CHynPathHelper::RemoveFileSpec(path), 1);
    EXPECT_EQ(U8(path), "/a");
    EXPECT_EQ(U8(before), "/a/b") << "shared the text";
    EXPECT_EQ(CHynPathHelper::CommonPrefix(before, u"/a/c", path), 2);
    EXPECT_EQ(CHynPathHelper::CommonPrefix(u"a", u"b", path), 0);
    EXPECT_EQ(U8(path), "");
    CHynPathHelper::AddBackslash(path);
    CHynPathHelper::RemoveBacksplash(path);
    EXPECT_EQ(CHynPathHelper::RemoveFileSpec(path), 0);
    EXPECT_EQ(U8(path), "");
}

TEST(PathHelper, AFolderHasItsOwnName)
{
    const std::pair<const char16_t*, const char*> cases[] = {
        {u"/a/b.c", "b.c"}, {u"/a/b/", "b"}, {u"b", "b"}, {u"/", ""}, {u"", ""}, {u"/a//", ""}, {nullptr, ""},
    };
    for (const auto& [path, name] : cases)
        EXPECT_EQ(U8(CHynPathHelper::FindFileName(path)), name) << U8(path);
    EXPECT_EQ(U8(CHynPathHelper::FindExtension(u"/a.b/c.d")), ".d");
}

TEST(PathHelper, MakeFullPathTakesPathsOfAnyLength)
{
    EXPECT_EQ(U8(CHynPathHelper::MakeFullPath(u"/a/", u"b")), "/a/b");
    EXPECT_EQ(U8(CHynPathHelper::MakeFullPath(nullptr, u"b")), "b");
    EXPECT_EQ(U8(CHynPathHelper::MakeFullPath(u"/a", nullptr)), "/a");
    const std::u16string folder(5000, u'd');
    const std::u16string name(5000, u'n');
    EXPECT_EQ(CHynPathHelper::MakeFullPath(folder.c_str(), name.c_str()), folder + u"/" + name);
}

TEST(PathHelper, ReplacesAPrefixWhateverItsCase)
{
    const std::tuple<const char16_t*, const char16_t*, const char16_t*, const char*> cases[] = {
        {u"/A/b/c", u"/a", u"/x", "/x/b/c"}, {u"/a", u"/a", u"", ""},
        {u"/a/b", u"", u"/x", "/x/a/b"},     {u"/a", u"/a/b", u"/x", ""},
        {u"/ab/c", u"/a", u"/x/", "/x/b/c"}, {u"/b/c", u"/a", u"/x", ""},
        {u"/ΣΙ/c", u"/σι", u"/x", "/x/c"},   {nullptr, u"", u"", ""},
        {u"/a", nullptr, u"/x", ""},         {u"/a", u"/a", nullptr, ""},
    };
    for (const auto& [path, from, to, replaced] : cases)
        EXPECT_EQ(U8(CHynPathHelper::ReplaceUpLevelPath(path, from, to)), replaced) << U8(path) << " " << U8(from);
}

TEST(PathHelper, SameFolderMeansTheSameParent)
{
    const std::tuple<const char16_t*, const char16_t*, bool> cases[] = {
        {u"/a/b", u"/A/c", true}, {u"/a/b/", u"/a/c", true}, {u"/a/b/c", u"/a/c", false}, {u"/a", u"/", true},
        {u"b", u"c", true},       {u"b", u"/c", false},      {u"/a/b", u"/a", false},
    };
    for (const auto& [a, b, same] : cases)
        EXPECT_EQ(CHynPathHelper::FileInSameFolder(a, b), same) << U8(a) << " and " << U8(b);
}

TEST(PathHelper, FoldersNestByWholeComponentsWhateverTheirCase)
{
    const std::tuple<const char16_t*, const char16_t*, int> cases[] = {
        {u"/a/b", u"/a/b/c", 1},
        {u"/a/B/", u"/A/b", -2},
        {u"/a/b", u"/a/bc", 0},
        {u"/", u"/a", 1},
        {u"", u"/a", 1},
        {u"", u"", -2},
        {u"a", u"a/b", 1},
        {u"a", u"/a", 0},
        {u"/ΣΙ/写", u"/σι/写/b", 1},
        {u"/a/b/", u"/a/c/d", 0},
        {nullptr, u"/a", 1},
        {u"/Volumes", u"/Volumes/x", 0}, // the latter is in the long form already
        {u"/VOLUMES/x", u"/volumes/X/y", 1},
    };
    for (const auto& [a, b, nesting] : cases)
    {
        EXPECT_EQ(CHynPathHelper::PathInPath(a, b), nesting) << U8(a) << " and " << U8(b);
        const int other = nesting == 1 ? -1 : nesting;
        EXPECT_EQ(CHynPathHelper::PathInPath(b, a), other) << U8(b) << " and " << U8(a);
    }
}

TEST(PathHelper, AStartupVolumePathIsTheSameInItsLongForm)
{
    const CTovStringW expanded = ExpandTildePath(u"/Users/x");
    const std::u16string_view text = expanded.View();
    ASSERT_TRUE(text.starts_with(u"/Volumes/") && text.ends_with(u"/Users/x")) << U8(expanded);
    EXPECT_EQ(text.substr(9, text.size() - 17).find(u'/'), std::u16string_view::npos) << "the name is one component";
    for (const char16_t* path : {u"/VOLUMES/Disk/x", u"/Volumes/", u"relative/x", u"", u"~/x"})
        EXPECT_EQ(U8(ExpandTildePath(path)), U8(path));
    EXPECT_EQ(CHynPathHelper::PathInPath(u"/Users/x", expanded), -2);
    EXPECT_EQ(CHynPathHelper::PathInPath(expanded, u"/users/X/y"), 1);
    EXPECT_EQ(CHynPathHelper::PathInPath(expanded, u"/"), -1);
    EXPECT_EQ(CHynPathHelper::PathInPath(u"/Volumes/x", u"/x"), 0);
}

TEST(PathHelper, RelativePathsLeaveTheVolumeOut)
{
    // path, its volume, the path on it, its folder on it
    const std::tuple<const char16_t*, const char*, const char*, const char*> cases[] = {
        {u"/a/b", "", "/a/b/", "/a/"},
        {u"/", "", "/", "/"},
        {u"", "", "", ""},
        {u"a/b", "", "a/b/", "a/"},
        {u"/proc/1/x", "/proc", "/1/x/", "/1/"},
        {u"/proc", "/proc", "/", "/"},
        {u"//host/share/a", "", "//host/share/a/", "//host/share/"},
    };
    for (const auto& [path, driver, relative, folder] : cases)
    {
        EXPECT_EQ(U8(CHynPathHelper::GetPathDriver(path)), driver) << U8(path);
        EXPECT_EQ(U8(CHynPathHelper::GetRelativePath(path)), relative) << U8(path);
        EXPECT_EQ(U8(CHynPathHelper::GetFileRelativePath(path)), folder) << U8(path);
    }
    EXPECT_EQ(CHynPathHelper::IsSameRoot(u"/proc/1", u"/"), 0);
    EXPECT_EQ(CHynPathHelper::IsRoot(u"/proc/"), 1);
}

TEST(PathHelper, OneMayScanOnesOwnFoldersButNotTheSystems)
{
    const TempFolder folder;
    const std::string home = folder.Path() / "home";
    fs::create_directory(home);
    const std::pair<std::string, bool> cases[] = {
        {home, true},
        {home + "/Pictures", true},
        {home + "/.local/share", false},
        {home + "/.LOCAL/share/x", false},
        {"/", true},
        {"/srv/media", true},
        {folder.Path(), true},
        {"/usr", false},
        {"/USR/lib", false},
        {"/usr/src/x", false},
        {"/var/lib/x", false},
        {"/opt", !fs::exists("/opt")},
        {"/home", false},
        {"/home/other", false},
        {"//host/share", false},
        {"/proc", false},
        {"", false},
    };
    const auto ask = [&](const char* homeFolder)
    {
        setenv("HOME", homeFolder, 1);
        unsetenv("XDG_DATA_HOME");
        std::string text;
        for (const auto& [path, valid] : cases)
            text += CHynPathHelper::IsValidScanFolder(CTovStringW::FromUTF8(path)) ? "1" : "0";
        return text;
    };
    std::string expected;
    for (const auto& [path, valid] : cases)
        expected += valid ? "1" : "0";
    if (!CHynPathHelper::IsValidScanFolder(folder.Wide("")) || !fs::exists("/home"))
        GTEST_SKIP() << "the folder for temporary files is on no disk, or there is no /home";
    EXPECT_EQ(InChild([&] { return ask(home.c_str()); }), expected);
    EXPECT_TRUE(fs::exists(home + "/.local/share"));
    // Without a home there is nothing to keep apart: other users' folders are taken too.
    const std::string homeless = InChild([&] { return ask("/none"); });
    EXPECT_EQ(homeless, "11111" + expected.substr(5, 7) + "11" + "000");
    EXPECT_FALSE(CHynPathHelper::IsValidScanFolder(nullptr));
    EXPECT_FALSE(CHynPathHelper::IsRecycleBinFolder(u"/"));
}

TEST(PathHelper, ReadOnlyIsWhatTheCallerCannotWrite)
{
    const TempFolder folder;
    folder.Write("open");
    folder.Write("closed");
    folder.Write("写真 open");
    fs::permissions(folder.Path() / "open", fs::perms(0666));
    fs::permissions(folder.Path() / "写真 open", fs::perms(0666));
    fs::permissions(folder.Path() / "closed", fs::perms(0444));
    fs::create_symlink("open", folder.Path() / "link");
    ASSERT_EQ(mkfifo((folder.Path() / "pipe").c_str(), 0666), 0);
    EXPECT_EQ(InChild(
                  [&]
                  {
                      HalyonTest::BecomeNobody();
                      std::string text;
                      for (const char* name : {"open", "写真 open", "link", "closed", "pipe", "", "none"})
                          text += CHynPathHelper::IsReadOnlyFile(folder.Wide(name)) != 0 ? "1" : "0";
                      return text;
                  }),
              "0001111");
    EXPECT_NE(CHynPathHelper::IsReadOnlyFile(u""), 0);
    EXPECT_NE(CHynPathHelper::IsReadOnlyFile(nullptr), 0);
}
