// Formatted numbers, compared with the C library's in its plain locale.

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <halyon/platform/TovPCMac.h>

#include "tests/support/Text.h"

using HalyonTest::U8;

namespace
{
std::u16string Widened(const std::string& ascii)
{
    return {ascii.begin(), ascii.end()};
}

std::string Formatted(const std::u16string& format, std::initializer_list<TovFormatArgument> arguments)
{
    char16_t buffer[2048];
    const int length = TovFormat(buffer, format.c_str(), {arguments.begin(), arguments.size()});
    EXPECT_EQ(buffer[length], 0);
    return U8(std::u16string_view(buffer, static_cast<std::size_t>(length)));
}

// What the C library makes of it. The format is made by the test and fits its one argument.
template <class T>
std::string Expected(const std::string& format, T argument)
{
    char text[2048];
    const int length = std::snprintf(text, sizeof text, format.c_str(), argument);
    return {text, static_cast<std::size_t>(length)};
}

// Every set of flags, with widths and precisions, before `letter`.
std::vector<std::string> Directives(char letter, std::initializer_list<const char*> precisions)
{
    std::vector<std::string> result;
    for (unsigned set = 0; set < 32; ++set)
    {
        std::string flags;
        for (unsigned i = 0; i < 5; ++i)
            flags += (set >> i & 1) != 0 ? std::string(1, "-+ #0"[i]) : "";
        for (const char* width : {"", "12"})
        {
            for (const char* precision : precisions)
                result.push_back(std::string("%").append(flags).append(width).append(precision) + letter);
        }
    }
    return result;
}
} // namespace

TEST(Format, IntegersReadAsTheCLibrarysDo)
{
    const std::int64_t values[] = {0, 1, -1, 8, 255, -256, 65536, INT32_MIN, INT32_MAX, INT64_MIN, INT64_MAX};
    for (const char letter : {'d', 'i', 'u', 'x', 'X', 'o'})
    {
        for (const std::string& directive : Directives(letter, {"", ".", ".0", ".5", ".20"}))
        {
            std::string longer = directive;
            longer.insert(longer.size() - 1, "ll");
            for (const std::int64_t value : values)
            {
                const auto narrow = static_cast<std::int32_t>(value);
                ASSERT_EQ(Formatted(Widened(directive), {narrow}), Expected(directive, narrow)) << directive;
                ASSERT_EQ(Formatted(Widened(directive), {static_cast<std::uint32_t>(narrow)}),
                          Expected(directive, narrow))
                    << directive;
                ASSERT_EQ(Formatted(Widened(longer), {value}), Expected(longer, value)) << longer;
            }
        }
    }
}

TEST(Format, DoublesReadAsTheCLibrarysDo)
{
    const double values[] = {0.0,       -0.0, 1.0,   -1.5,    0.1,          2.5,      99999.5,   1e-4,
                             9.9999e-5, 1e22, 1e300, DBL_MAX, DBL_TRUE_MIN, HUGE_VAL, -HUGE_VAL, std::nan("")};
    for (const char letter : {'f', 'F', 'e', 'E', 'g', 'G'})
    {
        for (const std::string& directive : Directives(letter, {"", ".", ".1", ".3", ".17", ".1100"}))
        {
            for (const double value : values)
                ASSERT_EQ(Formatted(Widened(directive), {value}), Expected(directive, value)) << directive;
        }
    }
}

