// 16-bit text: length, copies, white space, numbers.

#include <halyon/platform/TovPCMac.h>

#include <algorithm>
#include <cstring>

#include <unicode/uchar.h>

#include <halyon/platform/linux/TextStep.h>

using namespace Halyon;

namespace Halyon
{
// Whole aligned blocks are read, each with at least one unit of the text inside. Such a block never crosses a page, so
// the neighbours that are read with it are always mapped; what they hold is masked out. To the sanitizers a neighbour
// is another object, freed memory or another thread's counter, hence they keep out of this one function.
__attribute__((no_sanitize("address", "thread", "undefined"))) std::size_t CountUnits(const char16_t* text,
                                                                                      std::size_t limit) noexcept
{
    const auto address = reinterpret_cast<std::uintptr_t>(text);
    std::size_t count = 0;
    if (address % sizeof(char16_t) != 0) // units straddle the blocks
    {
        while (count < limit && LoadUnit(text + count) != 0)
            ++count;
        return count;
    }
    if (limit == 0)
        return 0;
    const std::size_t skipped = address % kStepBytes;
    const auto* block = reinterpret_cast<const TextStep*>(address - skipped);
    std::uint32_t ends = LaneBits(*block == TextStep{}) >> skipped;
    if (ends != 0)
        return std::min(FirstLane(ends), limit);
    for (count = kStepUnits - skipped / sizeof(char16_t); count < limit; count += kStepUnits)
    {
        ends = LaneBits(*++block == TextStep{});
        if (ends != 0)
            return std::min(count + FirstLane(ends), limit);
    }
    return limit;
}
} // namespace Halyon

// As CountUnits does it, without a limit to look at.
__attribute__((no_sanitize("address", "thread", "undefined"))) std::size_t tov_wcslen(const char16_t* psz) noexcept
{
    const auto address = reinterpret_cast<std::uintptr_t>(psz);
    if (address % sizeof(char16_t) != 0)
        return CountUnits(psz, SIZE_MAX);
    const std::size_t skipped = address % kStepBytes;
    const auto* block = reinterpret_cast<const TextStep*>(address - skipped);
    std::uint32_t ends = LaneBits(*block == TextStep{}) >> skipped;
    if (ends != 0)
        return FirstLane(ends);
    do
        ends = LaneBits(*++block == TextStep{});
    while (ends == 0);
    return static_cast<std::size_t>(reinterpret_cast<const char16_t*>(block) - psz) + FirstLane(ends);
}

char16_t* tov_wcscpy(char16_t* dest, const char16_t* src) noexcept
{
    std::memcpy(dest, src, (tov_wcslen(src) + 1) * sizeof(char16_t));
    return dest;
}

char16_t* tov_wcsncpy(char16_t* dest, const char16_t* src, std::size_t uCount) noexcept
{
    const std::size_t length = CountUnits(src, uCount);
    std::memcpy(dest, src, length * sizeof(char16_t));
    std::memset(dest + length, 0, (uCount - length) * sizeof(char16_t));
    return dest;
}

int tov_iswspace(char16_t unit) noexcept
{
    if (unit < 0x80)
        return unit == u' ' || (unit >= u'\t' && unit <= u'\r') ? 1 : 0;
    return u_isUWhiteSpace(unit) ? 1 : 0;
}

std::int32_t tov_wtoi(const char16_t* psz) noexcept
{
    while (tov_iswspace(LoadUnit(psz)) != 0)
        ++psz;
    const bool negative = LoadUnit(psz) == u'-';
    if (negative || LoadUnit(psz) == u'+')
        ++psz;
    std::uint32_t value = 0;
    for (char16_t unit = LoadUnit(psz); unit >= u'0' && unit <= u'9'; unit = LoadUnit(++psz))
        value = value * 10 + static_cast<std::uint32_t>(unit - u'0');
    return static_cast<std::int32_t>(negative ? 0 - value : value);
}
