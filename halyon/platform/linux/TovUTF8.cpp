// UTF-16 to UTF-8 and back.

#include <halyon/platform/TovPCMac.h>

#include <array>
#include <bit>
#include <cstring>

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <halyon/platform/linux/TextStep.h>

using Halyon::ByteStep;
using Halyon::FirstLane;
using Halyon::kStepUnits;
using Halyon::LaneBits;
using Halyon::LaneStep;
using Halyon::LoadStep;
using Halyon::LoadUnit;
using Halyon::TextStep;

namespace
{
constexpr char32_t kReplacement = 0xFFFD;

// The code point at `text[i]`; an unpaired surrogate is U+FFFD. Moves `i` past it.
char32_t NextCodePoint(const char16_t* text, std::size_t& i, std::size_t length) noexcept
{
    const char32_t unit = LoadUnit(text + i++);
    if (!U16_IS_SURROGATE(unit))
        return unit;
    if (U16_IS_SURROGATE_LEAD(unit) && i < length && U16_IS_TRAIL(LoadUnit(text + i)))
        return static_cast<char32_t>(U16_GET_SUPPLEMENTARY(unit, LoadUnit(text + i++)));
    return kReplacement;
}

// Writes the ASCII units from `text[i]` on. A step is stored whole, also when only its first lanes are ASCII: each unit
// takes at least one byte, so the room for it is there, and what follows is written over it.
void WriteASCII(const char16_t* text, std::size_t& i, std::size_t length, std::uint8_t*& out) noexcept
{
    while (i + kStepUnits <= length)
    {
        const TextStep units = LoadStep(text + i);
        const ByteStep bytes = __builtin_convertvector(units, ByteStep);
        std::memcpy(out, &bytes, sizeof bytes);
        if (const std::uint32_t others = LaneBits(units >= 0x80); others != 0)
        {
            i += FirstLane(others);
            out += FirstLane(others);
            return;
        }
        i += kStepUnits;
        out += kStepUnits;
    }
    for (char16_t unit = 0; i < length && (unit = LoadUnit(text + i)) < 0x80; ++i)
        *out++ = static_cast<std::uint8_t>(unit);
}

// Writes the code points from `text[i]` on up to the next run of ASCII; one alone (a separator) is no run.
void WriteOthers(const char16_t* text, std::size_t& i, std::size_t length, std::uint8_t*& out) noexcept
{
    while (i < length)
    {
        const char32_t unit = LoadUnit(text + i);
        std::size_t n = 0;
        if (unit < 0x80)
        {
            if (i + 1 < length && LoadUnit(text + i + 1) < 0x80)
                return;
            out[n++] = static_cast<std::uint8_t>(unit);
            ++i;
        }
        else if (unit >= 0x800 && !U16_IS_SURROGATE(unit)) // most of what is not ASCII
        {
            out[0] = static_cast<std::uint8_t>(0xE0 | (unit >> 12));
            out[1] = static_cast<std::uint8_t>(0x80 | ((unit >> 6) & 0x3F));
            out[2] = static_cast<std::uint8_t>(0x80 | (unit & 0x3F));
            n = 3;
            ++i;
        }
        else
        {
            const char32_t c = NextCodePoint(text, i, length);
            U8_APPEND_UNSAFE(out, n, c);
        }
        out += n;
    }
}

// Returns the end of what it wrote.
std::uint8_t* WriteUTF8(const char16_t* text, std::size_t length, std::uint8_t* out) noexcept
{
    for (std::size_t i = 0; i < length;)
    {
        WriteASCII(text, i, length, out);
        WriteOthers(text, i, length, out);
    }
    return out;
}

// Bytes beyond the first that the units of a step take together. Requires: no surrogates.
std::size_t ExtraBytes(TextStep units) noexcept
{
    const LaneStep extra = -((units >= 0x80) + (units >= 0x800));
    const auto halves = std::bit_cast<std::array<std::uint64_t, 2>>(extra);
    constexpr std::uint64_t kSumLanes = 0x0001000100010001;
    return static_cast<std::size_t>(((halves[0] + halves[1]) * kSumLanes) >> 48);
}

std::size_t SizeAsUTF8(const char16_t* text, std::size_t length) noexcept
{
    std::size_t size = 0;
    for (std::size_t i = 0; i < length;)
    {
        if (i + kStepUnits <= length)
        {
            const TextStep units = LoadStep(text + i);
            if (LaneBits((units & 0xF800) == 0xD800) == 0)
            {
                size += kStepUnits + ExtraBytes(units);
                i += kStepUnits;
                continue;
            }
        }
        const char32_t c = NextCodePoint(text, i, length);
        size += static_cast<std::size_t>(U8_LENGTH(c));
    }
    return size;
}

// The code point at `text[i]`; a maximal ill-formed sequence is U+FFFD. Moves `i` past it.
char32_t NextCodePoint(const std::uint8_t* text, std::size_t& i, std::size_t length) noexcept
{
    const std::uint32_t first = text[i];
    if (length - i >= 3 && first >= 0xE1 && first <= 0xEC && (text[i + 1] & 0xC0) == 0x80 &&
        (text[i + 2] & 0xC0) == 0x80) // most of what is not ASCII
    {
        const char32_t c = (first & 0xFu) << 12 | (text[i + 1] & 0x3Fu) << 6 | (text[i + 2] & 0x3Fu);
        i += 3;
        return c;
    }
    char32_t c = 0;
    U8_NEXT_OR_FFFD(text, i, length, c);
    return c;
}

// Counts the units of the text, and writes them where there is something to write to.
template <bool kWrite>
std::size_t ReadUTF8(const std::uint8_t* text, std::size_t length, char16_t* out) noexcept
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < length;)
    {
        std::uint64_t eight = 0x80;
        if (i + sizeof eight <= length)
            std::memcpy(&eight, text + i, sizeof eight);
        if ((eight & 0x8080808080808080) == 0)
        {
            if constexpr (kWrite)
            {
                const TextStep units = __builtin_convertvector(std::bit_cast<ByteStep>(eight), TextStep);
                std::memcpy(out + count, &units, sizeof units);
            }
            count += kStepUnits;
            i += kStepUnits;
            continue;
        }
        do
        {
            const char32_t c = NextCodePoint(text, i, length);
            if constexpr (kWrite)
                U16_APPEND_UNSAFE(out, count, c);
            else
                count += static_cast<std::size_t>(U16_LENGTH(c));
        } while (i < length && text[i] >= 0x80);
    }
    return count;
}
} // namespace

std::size_t TovTextToUTF8(const char16_t* text, std::size_t uLength, char* buffer, std::size_t uSize) noexcept
{
    // A unit never takes more than three bytes: with that much room there is nothing to measure.
    if (uLength > uSize / 3)
    {
        const std::size_t size = SizeAsUTF8(text, uLength);
        if (size > uSize)
            return size;
    }
    auto* out = reinterpret_cast<std::uint8_t*>(buffer);
    return static_cast<std::size_t>(WriteUTF8(text, uLength, out) - out);
}

std::size_t TovTextFromUTF8(const char* text, std::size_t uBytes, char16_t* buffer, std::size_t uSize) noexcept
{
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text);
    if (uBytes > uSize)
    {
        const std::size_t count = ReadUTF8<false>(bytes, uBytes, nullptr);
        if (count > uSize)
            return count;
    }
    return ReadUTF8<true>(bytes, uBytes, buffer);
}
