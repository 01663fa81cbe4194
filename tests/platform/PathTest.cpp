// Paths as text, and references to the items that they name.

#include <algorithm>
#include <filesystem>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <halyon/platform/FileManager.h>
#include <halyon/platform/TovPCMac.h>
#include <tests/support/TempFolder.h>
#include <tests/support/Text.h>

using namespace HalyonTest;
namespace fs = std::filesystem;

namespace
{
// The text after `change` with its result, in a buffer with room for `room` units more than the text.
std::string Changed(int (*change)(char16_t*) noexcept, const char16_t* text, std::size_t room = 0)
{
    std::u16string buffer(text);
    buffer.resize(buffer.size() + room); // the sanitizers watch what lies behind
    const int result = change(buffer.data());
    return U8(buffer.data()) + " " + std::to_string(result);
}

std::string CommonPrefix(const char16_t* a, const char16_t* b)
{
    std::u16string out(kTovPathUnits, u'#');
    const int length = TovPathCommonPrefix(a, b, out.data());
    return U8(out.c_str()) + " " + std::to_string(length);
}

// Whether each of the calls that ask about `path` finds it: folder, item, reference.
std::string Found(const CTovStringW& path)
{
    const Tov0FSRRef ref = Tov0FSRCreateWithPath(path);
    std::string found = std::to_string(TovPathIsDirectory(path)) + std::to_string(TovPathFileExists(path)) +
                        (ref != nullptr ? "1" : "0");
    Tov0FSRRelease(ref);
    return found;
}

int Delete(const CTovStringW& path)
{
    const Tov0FSRRef ref = Tov0FSRCreateWithPath(path);
    const int result = TovFileDeleteExt(ref);
    Tov0FSRRelease(ref);
    return result;
}
} // namespace

TEST(PathText, ChangesInPlaceAndKeepsTheRoot)
{
    // text, one separator less, one at the end, without its last component
    const std::tuple<const char16_t*, const char*, const char*, const char*> cases[] = {
        {u"/a/b", "/a/b 0", "/a/b/ 1", "/a 1"},
        {u"/a/b/", "/a/b 1", "/a/b/ 0", "/a/b 1"},
        {u"/a//b", "/a//b 0", "/a//b/ 1", "/a 1"},
        {u"/a//", "/a/ 1", "/a// 0", "/a 1"},
        {u"/a", "/a 0", "/a/ 1", "/ 1"},
        {u"/", "/ 0", "/ 0", "/ 0"},
        {u"//", "/ 1", "// 0", "/ 1"},
        {u"abc", "abc 0", "abc/ 1", " 1"},
        {u"", " 0", "/ 1", " 0"},
        {u"/写真/\\", "/写真/\\ 0", "/写真/\\/ 1", "/写真 1"},
    };
    for (const auto& [text, removed, added, parent] : cases)
    {
        EXPECT_EQ(Changed(TovPathRemoveSlash, text), removed) << U8(text);
        EXPECT_EQ(Changed(TovPathAddSlash, text, 1), added) << U8(text);
        EXPECT_EQ(Changed(TovPathRemoveFileSpec, text), parent) << U8(text);
    }
}

TEST(PathText, JoinsWithExactlyOneSeparator)
{
    const std::tuple<const char16_t*, const char16_t*, const char*> cases[] = {
        {u"/a", u"b", "/a/b"},
        {u"/a/", u"b", "/a/b"},
        {u"/a//", u"//b/", "/a/b/"},
        {u"/", u"b", "/b"},
        {u"/", u"/b", "/b"},
        {u"", u"b", "b"},
        {u"", u"/b", "/b"},
        {u"/a", u"", "/a"},
        {u"/a", u"b/c", "/a/b/c"},
        {u"", u"", ""},
        {u"/写真", u"旅", "/写真/旅"},
    };
    for (const auto& [dir, name, joined] : cases)
    {
        std::u16string buffer(dir);
        buffer.resize(buffer.size() + tov_wcslen(name) + 1);
        EXPECT_EQ(TovPathAppend(buffer.data(), name), 1);
        EXPECT_EQ(U8(buffer.c_str()), joined);
    }
    EXPECT_EQ(TovPathAppend(nullptr, u"b"), 0);
}

TEST(PathText, NamesAndExtensionsAreOfTheLastComponent)
{
    const std::tuple<const char16_t*, const char*, const char*> cases[] = {
        {u"/a/b.c", "b.c", ".c"}, {u"/a.d/b", "b", ""},  {u"/a/b.tar.gz", "b.tar.gz", ".gz"},
        {u"/a/b.d/", "", ""},     {u"b.c", "b.c", ".c"}, {u"/.rc", ".rc", ".rc"},
        {u"/a/b.", "b.", "."},    {u"/", "", ""},        {u"", "", ""},
    };
    for (const auto& [path, name, extension] : cases)
    {
        EXPECT_EQ(U8(TovPathFindFileName(path)), name) << U8(path);
        EXPECT_EQ(U8(TovPathFindExtension(path)), extension) << U8(path);
    }
    EXPECT_EQ(TovPathFindFileName(nullptr), nullptr);
    EXPECT_EQ(TovPathFindExtension(nullptr), nullptr);
}

TEST(PathText, NetworkPathsHaveAHost)
{
    for (const char16_t* path : {u"//host", u"//host/share/a", u"\\\\host\\share", u"//写真/a", u"//1.2.3.4/a"})
        EXPECT_NE(TovPathIsUNC(path), 0) << U8(path);
    for (const char16_t* path :
         {u"", u"/", u"//", u"///a", u"/a//b", u"//./a", u"\\\\?\\a", u"\\\\", u"/\\host", u"// a", u"host", u"\\host"})
        EXPECT_EQ(TovPathIsUNC(path), 0) << U8(path);
}

