// Counted platform texts.

#include <cstdint>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include <halyon/platform/CoreFoundation.h>

#include "tests/support/Allocations.h"
#include "tests/support/Text.h"

using namespace Halyon;
using HalyonTest::U8;

namespace
{
CFStringRef Make(std::u16string_view text)
{
    return CFStringCreateWithCharacters(nullptr, text.data(), static_cast<CFIndex>(text.size()));
}
} // namespace

TEST(CFString, KeepsItsUnitsUntilTheLastReferenceGoes)
{
    const long long before = HalyonTest::LiveAllocations();
    std::u16string source(u"a\0\xD800z", 4);
    CFStringRef string = Make(source);
    CFTypeRef again = CFRetain(string);
    EXPECT_EQ(again, string);
    source.assign(4, u'#'); // the text is a copy
    CFRelease(again);
    EXPECT_EQ(CFStringGetLength(string), 4);
    std::u16string units(4, u'?');
    CFStringGetCharacters(string, {0, 4}, units.data());
    EXPECT_EQ(units, std::u16string_view(u"a\0\xD800z", 4));
    CFRelease(string);
    EXPECT_EQ(HalyonTest::LiveAllocations(), before);
    CFRelease(nullptr);
}

TEST(CFString, RangesAreCutToTheText)
{
    const std::pair<CFRange, std::u16string_view> cases[] = {
        {{0, 5}, u"abcde"},         {{1, 3}, u"bcd##"},  {{4, 9}, u"e####"},  {{3, INT64_MAX}, u"de###"},
        {{5, 1}, u"#####"},         {{-1, 3}, u"#####"}, {{0, -1}, u"#####"}, {{INT64_MAX, INT64_MAX}, u"#####"},
        {{INT64_MIN, 2}, u"#####"}, {{0, 0}, u"#####"},
    };
    CFStringRef string = Make(u"abcde");
    for (const auto& [range, expected] : cases)
    {
        std::u16string buffer(5, u'#');
        CFStringGetCharacters(string, range, buffer.data());
        EXPECT_EQ(U8(buffer), U8(expected)) << range.location << "+" << range.length;
    }
    CFRelease(string);
    char16_t untouched = u'#';
    CFStringGetCharacters(nullptr, {0, 1}, &untouched);
    EXPECT_EQ(untouched, u'#');
    EXPECT_EQ(CFStringGetLength(nullptr), 0);
}

TEST(CFString, CTextIsWholeOrEmpty)
{
    struct Case
    {
        std::u16string_view text;
        CFIndex size;
        CFStringEncoding encoding;
        Boolean result;
        const char* expected; // in a buffer of "##" before
    };
    const Case cases[] = {
        {u"abc", 4, kCFStringEncodingUTF8, 1, "abc"},
        {u"abc", 3, kCFStringEncodingUTF8, 0, ""},
        {u"\u5199\u771F", 6, kCFStringEncodingUTF8, 0, ""},
        {u"x\xDC00y", 6, kCFStringEncodingUTF8, 1, "x\uFFFDy"},
        {u"", 1, kCFStringEncodingUTF8, 1, ""},
        {std::u16string_view(u"a\0b", 3), 16, kCFStringEncodingUTF8, 0, ""}, // a C text would end at "a"
        {u"abc", 16, 0x0600, 0, ""},
        {u"abc", 0, kCFStringEncodingUTF8, 0, "##"},
        {u"abc", -1, kCFStringEncodingUTF8, 0, "##"},
    };
    for (const Case& c : cases)
    {
        CFStringRef string = Make(c.text);
        char buffer[16] = "##";
        EXPECT_EQ(CFStringGetCString(string, buffer, c.size, c.encoding), c.result) << U8(c.text);
        EXPECT_STREQ(buffer, c.expected) << U8(c.text);
        CFRelease(string);
    }
    char buffer[] = "##";
    EXPECT_EQ(CFStringGetCString(nullptr, buffer, 2, kCFStringEncodingUTF8), 0);
    EXPECT_STREQ(buffer, "");
}

// tests/faults takes the memory away.
TEST(CFString, OfAnImpossibleLengthThereIsNone)
{
    for (const CFIndex length : {CFIndex{-1}, CFIndex{INT64_MIN}, CFIndex{INT64_MAX}, CFIndex{INT64_MAX / 2}})
        EXPECT_EQ(CFStringCreateWithCharacters(nullptr, u"abc", length), nullptr) << length;
    EXPECT_EQ(CFStringCreateWithCharacters(nullptr, nullptr, 1), nullptr);
    CFStringRef empty = CFStringCreateWithCharacters(nullptr, nullptr, 0);
    EXPECT_EQ(CFStringGetLength(empty), 0);
    CFRelease(empty);
}
