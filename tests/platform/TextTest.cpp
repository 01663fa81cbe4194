// 16-bit text: length, copies, comparison, white space, numbers, UTF-8.

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <unicode/unistr.h>

#include <halyon/platform/TovPCMac.h>

#include "tests/platform/PageEnd.h"
#include "tests/support/Text.h"

using namespace HalyonTest;

namespace
{
// Texts that end up to 33 bytes before the fault: every alignment, odd ones too.
constexpr std::size_t kPlaces = 34;

// Words of characters that are equal without regard to case; the first is what the others fold to. "@" and "`", "[" and
// "{" differ like the cases of a letter and are none; sharp s stays one character, and the dotted I is no locale's "i".
// The least and the greatest of each length in UTF-8 are among them.
constexpr std::u32string_view kCases =
    U"aA zZ @ ` [ { _ / iI \u0130 kK\u212A sS\u017F \u00DF \u00E9\u00C9 \u00E1 \u03C3\u03A3\u03C2 \u5199 \u5179 "
    U"\u007F \u0080 \u07FF \u0800 \uFF41\uFF21 \uFFFD \U00010428\U00010400 \U0001F600 \xD801 \xDC00 \xDC28";

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

    // How far before the fault a text ends, often just there.
    std::size_t Place() { return Below(2) == 0 ? 0 : Below(kPlaces); }

    std::u16string Make(std::size_t length)
    {
        std::u16string text;
        const bool plain = Below(4) == 0;
        while (length-- > 0)
            Append(text, plain || Below(2) == 0 ? U'a' : m_alphabet[Below(m_alphabet.size())]);
        return text;
    }

    // The same text, every second time in other cases, now and then with one unit replaced or the end cut off.
    std::u16string Vary(const std::u16string& text)
    {
        std::u16string result;
        const bool recase = Below(2) == 0;
        for (const char32_t c : CodePoints(text))
        {
            const std::u32string_view cases = CasesOf(c);
            Append(result, !recase || cases.empty() ? c : cases[Below(cases.size())]);
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
            std::u16string text(length, u'q');
            std::u16string copy(count + 1, u'#');
            tov_wcsncpy(copy.data(), page.PutUnits({text.c_str(), std::min(length + 1, count)}), count);
            text.resize(count, u'\0');
            ASSERT_EQ(copy, text + u'#') << count << " " << length;
        }
    }
}

