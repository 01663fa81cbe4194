// What a picture's own metadata tells.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include <halyon/framework/HynTypes.h>
#include <host/MediaKind.h>

namespace HynHost
{
struct PictureFacts
{
    std::int32_t width = 0; // pixels; 0: not known
    std::int32_t height = 0;
    std::optional<FILETIME> taken;
    std::optional<std::int32_t> rating; // 0 to 5
    std::string problem;                // why it could not be read wholly; empty when all is well
};

// Reads the metadata of the picture in `bytes`, which need not be sound: nothing is thrown for what is in them.
// Requires: PreparePictureReading was called. [any]
[[nodiscard]] PictureFacts ReadPictureFacts(MediaKind kind, std::span<const std::uint8_t> bytes);

// The camera that made the picture in `bytes`, as it calls itself: "Canon EOS 70D", its maker named once. Empty when it
// is not told. Requires: PreparePictureReading was called. [any]
[[nodiscard]] std::string ReadCamera(std::span<const std::uint8_t> bytes);

// Sets the metadata library up: quiet, and fit for several threads. Once is enough, more does no harm. [any]
void PreparePictureReading();
} // namespace HynHost
