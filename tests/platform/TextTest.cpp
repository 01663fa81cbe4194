// 16-bit text: length, copies, comparison, white space, numbers, UTF-8.

#include <algorithm>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <halyon/platform/TovPCMac.h>

#include "tests/platform/PageEnd.h"
#include "tests/support/Text.h"

using HalyonTest::PageEnd;
using HalyonTest::U8;

namespace
{
// Texts that end up to 33 bytes before the fault: every alignment, odd ones too.
constexpr std::size_t kPlaces = 34;

// Words of characters that are equal without regard to case; the first is what the others fold to. "@" and "`", "[" and
// "{" differ like the cases of a letter and are none.
constexpr std::u32string_view kCases =
    U"aA zZ @ ` [ { / kK\u212A sS\u017F \u00E9\u00C9 \u00E1 \u03C3\u03A3\u03C2 \u5199 \u5179 \uFF41\uFF21 "
    U"\U00010428\U00010400 \U0001F600 \xD801 \xDC00 \xDC28";

void Append(std::u16string& text, char32_t c)
{
    if (c < 0x10000)
    {
        text += static_cast<char16_t>(c);
        return;
    }
    text += static_cast<char16_t>(0xD7C0 + (c >> 10));
    text += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
}

std::u32string CodePoints(std::u16string_view text)
{
    std::u32string result;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const char32_t c = text[i];
        if ((c & 0xFC00) == 0xD800 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00)
            result.push_back(0x10000 + ((c & 0x3FF) << 10) + (text[++i] & 0x3FFu));
        else
            result.push_back(c);
    }
    return result;
}

std::u32string_view CasesOf(char32_t c)
{
    const std::size_t at = kCases.find(c);
    if (at == std::u32string_view::npos)
        return {};
    const std::size_t start = kCases.rfind(U' ', at) + 1; // the first word starts at npos + 1
    return kCases.substr(start, kCases.find(U' ', at) - start);
}

std::u32string Folded(std::u16string_view text)
{
    std::u32string result = CodePoints(text);
    for (char32_t& c : result)
        c = CasesOf(c).empty() ? c : CasesOf(c).front();
    return result;
}

std::string NaiveUTF8(std::u16string_view text)
{
    std::string result;
    for (char32_t c : CodePoints(text))
    {
        if (c >= 0xD800 && c < 0xE000)
            c = 0xFFFD;
        const int more = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        constexpr char32_t kLeads[] = {0, 0xC0, 0xE0, 0xF0};
        result += static_cast<char>(kLeads[more] | (c >> (6 * more)));
        for (int shift = 6 * (more - 1); shift >= 0; shift -= 6)
            result += static_cast<char>(0x80 | ((c >> shift) & 0x3F));
    }
    return result;
}

int Sign(int value)
{
    return (value > 0) - (value < 0);
}

// A source of texts from the characters above; its seed is printed when a test fails.
class Texts
{
public:
    Texts() : m_seed(std::random_device{}()), m_random(m_seed), m_alphabet(kCases) { std::erase(m_alphabet, U' '); }

    [[nodiscard]] std::string Seed() const { return "seed " + std::to_string(m_seed); }

    std::size_t Below(std::size_t end) { return m_random() % end; }

    std::u16string Make(std::size_t length)
    {
        std::u16string text;
        const bool plain = Below(4) == 0;
        while (length-- > 0)
            Append(text, plain || Below(2) == 0 ? U'a' : m_alphabet[Below(m_alphabet.size())]);
        return text;
    }

    // The same text in other cases, now and then with one unit replaced or the end cut off.
    std::u16string Vary(const std::u16string& text)
    {
        std::u16string result;
        for (const char32_t c : CodePoints(text))
        {
            const std::u32string_view cases = CasesOf(c);
            Append(result, cases.empty() ? c : cases[Below(cases.size())]);
        }
        if (!result.empty() && Below(3) == 0)
            result[Below(result.size())] = Make(1)[0];
        if (Below(4) == 0)
            result.resize(Below(result.size() + 1));
        return result;
    }

private:
    std::uint32_t m_seed;
    std::mt19937 m_random;
    std::u32string m_alphabet;
};
} // namespace