// With texts up to the fault; where only a part is compared, up to that part's end.
TEST(Text, ComparisonAgreesWithANaiveOne)
{
    Texts texts;
    SCOPED_TRACE(texts.Seed());
    const PageEnd left;
    const PageEnd right;
    const auto order = [](std::u16string_view p, std::u16string_view q)
    {
        return Sign(Folded(p).compare(Folded(q)));
    };
    for (int round = 0; round < 20'000; ++round)
    {
        const std::u16string a = texts.Make(texts.Below(texts.Below(2) == 0 ? 12 : 140));
        const std::u16string b = texts.Vary(a);
        SCOPED_TRACE(U8(a) + "\n" + U8(b));
        const std::size_t places[] = {texts.Place(), texts.Place()};
        const char16_t* x = left.Put(a, places[0]);
        const char16_t* y = right.Put(b, places[1]);
        ASSERT_EQ(Sign(tov_wcscmpi(x, y)), order(a, b));
        ASSERT_EQ(Sign(tov_wcscmpi(y, x)), order(b, a));
        ASSERT_EQ(tov_wcssame(x, y, b.size()), a == b);
        ASSERT_EQ(tov_wcssame(y, x, a.size()), a == b);

        const std::size_t count = texts.Below(a.size() + 10);
        const int expected = order(a.substr(0, count), b.substr(0, count));
        ASSERT_EQ(Sign(tov_wcsnicmp(x, y, count)), expected) << count;
        if (count > std::min(a.size(), b.size()))
            continue;
        x = left.PutUnits(a.substr(0, count), places[0]);
        y = right.PutUnits(b.substr(0, count), places[1]);
        ASSERT_EQ(Sign(tov_wcsnicmp(x, y, count)), expected) << count;
    }
}

TEST(Text, WhiteSpaceIsUnicodes)
{
    std::u16string found;
    for (char32_t unit = 0; unit < 0x10000; ++unit)
    {
        if (tov_iswspace(static_cast<char16_t>(unit)) != 0)
            found += static_cast<char16_t>(unit);
    }
    EXPECT_EQ(U8(found), U8(u"\t\n\v\f\r \x85\u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009"
                            u"\u200A\u2028\u2029\u202F\u205F\u3000"));
}

TEST(Text, NumbersEndAtTheFirstOtherUnit)
{
    // Only ASCII digits count.
    const std::pair<const char16_t*, std::int32_t> cases[] = {{u"", 0},
                                                              {u" \t\u3000+7 8", 7},
                                                              {u"-12x", -12},
                                                              {u"--1", 0},
                                                              {u"+-1", 0},
                                                              {u"- 1", 0},
                                                              {u"x1", 0},
                                                              {u"0079", 79},
                                                              {u"\uFF11", 0},
                                                              {u"2147483647", INT32_MAX},
                                                              {u"2147483648", INT32_MIN},
                                                              {u"-2147483648", INT32_MIN},
                                                              {u"4294967301", 5},
                                                              {u"-4294967297", -1}};
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(tov_wtoi(text), expected) << U8(text);
}

// In just enough room and in plenty; in too little nothing is written and the size is told all the same.
TEST(Utf8, AgreesWithTheLibraryForUnicodeThereAndBack)
{
    Texts texts;
    SCOPED_TRACE(texts.Seed());
    const PageEnd source;
    const PageEnd destination;
    for (int round = 0; round < 6000; ++round)
    {
        const std::u16string text = texts.Make(texts.Below(70));
        const icu::UnicodeString model(text.data(), static_cast<std::int32_t>(text.size()));
        std::string expected;
        model.toUTF8String(expected);
        SCOPED_TRACE(expected);
        const char16_t* units = source.PutUnits(text, texts.Place());
        ASSERT_EQ(TovTextToUTF8(units, text.size(), nullptr, 0), expected.size());
        for (const std::size_t room : {expected.size(), text.size() * 3 + texts.Below(4)})
        {
            char* out = destination.Last(room);
            ASSERT_EQ(TovTextToUTF8(units, text.size(), out, room), expected.size());
            ASSERT_EQ(std::string(out, expected.size()), expected);
        }

        // What is well-formed comes back as it was.
        const icu::UnicodeString back = icu::UnicodeString::fromUTF8(expected);
        const std::u16string well(back.getBuffer(), static_cast<std::size_t>(back.length()));
        const char* encoded = source.PutBytes(expected);
        ASSERT_EQ(TovTextFromUTF8(encoded, expected.size(), nullptr, 0), well.size());
        for (const std::size_t room : {well.size(), expected.size()})
        {
            auto* out = reinterpret_cast<char16_t*>(destination.Last(room * sizeof(char16_t)));
            ASSERT_EQ(TovTextFromUTF8(encoded, expected.size(), out, room), well.size());
            ASSERT_EQ(std::u16string(out, well.size()), well);
        }

        if (text.empty())
            continue;
        std::string narrow(expected.size(), '#');
        ASSERT_EQ(TovTextToUTF8(text.data(), text.size(), narrow.data(), narrow.size() - 1), expected.size());
        ASSERT_EQ(narrow, std::string(expected.size(), '#'));
        std::u16string wide(well.size(), u'#');
        ASSERT_EQ(TovTextFromUTF8(encoded, expected.size(), wide.data(), well.size() - 1), well.size());
        ASSERT_EQ(wide, std::u16string(well.size(), u'#'));
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
            std::u16string out(text.size(), u'#');
            out.resize(TovTextFromUTF8(page.PutBytes(text), text.size(), out.data(), out.size()));
            EXPECT_EQ(U8(out), U8(std::u16string(lead, u'a') + std::u16string(expected)))
                << testing::PrintToString(bytes);
        }
    }
}
