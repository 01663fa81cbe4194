#include <algorithm>
#include <climits>
#include <map>
#include <memory>
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

std::u16string_view AsView(const CTovStringW& text)
{
    std::u16string_view view = text;
    return view;
}

std::size_t PlainLength(const char16_t* psz)
{
    return tov_wcslen(psz);
}

TEST(String, HostsWriteItInEveryUsualForm)
{
    CTovStringW s(u"bc");
    const CTovStringW t = s;
    EXPECT_EQ(PlainLength(s), 2u);
    EXPECT_TRUE(s[0] == u'b' && s[std::size_t{1}] == u'c' && s[s.GetLength()] == 0);
    EXPECT_TRUE(s == u"bc" && u"bc" == s && s == t && s == u"bc"sv && u"bc"sv == s && s == std::u16string(u"bc"));
    EXPECT_TRUE(s != u"b" && s != CTovStringW() && CTovStringW() == nullptr && !(s < t) && s <= t);
    EXPECT_TRUE(s < u"bd" && u"bb" < s && s > u"b"sv && s < std::u16string(u"c"));
    EXPECT_TRUE(std::u16string(s) == u"bc" && std::u16string_view(s) == u"bc" && AsView(s) == u"bc");
    EXPECT_EQ(U8(u"a" + s + u"d" + t), "abcdbc");
    EXPECT_EQ(U8(s += s), "bcbc");
    s = std::u16string(u"xy").c_str();
    EXPECT_EQ(U8(s), "xy");
    s = nullptr;
    EXPECT_TRUE(s.IsEmpty());
    std::u16string walked;
    for (const char16_t unit : t)
        walked += unit;
    EXPECT_TRUE(t == walked);
}