TEST(PathText, CommonPrefixTakesWholeComponents)
{
    const std::tuple<const char16_t*, const char16_t*, const char*> cases[] = {
        {u"/a/b/c", u"/a/b/d", "/a/b 4"},
        {u"/a/b", u"/a/bc", "/a 2"},
        {u"/a/b", u"/a/b/c", "/a/b 4"},
        {u"/a/b/", u"/a/b", "/a/b 4"},
        {u"/a/b/", u"/a/b/", "/a/b 4"},
        {u"/a", u"/b", "/ 1"},
        {u"/", u"/a", "/ 1"},
        {u"a/b", u"a/c", "a 1"},
        {u"a", u"b", " 0"},
        {u"ab", u"ac", " 0"},
        {u"", u"/a", " 0"},
        {u"/A/b", u"/a/b", "/ 1"},
        {u"/a/写", u"/a/真", "/a 2"},
    };
    for (const auto& [a, b, prefix] : cases)
    {
        EXPECT_EQ(CommonPrefix(a, b), prefix) << U8(a) << " and " << U8(b);
        EXPECT_EQ(CommonPrefix(b, a), prefix) << U8(b) << " and " << U8(a);
    }
    const std::u16string longest = u"/" + std::u16string(kTovPathUnits - 2, u'x');
    EXPECT_EQ(CommonPrefix((longest + u"/a").c_str(), (longest + u"/b").c_str()), U8(longest) + " 1023");
    EXPECT_EQ(CommonPrefix((longest + u"x/a").c_str(), (longest + u"x/b").c_str()), " 0");
}

TEST(Items, OnlyReferencesSeeLinksThemselves)
{
    const TempFolder folder;
    folder.Write("file");
    fs::create_directory(folder.Path() / "dir");
    fs::create_directory_symlink("dir", folder.Path() / "link");
    fs::create_symlink("nowhere", folder.Path() / "dangling");
    const std::pair<const char*, const char*> cases[] = {
        {"file", "011"},   {"file/", "000"},     {"dir", "111"},    {"dir/", "111"},
        {"dir/..", "111"}, {"link", "111"},      {"link/", "111"},  {"dangling", "001"},
        {"none", "000"},   {"none/file", "000"}, {"file/x", "000"}, {"link/../file", "011"},
    };
    for (const auto& [name, found] : cases)
        EXPECT_EQ(Found(folder.Wide(name)), found) << name;
    EXPECT_EQ(Found(CTovStringW()), "000");
    EXPECT_EQ(Found(u"/"), "111");
    fs::current_path(folder.Path());
    EXPECT_EQ(Found(u"file"), "011");
    EXPECT_EQ(Found(u"."), "111");
    fs::current_path("/");
}

TEST(Items, PathsThatAreTooLongNameNothing)
{
    const TempFolder folder;
    const std::string part = "写真" + std::string(190, 'd');
    const std::string name = part + "/" + part + "/" + part + "/" + part + "/" + part;
    fs::create_directories(folder.Path() / name / part);
    EXPECT_EQ(Found(folder.Wide(name)), folder.Path().native().size() + name.size() < 1023 ? "111" : "110");
    EXPECT_EQ(Found(folder.Wide(name + "/" + part)), "110") << "a reference keeps 1023 bytes";
    std::string longer = name;
    while (longer.size() < 5000)
        longer += "/.";
    EXPECT_EQ(Found(folder.Wide(longer)), "000") << "the system takes 4095 bytes";
}

TEST(Items, DeletesTheItemItselfAndNothingElse)
{
    const TempFolder folder;
    fs::create_directories(folder.Path() / "full/below");
    fs::create_directory(folder.Path() / "empty");
    folder.Write("file");
    fs::create_directory_symlink("full", folder.Path() / "link");
    fs::create_symlink("nowhere", folder.Path() / "dangling");
    ASSERT_EQ(mkfifo((folder.Path() / "pipe").c_str(), 0600), 0);
    for (const char* name : {"empty/", "file", "link/", "dangling", "pipe"})
    {
        EXPECT_EQ(Delete(folder.Wide(name)), 1) << name;
        EXPECT_EQ(Delete(folder.Wide(name)), 0) << name << " again";
    }
    EXPECT_EQ(Delete(folder.Wide("full")), 0);
    EXPECT_EQ(TovFileDeleteExt(nullptr), 0);
    EXPECT_TRUE(fs::exists(folder.Path() / "full/below"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 1);
}

TEST(Items, AReferenceNeverActsOnAnotherItem)
{
    const TempFolder folder;
    folder.Write("file");
    const Tov0FSRRef ref = Tov0FSRCreateWithPath(folder.Wide("file"));
    Halyon::FSRef absolute;
    ASSERT_EQ(Tov0FSRToAbs(ref, &absolute, 0), 1);
    EXPECT_EQ(absolute.szPath, folder.Path() / "file");
    EXPECT_EQ(Tov0FSRToAbs(ref, &absolute, 1), 0) << "no such flag";
    folder.Write("other");
    fs::rename(folder.Path() / "other", folder.Path() / "file");
    EXPECT_EQ(TovFileDeleteExt(ref), 0);
    EXPECT_EQ(Tov0FSRToAbs(ref, &absolute, 0), 0);
    EXPECT_EQ(absolute.szPath[0], 0);
    Tov0FSRRelease(ref);
    EXPECT_TRUE(fs::exists(folder.Path() / "file"));
}