TEST(Text, LengthAndCopiesHoldAtEveryAlignmentUpToAPagesEnd)
{
    const PageEnd page;
    const PageEnd destination;
    for (std::size_t length = 0; length < 40; ++length)
    {
        const std::u16string text(length, u'\u3042');
        const std::size_t bytes = (length + 1) * sizeof(char16_t);
        for (std::size_t before = 0; before < kPlaces; ++before)
        {
            const char16_t* placed = page.Put(text, before);
            ASSERT_EQ(tov_wcslen(placed), length) << before;

            char* dest = destination.Last(bytes, before % 2);
            dest[-1] = '#';
            auto* copy = reinterpret_cast<char16_t*>(dest);
            ASSERT_EQ(tov_wcscpy(copy, placed), copy);
            ASSERT_EQ(std::memcmp(dest, placed, bytes), 0) << length << " " << before;
            ASSERT_EQ(dest[-1], '#');
        }
    }
}

TEST(Text, BoundedCopyFillsWithZerosAndReadsNothingBeyondItsCount)
{
    const PageEnd page;
    for (std::size_t count = 0; count < 24; ++count)
    {
        for (std::size_t length = 0; length < 24; ++length)
        {
            // When the count is not larger than the length the source has no terminator at all.
            const std::u16string text(length, u'q');
            const std::size_t there = std::min(length + 1, count);
            char* source = page.Last(there * sizeof(char16_t));
            std::memcpy(source, text.c_str(), there * sizeof(char16_t));
            std::u16string copy(count + 1, u'#');
            tov_wcsncpy(copy.data(), reinterpret_cast<const char16_t*>(source), count);
            std::u16string expected = text.substr(0, count);
            expected.resize(count, u'\0');
            ASSERT_EQ(copy, expected + u'#') << count << " " << length;
        }
    }
}

TEST(Text, ComparisonFoldsByCodePointInEveryPlace)
{
    struct Case
    {
        std::u16string_view a;
        std::u16string_view b;
        int order;
    };
    const Case cases[] = {
        {u"", u"", 0},
        {u"", u"a", -1},
        {u"Path", u"pATH", 0},
        {u"path", u"paths", -1},
        {u"@", u"`", -1},
        {u"[", u"{", -1},
        {u"_", u"A", -1}, // folded, "A" is "a" and lies after "_"
        {u"\u212Aelvin", u"kelvin", 0},
        {u"\u017F", u"S", 0},
        {u"\u00DF", u"ss", 1}, // simple folding: one character stays one
        {u"\u0130", u"i", 1},  // and no locale's dotless i
        {u"\u03A3\u03C3\u03C2", u"\u03C3\u03C2\u03A3", 0},
        {u"\U00010400", u"\U00010428", 0},
        {u"\uFFFD", u"\U00010428", -1}, // by code point, not by unit
        {u"\xD801", u"\U00010428", -1},
        {u"\xD801", u"\xD801", 0},
        {u"\xDC00", u"\xD801", 1},
    };
    const PageEnd left;
    const PageEnd right;
    for (const Case& c : cases)
    {
        // Behind equal text of every length, so that the difference meets every lane and the chunks' borders.
        for (std::size_t lead = 0; lead < 140; lead += lead < 20 || lead > 55 ? 1 : 7)
        {
            const std::u16string a = std::u16string(lead, u'x') + std::u16string(c.a);
            const std::u16string b = std::u16string(lead, u'X') + std::u16string(c.b);
            const char16_t* x = left.Put(a);
            const char16_t* y = right.Put(b, lead % kPlaces);
            ASSERT_EQ(Sign(tov_wcscmpi(x, y)), c.order) << U8(a) << " : " << U8(b);
            ASSERT_EQ(Sign(tov_wcscmpi(y, x)), -c.order) << U8(a) << " : " << U8(b);
            ASSERT_EQ(tov_wcsnicmp(x, y, lead), 0);
        }
    }
}