TEST(String, ServesAsKeyAndSorts)
{
    std::vector<CTovStringW> names = {u"b", u"", u"abc", u"a", u"b", u"ab"};
    std::map<CTovStringW, int> counts;
    for (const CTovStringW& name : names)
        ++counts[name];
    EXPECT_EQ(counts[u"b"], 2);
    EXPECT_EQ(std::unordered_set<CTovStringW>(names.begin(), names.end()).size(), counts.size());
    std::sort(names.begin(), names.end());
    EXPECT_TRUE(names == (std::vector<CTovStringW>{u"", u"a", u"ab", u"abc", u"b", u"b"}));
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

TEST(String, CopiesShareAndLocksForbidIt)
{
    OpenString a(u"abc");
    CTovStringW b = a;
    CTovStringW c;
    c = b;
    EXPECT_EQ(HeaderOf(a).nRefCount, 3);
    EXPECT_TRUE(static_cast<const char16_t*>(a) == c.begin());
    c = a; // the block that it has already
    EXPECT_EQ(HeaderOf(a).nRefCount, 3);
    b = nullptr;
    c = CTovStringW();
    EXPECT_EQ(HeaderOf(a).nRefCount, 1);

    a.Lock();
    CTovStringW copy = a;
    b = a;
    CTovStringW moved;
    moved = std::move(a);
    for (const CTovStringW* text : {&copy, &b, &moved})
    {
        EXPECT_EQ(U8(*text), "abc");
        EXPECT_EQ(HeaderOf(*text).nRefCount, 1);
    }
    EXPECT_EQ(HeaderOf(a).nRefCount, -1); // NOLINT(bugprone-use-after-move): what is left is promised
}

TEST(String, CopyOfALockedTextEndsAtItsFirstZeroButAnAssignmentTakesAll)
{
    OpenString a(u"ab\0cd"sv);
    a.Lock();
    const CTovStringW copy = a;
    CTovStringW assigned;
    assigned = a;
    EXPECT_TRUE(copy == u"ab"sv);
    EXPECT_TRUE(assigned == u"ab\0cd"sv);
}

TEST(String, ALockedBlockIsWrittenInPlaceUntilItIsTooSmall)
{
    OpenString a(u" abcdef ");
    const CTovStringW other = u"xy";
    a.Lock();
    const char16_t* block = a;
    a.TrimLeft();
    a.TrimRight();
    EXPECT_EQ(U8(a), "abcdef");
    a += u"gh";
    EXPECT_EQ(U8(a), "abcdefgh");
    a = other;
    EXPECT_EQ(U8(a), "xy");
    a = CTovStringW(u"rvalue");
    EXPECT_EQ(U8(a), "rvalue");
    EXPECT_EQ(a.begin(), block);
    EXPECT_EQ(HeaderOf(a).nRefCount, -1);
    EXPECT_EQ(HeaderOf(a).nCapacity, 8);
    EXPECT_EQ(HeaderOf(other).nRefCount, 1);
    a += u"abc";
    EXPECT_EQ(U8(a), "rvalueabc");
    EXPECT_EQ(HeaderOf(a).nRefCount, 1);
}

TEST(String, AssignmentKeepsABlockThatIsLargeEnoughAndItsOwn)
{
    CTovStringW a = u"abcdef";
    const char16_t* block = a;
    for (const char16_t* text : {u"xyz", u"", u"uvwxyz"})
    {
        a = text;
        EXPECT_EQ(U8(a), U8(text));
        EXPECT_EQ(a.begin(), block);
        EXPECT_EQ(HeaderOf(a).nCapacity, 6);
    }
    a = CTovStringW(); // an empty text, whatever brings it
    EXPECT_EQ(a.begin(), block);
    a = u"abc";
    a += u"def"; // the room that the shorter text left
    EXPECT_EQ(a.begin(), block);
    const CTovStringW b = a;
    a = u"x";
    EXPECT_EQ(HeaderOf(a).nCapacity, 1);
    EXPECT_EQ(U8(b), "abcdef");
    EXPECT_EQ(HeaderOf(b).nRefCount, 1);
}

TEST(String, AcceptsPartsOfItself)
{
    CTovStringW a = u"abcdef";
    a = a + 2;
    EXPECT_EQ(U8(a), "cdef");
    CTovStringW b = a;
    b = b + 1; // of a block that it must leave
    EXPECT_EQ(U8(b), "def");
    a += a;
    EXPECT_EQ(U8(a), "cdefcdef");
    a += a + 6;
    EXPECT_EQ(U8(a), "cdefcdefef");
    a = u"abcd";
    a += a; // into the room that is left
    EXPECT_EQ(U8(a), "abcdabcd");
    a += nullptr;
    EXPECT_EQ(U8(a), "abcdabcd");
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

TEST(String, PartsAreClamped)
{
    const struct
    {
        int first;
        int count;
        const char* part;
    } cases[] = {{-3, 2, "ab"},          {4, 10, "ef"},       {6, 1, ""},  {7, 1, ""},
                 {0, 6, "abcdef"},       {2, -1, ""},         {2, 0, ""},  {2, INT_MAX, "cdef"},
                 {INT_MAX, INT_MAX, ""}, {INT_MIN, 3, "abc"}, {1, 1, "b"}, {INT_MIN, INT_MIN, ""}};
    const CTovStringW text = u"abcdef";
    for (const auto& c : cases)
        EXPECT_EQ(U8(text.Mid(c.first, c.count)), c.part) << c.first << ", " << c.count;
    for (const auto& [first, part] :
         std::map<int, const char*>{{-2, "abcdef"}, {4, "ef"}, {6, ""}, {INT_MAX, ""}, {INT_MIN, "abcdef"}})
        EXPECT_EQ(U8(text.Mid(first)), part) << first;
    for (const auto& [count, part] :
         std::map<int, const char*>{{-1, ""}, {0, ""}, {2, "ab"}, {6, "abcdef"}, {INT_MAX, "abcdef"}, {INT_MIN, ""}})
        EXPECT_EQ(U8(text.Left(count)), part) << count;
    EXPECT_NE(text.Left(100).begin(), text.begin());
    EXPECT_NE(text.Mid(0).begin(), text.begin());
    EXPECT_EQ(HeaderOf(text).nRefCount, 1);
}

TEST(String, FindsTheFirstOfASet)
{
    const struct
    {
        const char16_t* text;
        const char16_t* set;
        int position;
    } cases[] = {{u"a/b", u"\\/", 1}, {u"ab", u"\\/", -1},  {u"ab", u"", -1},   {u"", u"a", -1},
                 {u"aB", u"b", -1},   {u"ab", nullptr, -1}, {u"xab", u"bax", 0}};
    for (const auto& c : cases)
        EXPECT_EQ(CTovStringW(c.text).FindOneOf(c.set), c.position) << U8(c.text) << " / " << U8(c.set);
    EXPECT_EQ(CTovStringW(u"a\0b"sv).FindOneOf(u"b"), -1);
}

TEST(String, TrimsWhiteSpaceAndKeepsTheBlock)
{
    const struct
    {
        std::u16string_view text;
        std::u16string_view left;
        std::u16string_view right;
    } cases[] = {{u"a b  ", u"a b  ", u"a b"},
                 {u"  a ", u"a ", u"  a"},
                 {u"   ", u"", u""},
                 {u"\u3000\u00A0\t\nx\u2003\r", u"x\u2003\r", u"\u3000\u00A0\t\nx"},
                 {u"", u"", u""},
                 {u" \0 a \0 "sv, u"\0 a \0 "sv, u" \0 a \0"sv}};
    for (const auto& c : cases)
    {
        CTovStringW left(c.text);
        CTovStringW right(c.text);
        const char16_t* const blocks[] = {left, right};
        left.TrimLeft();
        right.TrimRight();
        EXPECT_EQ(U8(left), U8(c.left));
        EXPECT_EQ(U8(right), U8(c.right));
        EXPECT_TRUE(left.begin() == blocks[0] && right.begin() == blocks[1]);
        EXPECT_TRUE(left[left.GetLength()] == 0 && right[right.GetLength()] == 0);
        EXPECT_EQ(HeaderOf(left).nCapacity, static_cast<int>(c.text.size()));
    }
}

TEST(String, TrimmingDetachesFromASharedBlockAlsoWhenNothingIsTrimmed)
{
    for (const char16_t* text : {u" a ", u"a"})
    {
        for (const auto trim : {&CTovStringW::TrimLeft, &CTovStringW::TrimRight})
        {
            const CTovStringW a = text;
            CTovStringW b = a;
            (b.*trim)();
            EXPECT_EQ(U8(a), U8(text));
            EXPECT_EQ(HeaderOf(a).nRefCount, 1);
            EXPECT_NE(a.begin(), b.begin());
            EXPECT_EQ(HeaderOf(b).nCapacity, a.GetLength());
        }
    }
}

TEST(String, CarriesZeroUnitsWhereALengthIsKnown)
{
    const CTovStringW a(u"a\0b"sv);
    const PlatformText platform(a.StringRef());
    EXPECT_TRUE(a + a == u"a\0ba\0b"sv);
    EXPECT_TRUE(a + u"c" == u"a\0bc"sv);
    EXPECT_TRUE(a.Mid(1) == u"\0b"sv);
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
                 {u"abc", "", 1, 3},
                 {u"abc", "????", 0, 3},
                 {u"abc", "????", -1, 3},
                 {u"", "", 4, 0},
                 {u"\u3042", "\xE3\x81\x82", 4, 1},
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
