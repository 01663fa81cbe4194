// Versions of four numbers.

#include <string>

#include <gtest/gtest.h>

#include <halyon/tools/CHynVersionHelper.h>
#include <tests/support/Text.h>

using Halyon::CHynVersionHelper;
using Halyon::tagHYN_VERSION;

namespace
{
// "a b c d", or "0" when the text was refused and the record left alone.
std::string Read(const char16_t* text)
{
    tagHYN_VERSION version = {7, 8, 9, 10};
    const int result = CHynVersionHelper::GetVersion(text, version);
    std::string read = std::to_string(version.first) + " " + std::to_string(version.second) + " " +
                       std::to_string(version.third) + " " + std::to_string(version.fourth);
    if (result == 1)
        return read;
    return read == "7 8 9 10" ? std::to_string(result) : "a refused text wrote " + read;
}
} // namespace

TEST(Version, TakesFourNumbersOrNone)
{
    const std::pair<const char16_t*, const char*> cases[] = {
        {u"2.1.0.37", "2 1 0 37"},
        {u"1,2,3,4", "1 2 3 4"},
        {u"1.2,3.4", "1 2 3 4"},
        {u" 1 . 2 .\t3 .\u30004 ", "1 2 3 4"},
        {u"1.2.3.4.5", "1 2 3 4"},
        {u"1.2.3.4 beta", "1 2 3 4"},
        {u"a.b.c.d", "0 0 0 0"},
        {u"1a. .+3.-1", "1 0 3 4294967295"},
        {u"4294967297.2.3.4", "1 2 3 4"},
        {u"1.2.3. ", "1 2 3 0"},
        {u"1.2.3..", "1 2 3 0"},
        {u"1.2.3", "0"},
        {u"1.2.3.", "0"},
        {u".1.2.3", "0"},
        {u"1..2.3.4", "0"},
        {u"1", "0"},
        {u"", "0"},
        {nullptr, "0"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(Read(text), expected) << HalyonTest::U8(text);
}

TEST(Version, TheThirdNumberDoesNotCount)
{
    struct Case
    {
        tagHYN_VERSION a;
        tagHYN_VERSION b;
        int order;
    };
    const Case cases[] = {
        {{1, 2, 3, 4}, {1, 2, 9, 4}, 0}, {{1, 2, 3, 5}, {1, 2, 4, 4}, 1},          {{1, 10, 0, 0}, {1, 9, 0, 5}, 1},
        {{2, 0, 0, 0}, {1, 2, 0, 9}, 1}, {{0xFFFFFFFF, 0, 0, 0}, {1, 0, 0, 0}, 1}, // unsigned
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(CHynVersionHelper::CompareVersion(c.a, c.b), c.order);
        EXPECT_EQ(CHynVersionHelper::CompareVersion(c.b, c.a), -c.order);
    }
}
