// What a film's own headers tell.
//
// The few fields that the catalogue wants are read here, without a library: those that know all of these formats cost
// milliseconds for each file and tens of them to load, and one broken header can keep them busy for minutes.
#pragma once

#include <cstdint>
#include <span>

#include <host/MediaKind.h>

namespace HynHost
{
struct VideoFacts
{
    std::int32_t width = 0; // pixels of the first picture track; 0: there is none, or it cannot be read
    std::int32_t height = 0;
};

// Reads the headers of the film in `bytes`, which need not be sound. Looks at no more of it than the headers. [any]
[[nodiscard]] VideoFacts ReadVideoFacts(MediaKind kind, std::span<const std::uint8_t> bytes);
} // namespace HynHost
