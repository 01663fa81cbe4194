#include <algorithm>
#include <climits>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "OpenString.h"
#include "tests/support/Text.h"

using namespace std::string_literals;
using namespace std::string_view_literals;
using Halyon::CFRelease;
using Halyon::CFStringRef;
using HalyonTest::U8;

namespace
{
// A platform text for the length of a test.
struct ReleaseText
{
    void operator()(CFStringRef text) const noexcept { CFRelease(text); }
};
using PlatformText = std::unique_ptr<const Halyon::__CFString, ReleaseText>;

PlatformText Platform(std::u16string_view text)
{
    return PlatformText(
        Halyon::CFStringCreateWithCharacters(nullptr, text.data(), static_cast<Halyon::CFIndex>(text.size())));
}

TEST(String, HostsWriteItInEveryUsualForm)
{
    CTovStringW s(u"bc");
    const CTovStringW t = s;
    EXPECT_EQ(tov_wcslen(s), 2u);
    EXPECT_TRUE(s[0] == u'b' && s[std::size_t{1}] == u'c' && s[s.GetLength()] == 0);
    EXPECT_TRUE(s == u"bc" && u"bc" == s && s == t && s == u"bc"sv && u"bc"sv == s && s == std::u16string(u"bc"));
    EXPECT_TRUE(s != u"b" && s != CTovStringW() && CTovStringW() == nullptr && !(s < t) && s <= t);
    EXPECT_TRUE(s < u"bd" && u"bb" < s && s > u"b"sv && s < std::u16string(u"c"));
    EXPECT_TRUE(std::u16string(s) == u"bc" && std::u16string_view(s) == u"bc");
    EXPECT_EQ(U8(u"a" + s + u"d" + t), "abcdbc");
    EXPECT_EQ(U8(s += s), "bcbc");
    s = std::u16string(u"xy").c_str();
    EXPECT_EQ(U8(s), "xy");
    s = nullptr;
    s += nullptr;
    EXPECT_TRUE(s.IsEmpty());
    std::u16string walked;
    for (const char16_t unit : t)
        walked += unit;
    EXPECT_TRUE(t == walked);
}

TEST(String, ServesAsKey)
{
    const std::vector<CTovStringW> names = {u"b", u"", u"abc", u"a", u"b", u"ab"};
    EXPECT_EQ(std::unordered_set<CTovStringW>(names.begin(), names.end()).size(), 5u);
    EXPECT_TRUE(std::ranges::equal(std::set<CTovStringW>(names.begin(), names.end()),
                                   std::vector<CTovStringW>{u"", u"a", u"ab", u"abc", u"b"}));
}

TEST(String, OrderIsThatOfTheUnits)
{
    // Differences in front of, at and behind the places where a comparison by larger steps could stumble.
    std::vector<std::u16string> texts = {u"", u"a", u"\xFFFF", u"\xD800", u"\x0100", u"\x00FF", u"a\0b"s, u"a\0"s};
    for (const std::size_t at : {0u, 6u, 7u, 8u, 15u, 16u, 23u})
    {
        for (const char16_t unit : {u'\0', u'y', u'\x0178', u'\x7801'})
        {
            std::u16string text(24, u'x');
            text[at] = unit;
            texts.push_back(text);
            texts.push_back(text.substr(0, at + 1));
        }
    }
    for (const std::u16string& a : texts)
    {
        for (const std::u16string& b : texts)
        {
            const CTovStringW x{std::u16string_view(a)};
            const CTovStringW y{std::u16string_view(b)};
            ASSERT_EQ(x <=> y, a <=> b) << U8(a) << " and " << U8(b);
            ASSERT_EQ(x == y, a == b) << U8(a) << " and " << U8(b);
        }
    }
}

TEST(String, EmptyTextsHaveOneBlockWhichIsMendedWhenWrittenTo)
{
    const PlatformText nothing = Platform(u"");
    const CTovStringW none(static_cast<const char16_t*>(nullptr));
    for (const CTovStringW& text : {CTovStringW(), CTovStringW(nullptr), none, CTovStringW(u""), CTovStringW(u""sv),
                                    CTovStringW(nothing.get()), CTovStringW(CFStringRef{}), CTovStringW(none),
                                    CTovStringW(u"ab").Mid(2), none + none, CTovStringW::FromUTF8("")})
        EXPECT_TRUE(IsEmptyBlock(text));
    const std::int32_t count = tovtmpDataNilW->nRefCount;
    EXPECT_LT(count, 0);

    // What a host has scribbled there is gone with the next empty text.
    CTovStringW a;
    tovtmpDataNilW->nLength = 1;
    *tovtmpPchNilW = u'x';
    a = u"";
    EXPECT_TRUE(a.IsEmpty() && a[0] == 0);
    EXPECT_EQ(tovtmpDataNilW->nRefCount, count);
}

TEST(String, FindsTheEmptyBlockAnewEachTime)
{
    struct
    {
        CTovStringWData header;
        char16_t terminator;
    } block = {{-1, 0, 0}, 0};
    CTovStringWData* const data = std::exchange(tovtmpDataNilW, &block.header);
    char16_t* const text = std::exchange(tovtmpPchNilW, &block.terminator);
    {
        CTovStringW a;
        const CTovStringW b = a;
        EXPECT_EQ(a.begin(), &block.terminator);
        EXPECT_EQ(b.begin(), &block.terminator);
        a = u"x";
    }
    tovtmpDataNilW = data;
    tovtmpPchNilW = text;
    EXPECT_EQ(block.header.nRefCount, -1);
}

// Places near the text are the model's.
TEST(String, PartsAreClampedAlsoAtTheEndsOfTheNumbers)
{
    const CTovStringW text = u"abcdef";
    const std::pair<CTovStringW, const char*> cases[] = {
        {text.Mid(2, INT_MAX), "cdef"},   {text.Mid(INT_MAX, INT_MAX), ""}, {text.Mid(INT_MIN, 3), "abc"},
        {text.Mid(INT_MIN, INT_MIN), ""}, {text.Mid(INT_MAX), ""},          {text.Mid(INT_MIN), "abcdef"},
        {text.Left(INT_MAX), "abcdef"},   {text.Left(INT_MIN), ""}};
    for (const auto& [part, expected] : cases)
        EXPECT_EQ(U8(part), expected);
}

TEST(String, FindsExactUnitsAndNoneInNull)
{
    EXPECT_EQ(CTovStringW(u"aB\\").FindOneOf(u"b/\\"), 2);
    EXPECT_EQ(CTovStringW(u"ab").FindOneOf(nullptr), -1);
}

TEST(String, CarriesZeroUnitsToThePlatformAndBack)
{
    const CTovStringW a(u"a\0b"sv);
    const PlatformText platform(a.StringRef());
    EXPECT_TRUE(CTovStringW(platform.get()) == a);
    EXPECT_TRUE(CTovStringW::FromUTF8(a.ToUTF8()) == a);
}

TEST(String, UTF8OutputTellsTheUnitsAndNeverLeavesACutText)
{
    const struct
    {
        std::u16string_view text;
        const char* expected; // in a buffer of '?' before
        int size;
        int units;
    } cases[] = {{u"abc", "abc", 4, 3},
                 {u"abc", "", 3, 3},
                 {u"abc", "????", 0, 3},
                 {u"abc", "????", -1, 3},
                 {u"", "", 4, 0},
                 {u"\u3042", "", 3, 1},
                 {u"\xD83D\xDE00", "\xF0\x9F\x98\x80", 5, 2},
                 {u"\xD83D", "\xEF\xBF\xBD", 5, 1},
                 {u"a\0b"sv, "a", 4, 1}};
    for (const auto& c : cases)
    {
        char buffer[8] = "????";
        EXPECT_EQ(CTovStringW(c.text).GetUTF8String(buffer, c.size), c.units) << U8(c.text);
        EXPECT_STREQ(buffer, c.expected) << U8(c.text) << ", " << c.size;
    }
    EXPECT_EQ(CTovStringW(u"abc").GetUTF8String(nullptr, 9), 3);
}

TEST(String, UTF8HelpersConvertTextsOfAnyLength)
{
    for (const std::size_t units : {1u, 170u, 171u, 512u, 513u, 5000u})
    {
        const std::u16string text(units, u'\u3042');
        const CTovStringW a(text);
        EXPECT_EQ(a.ToUTF8().size(), 3 * units);
        EXPECT_TRUE(CTovStringW::FromUTF8(a.ToUTF8()) == text);
    }
    EXPECT_EQ(CTovStringW(u"a\xDC00").ToUTF8(), "a\xEF\xBF\xBD");
    EXPECT_TRUE(CTovStringW::FromUTF8("a\xFF") == u"a\uFFFD");
}

TEST(String, MakesReferencesToItemsThatExist)
{
    Halyon::FSRef ref;
    EXPECT_TRUE(CTovStringW(u"/").MakeFSRef(&ref));
    // A cut path would name the root.
    const CTovStringW tooLong(std::u16string(1024, u'/'));
    for (const CTovStringW& path : {CTovStringW(), CTovStringW(u"/no/such/item"), tooLong})
        EXPECT_FALSE(path.MakeFSRef(&ref)) << U8(path);
}
} // namespace
