// 16-bit text: comparison without regard to letter case.

#include <halyon/platform/TovPCMac.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <halyon/platform/linux/TextStep.h>

using Halyon::CountUnits;
using Halyon::FirstLane;
using Halyon::InOnePage;
using Halyon::kMayReadOn;
using Halyon::kStepBytes;
using Halyon::kStepUnits;
using Halyon::LaneBits;
using Halyon::LaneStep;
using Halyon::LoadStep;
using Halyon::LoadUnit;
using Halyon::TextStep;

namespace
{
// Units that are measured in one go: long texts that differ early are not measured to their end.
constexpr std::size_t kChunk = 64;

char32_t FoldedASCII(char32_t c) noexcept
{
    return c >= u'A' && c <= u'Z' ? c + 0x20 : c;
}

// Sets the lanes whose units are equal or the two cases of an ASCII letter.
LaneStep Matches(TextStep a, TextStep b) noexcept
{
    const LaneStep rank = LaneStep((a | 0x20) + static_cast<std::uint16_t>(0x8000 - u'a')); // "a" is the least
    const TextStep caseBit = TextStep(rank < static_cast<std::int16_t>(-0x8000 + 26)) & 0x20;
    return ((a ^ b) & ~caseBit) == TextStep{};
}

// Two bits for each lane whose units do not match or end the text.
std::uint32_t Stops(TextStep a, TextStep b) noexcept
{
    // What goes on is asked for, not what stops: one operation less than to turn each of the two round.
    constexpr std::uint32_t kAllLanes = (1u << (2 * kStepUnits)) - 1;
    return LaneBits(Matches(a, b) & ~LaneStep(a == TextStep{})) ^ kAllLanes;
}

// The first of `count` units that do not match; `count` when all do.
std::size_t FirstMismatch(const char16_t* a, const char16_t* b, std::size_t count) noexcept
{
    std::size_t at = 0;
    for (; at + kStepUnits <= count; at += kStepUnits)
    {
        const std::uint32_t others = LaneBits(~Matches(LoadStep(a + at), LoadStep(b + at)));
        if (others != 0)
            return at + FirstLane(others);
    }
    for (; at < count; ++at)
    {
        const char16_t x = LoadUnit(a + at);
        const char16_t y = LoadUnit(b + at);
        if (x != y && FoldedASCII(x) != FoldedASCII(y))
            break;
    }
    return at;
}

// The first unit that does not match or ends both texts, at most `count`. Texts that lie alike within their blocks are
// read by whole aligned blocks, for the reasons and with the exemption of CountUnits.
__attribute__((no_sanitize("address", "thread", "undefined"))) std::size_t
StopInBlocks(const char16_t* a, const char16_t* b, std::size_t count) noexcept
{
    const std::size_t skipped = reinterpret_cast<std::uintptr_t>(a) % kStepBytes;
    const auto* x = reinterpret_cast<const TextStep*>(reinterpret_cast<std::uintptr_t>(a) - skipped);
    const auto* y = reinterpret_cast<const TextStep*>(reinterpret_cast<std::uintptr_t>(b) - skipped);
    std::uint32_t stops = Stops(*x, *y) >> skipped;
    if (stops != 0)
        return std::min(FirstLane(stops), count);
    for (std::size_t at = kStepUnits - skipped / sizeof(char16_t); at < count; at += kStepUnits)
    {
        ++x;
        ++y;
        stops = Stops(*x, *y);
        if (stops != 0)
            return std::min(at + FirstLane(stops), count);
    }
    return count;
}

// The same for texts that lie differently: measured first, chunk by chunk, then compared where both are.
std::size_t StopInChunks(const char16_t* a, const char16_t* b, std::size_t count) noexcept
{
    for (std::size_t done = 0;;)
    {
        const std::size_t limit = std::min(count - done, kChunk);
        const std::size_t both = std::min(CountUnits(a + done, limit), CountUnits(b + done, limit));
        const std::size_t matching = FirstMismatch(a + done, b + done, both);
        done += matching;
        if (matching < limit || done == count)
            return done;
    }
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

int CompareFolded(const char16_t* a, const char16_t* b, std::size_t count) noexcept
{
    const std::uintptr_t apart = reinterpret_cast<std::uintptr_t>(a) ^ reinterpret_cast<std::uintptr_t>(b);
    const bool odd = reinterpret_cast<std::uintptr_t>(a) % sizeof(char16_t) != 0;
    const auto stop = apart % kStepBytes == 0 && !odd ? StopInBlocks : StopInChunks;
    while (count != 0)
    {
        std::size_t i = stop(a, b, count);
        if (i == count || (LoadUnit(a + i) | LoadUnit(b + i)) == 0)
            return 0;
        if (i != 0 && U16_IS_LEAD(LoadUnit(a + i - 1))) // it may belong to what follows
            --i;
        // Folding never changes the number of units of a code point, so that one index serves both texts.
        do
        {
            std::size_t j = i;
            const char32_t x = NextFolded(a, i, count);
            const char32_t y = NextFolded(b, j, count);
            if (x != y)
                return x < y ? -1 : 1;
        } while (i < count && LoadUnit(a + i) != LoadUnit(b + i));
        a += i;
        b += i;
        count -= i;
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

template <class Word>
bool SameWord(const char16_t* a, const char16_t* b) noexcept
{
    Word x = 0;
    Word y = 0;
    std::memcpy(&x, a, sizeof x);
    std::memcpy(&y, b, sizeof y);
    return x == y;
}

// Both ends of `units` units in words of `Word`, which meet or overlap in the middle.
template <class Word>
bool SameEnds(const char16_t* a, const char16_t* b, std::size_t units) noexcept
{
    const std::size_t last = units - sizeof(Word) / sizeof(char16_t);
    return SameWord<Word>(a, b) && SameWord<Word>(a + last, b + last);
}

bool SameSteps(const char16_t* a, const char16_t* b, std::size_t units) noexcept
{
    const auto same = [&](std::size_t at)
    {
        return LaneBits(LoadStep(a + at) != LoadStep(b + at)) == 0;
    };
    for (std::size_t at = 0; at + kStepUnits < units; at += kStepUnits)
    {
        if (!same(at))
            return false;
    }
    return same(units - kStepUnits);
}
} // namespace

bool tov_wcssame(const char16_t* psz, const char16_t* known, std::size_t uLength) noexcept
{
    const std::size_t units = uLength + 1;
    if (!kMayReadOn || !InOnePage(psz, units * sizeof(char16_t)))
    {
        std::size_t at = 0;
        while (at < uLength && LoadUnit(psz + at) == LoadUnit(known + at) && LoadUnit(psz + at) != 0)
            ++at;
        return at == uLength && LoadUnit(psz + at) == 0;
    }
    // `psz` may end before `known` does; what is read behind its end is then no match, whatever it is.
    if (units >= kStepUnits)
        return SameSteps(psz, known, units);
    if (units >= 4)
        return SameEnds<std::uint64_t>(psz, known, units);
    return units >= 2 ? SameEnds<std::uint32_t>(psz, known, units) : LoadUnit(psz) == 0;
}

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