TEST(Text, ComparisonAgreesWithANaiveOne)
{
    Texts texts;
    SCOPED_TRACE(texts.Seed());
    const PageEnd left;
    const PageEnd right;
    for (int round = 0; round < 6000; ++round)
    {
        const std::u16string a = texts.Make(texts.Below(100));
        const std::u16string b = texts.Vary(a);
        const char16_t* x = left.Put(a, texts.Below(kPlaces));
        const char16_t* y = right.Put(b, texts.Below(kPlaces));
        const auto order = [](std::u16string_view p, std::u16string_view q)
        {
            return Sign(Folded(p).compare(Folded(q)));
        };
        ASSERT_EQ(Sign(tov_wcscmpi(x, y)), order(a, b)) << U8(a) << "\n" << U8(b);
        ASSERT_EQ(tov_wcssame(x, y, b.size()), a == b) << U8(a) << "\n" << U8(b);
        const std::size_t count = texts.Below(110);
        ASSERT_EQ(Sign(tov_wcsnicmp(x, y, count)), order(a.substr(0, count), b.substr(0, count))) << count << "\n"
                                                                                                  << U8(a) << "\n"
                                                                                                  << U8(b);
    }
}

TEST(Text, IsTheSameOnlyToItsEnd)
{
    const PageEnd left;
    const PageEnd right;
    for (std::size_t length = 0; length < 40; ++length)
    {
        const std::u16string known(length, u'n');
        const char16_t* y = right.Put(known, length % kPlaces);
        for (std::size_t other = 0; other < 44; ++other)
        {
            const char16_t* x = left.Put(std::u16string(other, u'n'), other % 5 == 0 ? 0 : 90);
            ASSERT_EQ(tov_wcssame(x, y, length), other == length) << other << " against " << length;
        }
    }
}

TEST(Text, BoundedComparisonReadsNothingBeyondItsCount)
{
    const PageEnd left;
    const PageEnd right;
    // Equal, or so after folding, up to the fault; no terminators. The last units may be half of a pair.
    for (const auto& [x, y] : {std::pair(u'm', u'm'), {u'\u00C9', u'\u00E9'}, {u'\xD801', u'\xD801'}})
    {
        for (std::size_t count = 1; count < 150; ++count)
        {
            std::u16string text(count, u'm');
            const std::size_t bytes = count * sizeof(char16_t);
            char* a = left.Last(bytes);
            char* b = right.Last(bytes, count % kPlaces);
            text.back() = x;
            std::memcpy(a, text.data(), bytes);
            text.back() = y;
            std::memcpy(b, text.data(), bytes);
            ASSERT_EQ(tov_wcsnicmp(reinterpret_cast<char16_t*>(a), reinterpret_cast<char16_t*>(b), count), 0) << count;
        }
    }
    EXPECT_LT(tov_wcsnicmp(u"\xD801\xDC00", u"\uFFFD", 1), 0); // a pair that the count cuts is none
    EXPECT_EQ(tov_wcsnicmp(u"a", u"b", 0), 0);
}

TEST(Text, WhiteSpaceIsUnicodes)
{
    std::set<int> expected = {0x20, 0x85, 0xA0, 0x1680, 0x2028, 0x2029, 0x202F, 0x205F, 0x3000};
    for (int unit = 9; unit <= 13; ++unit)
        expected.insert(unit);
    for (int unit = 0x2000; unit <= 0x200A; ++unit)
        expected.insert(unit);
    std::set<int> found;
    for (int unit = 0; unit < 0x10000; ++unit)
    {
        if (tov_iswspace(static_cast<char16_t>(unit)) != 0)
            found.insert(unit);
    }
    EXPECT_EQ(found, expected);
}

