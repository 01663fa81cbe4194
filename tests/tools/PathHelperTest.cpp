// The path helper, on text and on files.

#include <filesystem>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include <halyon/tools/CHynPathHelper.h>
#include <tests/support/Text.h>

using Halyon::CHynPathHelper;
using HalyonTest::U8;

TEST(PathHelper, StringsChangeInPlaceAndEmptyOnesStayEmpty)
{
    // text, one separator less, one at the end, without its last component
    const std::tuple<const char16_t*, const char*, const char*, const char*> cases[] = {
        {u"/a/b", "/a/b", "/a/b/", "/a 1"}, {u"/a/", "/a", "/a/", "/a 1"}, {u"/", "/", "/", "/ 0"},
        {u"abc", "abc", "abc/", " 1"},      {u"", "", "", " 0"},
    };
    for (const auto& [text, removed, added, parent] : cases)
    {
        const CTovStringW shared = text;
        CTovStringW changed = shared;
        CHynPathHelper::RemoveBacksplash(changed);
        EXPECT_EQ(U8(changed), removed);
        changed = shared;
        CHynPathHelper::AddBackslash(changed);
        EXPECT_EQ(U8(changed), added);
        changed = shared;
        const int result = CHynPathHelper::RemoveFileSpec(changed);
        EXPECT_EQ(U8(changed) + " " + std::to_string(result), parent);
        EXPECT_EQ(U8(shared), U8(text)) << "the other string with the same text";
    }
}

TEST(PathHelper, PartsOfAPath)
{
    // path, name, extension
    const std::tuple<const char16_t*, const char*, const char*> cases[] = {
        {u"/a/b.c", "b.c", ".c"}, {u"/a/b/", "b", ""}, {u"/a/b.d/", "b.d", ""}, {u"b", "b", ""},
        {u"/", "", ""},           {u"", "", ""},       {u"/a//", "", ""},       {nullptr, "", ""},
    };
    for (const auto& [path, name, extension] : cases)
    {
        EXPECT_EQ(U8(CHynPathHelper::FindFileName(path)), name) << U8(path);
        EXPECT_EQ(U8(CHynPathHelper::FindExtension(path)), extension) << U8(path);
    }
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

TEST(PathHelper, CommonPrefixReplacesTheString)
{
    CTovStringW out = u"before";
    EXPECT_EQ(CHynPathHelper::CommonPrefix(u"/a/b", u"/a/c", out), 2);
    EXPECT_EQ(U8(out), "/a");
    EXPECT_EQ(CHynPathHelper::CommonPrefix(u"a", u"b", out), 0);
    EXPECT_EQ(U8(out), "");
}