TEST(Format, ModifiersCutAndStarsTakeArguments)
{
    struct Case
    {
        const char16_t* format;
        std::initializer_list<TovFormatArgument> arguments;
        const char* expected;
    };
    const Case cases[] = {
        {u"%04d-%02d-%02d %02d:%02d:%02d", {2024, 3, 7, 9, 5, 0}, "2024-03-07 09:05:00"},
        {u"100%% %i%%", {5}, "100% 5%"},
        {u"%hd %hhd %hu %hhx", {65535, 257, -1, -1}, "-1 1 65535 ff"},
        {u"%ld %lld %lu", {-1, std::int64_t{1} << 40, 7u}, "-1 1099511627776 7"},
        {u"%d", {std::int64_t{1} << 40}, "1099511627776"}, // the argument knows its size
        {u"%u %u", {std::int16_t{-1}, true}, "4294967295 1"},
        {u"[%*d][%-*d][%*d]", {4, 1, 4, 2, -4, 3}, "[   1][2   ][3   ]"},
        {u"[%.*f][%.*f]", {1, 2.25, -1, 2.25}, "[2.2][2.250000]"},
        {u"%g %#g", {999999.5, 999999.5}, "1e+06 1.00000e+06"}, // the C library here loses the zeros
        {u"%d", {1, 2, 3}, "1"},                                // arguments too many do no harm
    };
    for (const Case& c : cases)
        EXPECT_EQ(Formatted(c.format, c.arguments), c.expected) << U8(c.format);
    char16_t buffer[16];
    EXPECT_EQ(tov_swprintf(buffer, u"%d/%s", 1), 0);
    EXPECT_EQ(tov_swprintf(buffer, u"%d/%g", 1, 0.5F), 5);
    EXPECT_EQ(U8(buffer), "1/0.5");
}

TEST(Format, WhatCannotBeFormattedGivesTheEmptyText)
{
    for (const char16_t* format :
         {u"%d %d %d", u"%f", u"%d %d %f", u"%s",    u"%c",   u"%p",  u"%n",  u"%a",  u"%",       u"12%",   u"%-",
          u"%5",       u"%.", u"%l",       u"%hhhd", u"%1$d", u"%5%", u"%Ld", u"%*f", u"%d%d%*d", u"%.-1d", u"%ls"})
        EXPECT_EQ(Formatted(format, {1, 2}), "") << U8(format);
    for (const char16_t* format : {u"%d", u"%*d", u"%.*f"})
        EXPECT_EQ(Formatted(format, {1.5, 1}), "") << U8(format);
    // Found out also behind the place where the buffer is full.
    char16_t small[4];
    EXPECT_EQ(tov_swprintf(small, u"123456%s", 1), 0);
    EXPECT_EQ(small[0], 0);
}

TEST(Format, WhatDoesNotFitIsCutAtTheLastWholeCharacter)
{
    struct Case
    {
        std::size_t room; // units, with the terminator
        const char16_t* format;
        TovFormatArgument argument;
        const char* expected;
    };
    const Case cases[] = {
        {1, u"abc", 0, ""},
        {4, u"abc", 0, "abc"},
        {3, u"abc", 0, "ab"},
        {3, u"a\U0001F600b", 0, "a"}, // nothing after the gap either
        {4, u"a\U0001F600b", 0, "a\U0001F600"},
        {4, u"%d", 12345, "123"},
        {6, u"%999999999d", 7, "     "},
        {6, u"%-999999999d|", 7, "7    "},
        {6, u"%0999999999d", -7, "-0000"},
        {6, u"%.2147483647d", 7, "00000"},
        {6, u"%99999999999999999999d", 7, "     "},
        {6, u"%.999999999f", 2.5, "2.500"},
        {6, u"%.2147483647e", 2.5, "2.500"},
        {6, u"%#.2147483647g", 0.0001, "0.000"},
        {6, u"%.2147483647g", 2.5, "2.5"},
    };
    for (const Case& c : cases)
    {
        std::vector<char16_t> buffer(c.room); // exactly as large as it says, for the address sanitizer
        const int length = TovFormat(buffer, c.format, {&c.argument, 1});
        EXPECT_EQ(U8(buffer.data()), c.expected) << U8(c.format);
        EXPECT_EQ(static_cast<std::size_t>(length), tov_wcslen(buffer.data())) << U8(c.format);
    }
    EXPECT_EQ(TovFormat({}, u"%d", {}), 0);
}