TEST(Text, NumbersEndAtTheFirstOtherUnit)
{
    const std::pair<const char16_t*, std::int32_t> cases[] = {
        {u"", 0},
        {u"42", 42},
        {u" \t\u3000+7 8", 7},
        {u"-12x", -12},
        {u"--1", 0},
        {u"+-1", 0},
        {u"- 1", 0},
        {u"x1", 0},
        {u"007", 7},
        {u"\uFF11", 0}, // only ASCII digits count
        {u"1,5", 1},
        {u"2147483647", INT32_MAX},
        {u"2147483648", INT32_MIN},
        {u"-2147483648", INT32_MIN},
        {u"4294967295", -1},
        {u"4294967301", 5},
        {u"-4294967297", -1},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(tov_wtoi(text), expected) << U8(text);
}

TEST(Utf8, AgreesWithANaiveEncoderAndBack)
{
    Texts texts;
    SCOPED_TRACE(texts.Seed());
    const PageEnd source;
    const PageEnd destination;
    for (int round = 0; round < 6000; ++round)
    {
        const std::u16string text = texts.Make(texts.Below(70));
        const std::string expected = NaiveUTF8(text);
        const std::size_t bytes = text.size() * sizeof(char16_t);
        char* placed = source.Last(bytes, texts.Below(kPlaces));
        std::copy_n(reinterpret_cast<const char*>(text.data()), bytes, placed);
        const auto* units = reinterpret_cast<const char16_t*>(placed);

        ASSERT_EQ(TovTextToUTF8(units, text.size(), nullptr, 0), expected.size());
        // Room for the text and nothing more, then for the worst case.
        for (const std::size_t room : {expected.size(), text.size() * 3 + texts.Below(4)})
        {
            char* out = destination.Last(room);
            ASSERT_EQ(TovTextToUTF8(units, text.size(), out, room), expected.size());
            ASSERT_EQ(std::string(out, expected.size()), expected);
        }

        // What is well-formed comes back as it was.
        char* encoded = source.Last(expected.size());
        std::copy(expected.begin(), expected.end(), encoded);
        std::u16string well;
        for (const char32_t c : CodePoints(text))
            Append(well, c >= 0xD800 && c < 0xE000 ? U'\uFFFD' : c);
        ASSERT_EQ(TovTextFromUTF8(encoded, expected.size(), nullptr, 0), well.size());
        for (const std::size_t room : {well.size(), expected.size()})
        {
            auto* out = reinterpret_cast<char16_t*>(destination.Last(room * sizeof(char16_t)));
            ASSERT_EQ(TovTextFromUTF8(encoded, expected.size(), out, room), well.size());
            ASSERT_EQ(std::u16string(out, well.size()), well);
        }
    }
}

TEST(Utf8, WhatDoesNotFitIsMeasuredAndNotWritten)
{
    const std::u16string texts[] = {u"0123456789abcdef", u"\u5199\u771F", u"\U0001F600", u"abc\xD800"};
    for (const std::u16string& text : texts)
    {
        const std::string expected = NaiveUTF8(text);
        std::string narrow(expected.size(), '#');
        EXPECT_EQ(TovTextToUTF8(text.data(), text.size(), narrow.data(), narrow.size() - 1), expected.size());
        EXPECT_EQ(narrow, std::string(expected.size(), '#'));
        std::u16string wide(text.size(), u'#');
        EXPECT_EQ(TovTextFromUTF8(expected.data(), expected.size(), wide.data(), text.size() - 1), text.size());
        EXPECT_EQ(wide, std::u16string(text.size(), u'#'));
    }
}

TEST(Utf8, EachMaximalIllFormedSequenceBecomesOneReplacement)
{
    const std::pair<std::string_view, std::u16string_view> cases[] = {
        {"\x80", u"\uFFFD"},
        {"\xC0\xAF", u"\uFFFD\uFFFD"},                     // overlong
        {"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"},           // overlong
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},           // a surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"}, // beyond the last code point
        {"\xFF\xFE", u"\uFFFD\uFFFD"},
        {"\xE3\x81", u"\uFFFD"}, // cut short
        {"\xF0\x9F\x98", u"\uFFFD"},
        {"\xE3\x81z", u"\uFFFDz"},
        {"\xF0\x9F\x98\xF0\x9F\x98\x80", u"\uFFFD\U0001F600"},
    };
    const PageEnd page;
    for (const auto& [bytes, expected] : cases)
    {
        for (std::size_t lead = 0; lead < 20; ++lead)
        {
            const std::string text = std::string(lead, 'a') + std::string(bytes);
            char* placed = page.Last(text.size());
            std::copy(text.begin(), text.end(), placed);
            std::u16string out(text.size(), u'#');
            out.resize(TovTextFromUTF8(placed, text.size(), out.data(), out.size()));
            EXPECT_EQ(U8(out), U8(std::u16string(lead, u'a') + std::u16string(expected)))
                << testing::PrintToString(bytes);
        }
    }
}
