// The 128-bit identifier of classes and interfaces.
//
// Identifiers are compared for equality only. They have no order and no text form at run time.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include <halyon/framework/HynUnit.h>

namespace Halyon
{
// An identifier in the usual layout of 8-4-4-4-12 digits; uuidgen makes new ones.
struct HYN_GUID
{
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};

static_assert(sizeof(HYN_GUID) == 16 && alignof(HYN_GUID) == 4);
static_assert(offsetof(HYN_GUID, Data2) == 4 && offsetof(HYN_GUID, Data3) == 6 && offsetof(HYN_GUID, Data4) == 8);

// Whether two identifiers are the same: four 32-bit words in order, ending at the first difference. [any]
[[nodiscard]] constexpr bool operator==(const HYN_GUID& a, const HYN_GUID& b) noexcept
{
    const auto wordsA = std::bit_cast<std::array<std::uint32_t, 4>>(a);
    const auto wordsB = std::bit_cast<std::array<std::uint32_t, 4>>(b);
    return wordsA == wordsB;
}
} // namespace Halyon
