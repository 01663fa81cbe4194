// 16-bit text: comparison without regard to letter case.

#include <halyon/platform/TovPCMac.h>

#include <algorithm>

#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <halyon/platform/linux/TextStep.h>

using Halyon::CountUnits;
using Halyon::FirstLane;
using Halyon::kStepUnits;
using Halyon::LaneBits;
using Halyon::LoadStep;
using Halyon::LoadUnit;
using Halyon::TextStep;

namespace
{
// Units that are looked at in one go: long texts that differ early are not measured to their end.
constexpr std::size_t kChunk = 64;

char32_t FoldedASCII(char32_t c) noexcept
{
    return c >= u'A' && c <= u'Z' ? c + 0x20 : c;
}

// The first lane whose units are neither equal nor the two cases of an ASCII letter; kStepUnits when there is none.
std::size_t FirstDifference(TextStep a, TextStep b) noexcept
{
    const TextStep letters = (a | 0x20) - static_cast<std::uint16_t>(u'a');
    const TextStep caseBit = TextStep(letters < 26) & 0x20;
    return FirstLane(LaneBits(((a ^ b) & ~caseBit) != TextStep{}) | (1u << (2 * kStepUnits)));
}

// The same over `count` units; `count` when there is none. Steps overlap at the end, where that is harmless.
std::size_t FirstDifference(const char16_t* a, const char16_t* b, std::size_t count) noexcept
{
    std::size_t at = 0;
    while (at + kStepUnits <= count)
    {
        const std::size_t lane = FirstDifference(LoadStep(a + at), LoadStep(b + at));
        at += lane;
        if (lane != kStepUnits)
            return at;
    }
    if (at == count)
        return count;
    if (count >= kStepUnits)
    {
        const std::size_t last = count - kStepUnits;
        return last + FirstDifference(LoadStep(a + last), LoadStep(b + last));
    }
    while (at < count && FoldedASCII(LoadUnit(a + at)) == FoldedASCII(LoadUnit(b + at)))
        ++at;
    return at;
}

// The code point at `text[i]`, within `count` units; an unpaired surrogate stands for itself. Moves `i` past it.
char32_t NextFolded(const char16_t* text, std::size_t& i, std::size_t count) noexcept
{
    char32_t c = LoadUnit(text + i++);
    if (c < 0x80)
        return FoldedASCII(c);
    if (U16_IS_LEAD(c) && i < count && U16_IS_TRAIL(LoadUnit(text + i)))
        c = static_cast<char32_t>(U16_GET_SUPPLEMENTARY(c, LoadUnit(text + i++)));
    return static_cast<char32_t>(u_foldCase(static_cast<UChar32>(c), U_FOLD_CASE_DEFAULT));
}

// Compares code points from `i` on until the units are equal again or `readable` is reached. Folding never changes the
// number of units of a code point, so that one index serves both texts.
int CompareCodePoints(const char16_t* a, const char16_t* b, std::size_t& i, std::size_t readable,
                      std::size_t count) noexcept
{
    do
    {
        std::size_t j = i;
        const char32_t x = NextFolded(a, i, count);
        const char32_t y = NextFolded(b, j, count);
        if (x != y)
            return x < y ? -1 : 1;
    } while (i < readable && LoadUnit(a + i) != LoadUnit(b + i));
    return 0;
}

int CompareFolded(const char16_t* a, const char16_t* b, std::size_t count) noexcept
{
    while (count != 0)
    {
        const std::size_t limit = std::min(count, kChunk);
        const std::size_t shorter = std::min(CountUnits(a, limit), CountUnits(b, limit));
        const std::size_t readable = shorter < limit ? shorter + 1 : limit; // a terminator is a unit like others
        std::size_t at = FirstDifference(a, b, readable);
        const bool same = at == readable;
        if (same && (shorter < limit || count == limit))
            return 0;
        if (at != 0 && U16_IS_LEAD(LoadUnit(a + at - 1))) // it may belong to what follows
            --at;
        if (!same)
        {
            if (const int order = CompareCodePoints(a, b, at, readable, count); order != 0)
                return order;
        }
        a += at;
        b += at;
        count -= at;
    }
    return 0;
}

// Decides at the first unit, as most comparisons with another name end: negative, positive, or 0 for undecided.
int CompareFirst(const char16_t* a, const char16_t* b) noexcept
{
    const char32_t x = LoadUnit(a);
    const char32_t y = LoadUnit(b);
    return (x | y) < 0x80 ? static_cast<int>(FoldedASCII(x)) - static_cast<int>(FoldedASCII(y)) : 0;
}
} // namespace

int tov_wcscmpi(const char16_t* a, const char16_t* b) noexcept
{
    const int order = CompareFirst(a, b);
    return order != 0 ? order : CompareFolded(a, b, SIZE_MAX);
}

int tov_wcsnicmp(const char16_t* a, const char16_t* b, std::size_t uCount) noexcept
{
    const int order = uCount != 0 ? CompareFirst(a, b) : 0;
    return order != 0 ? order : CompareFolded(a, b, uCount);
}
