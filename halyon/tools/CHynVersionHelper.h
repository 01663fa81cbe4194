// Versions of four numbers, read and compared.
//
// For versions of documents and components that hosts exchange. Not for this system's own, which is in HynVersion.h.
#pragma once

#include <cstdint>

#include <halyon/framework/HynTypes.h>

namespace Halyon
{
// In the order in which they are written.
struct tagHYN_VERSION
{
    std::uint32_t first;
    std::uint32_t second;
    std::uint32_t third;
    std::uint32_t fourth;
};

class CHynVersionHelper
{
public:
    // Reads four numbers with "." or "," between them, white space around each allowed ("2.1.0.37"). A part that does
    // not begin with a number counts as 0, a negative one modulo 2^32; what follows the fourth number is ignored.
    // Returns 1; or 0, and `version` as it was, for null, for fewer parts and for an empty one. [any]
    static int GetVersion(const char16_t* text, tagHYN_VERSION& version) noexcept;

    // -1, 0 or 1 as `a` is older, the same or newer, by the first, the second and the fourth number. The third takes no
    // part, deliberately. [any]
    static int CompareVersion(const tagHYN_VERSION& a, const tagHYN_VERSION& b) noexcept;
};
} // namespace Halyon
