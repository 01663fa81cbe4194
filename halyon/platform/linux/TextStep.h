// Eight units of text in one step, for the 16-bit text functions. Internal to this folder.
//
// Lanes are numbered in memory order, so that the same source serves every byte order and word size; the one operation
// that a compiler does not find by itself, lanes to bits, has a form of its own where the processor offers one.
//
// Text may lie at odd addresses (it comes out of files and other programs' buffers), so units are never read through a
// `char16_t` lvalue: LoadUnit and LoadStep take any address.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

// Steps are passed within one source only, so how a processor without vectors passes them is of no matter.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace Halyon
{
inline constexpr std::size_t kStepUnits = 8;
inline constexpr std::size_t kStepBytes = kStepUnits * sizeof(char16_t);

using TextStep = std::uint16_t __attribute__((vector_size(kStepBytes), may_alias));
using ByteStep = std::uint8_t __attribute__((vector_size(kStepUnits), may_alias));
// What comparing two steps gives: all bits of a lane, or none.
using LaneStep = std::int16_t __attribute__((vector_size(kStepBytes), may_alias));

inline char16_t LoadUnit(const char16_t* text) noexcept
{
    char16_t unit = 0;
    std::memcpy(&unit, text, sizeof unit);
    return unit;
}

inline TextStep LoadStep(const char16_t* text) noexcept
{
    TextStep step = {};
    std::memcpy(&step, text, sizeof step);
    return step;
}

// Sanitizers see every byte that is read, so under them nothing is read beyond a terminator.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kMayReadOn = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
inline constexpr bool kMayReadOn = false;
#else
inline constexpr bool kMayReadOn = true;
#endif
#else
inline constexpr bool kMayReadOn = true;
#endif

// Whether the `bytes` bytes from `text` on lie in one page: when the first is mapped, all are.
inline bool InOnePage(const char16_t* text, std::size_t bytes) noexcept
{
    constexpr std::uintptr_t kSmallestPage = 4096;
    return reinterpret_cast<std::uintptr_t>(text) % kSmallestPage + bytes <= kSmallestPage;
}

// Two bits a lane, the first lane lowest.
inline std::uint32_t LaneBits(LaneStep lanes) noexcept
{
#ifdef __SSE2__
    return static_cast<std::uint32_t>(_mm_movemask_epi8(std::bit_cast<__m128i>(lanes)));
#else
    std::uint64_t halves[2] = {};
    std::memcpy(halves, &lanes, sizeof halves);
    std::uint32_t bits = 0;
    if ((halves[0] | halves[1]) != 0)
    {
        for (std::size_t lane = 0; lane < kStepUnits; ++lane)
            bits |= (static_cast<std::uint32_t>(lanes[lane]) & 3u) << (2 * lane);
    }
    return bits;
#endif
}

// The first lane that is set. Requires: one is.
inline std::size_t FirstLane(std::uint32_t laneBits) noexcept
{
    return static_cast<std::size_t>(std::countr_zero(laneBits)) / 2;
}

// Units before the first zero, at most `limit`; no unit at or after `limit` is needed to be there. In TovText.cpp.
std::size_t CountUnits(const char16_t* text, std::size_t limit) noexcept;
} // namespace Halyon
