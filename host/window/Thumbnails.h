// Small pictures of large ones.
//
// Not for films and sounds, of which none is made.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <QImage>

namespace HynHost
{
// The picture in `bytes`, upright, not larger than kThumbnailSide each way; a small one stays as it is. Null when it
// cannot be made: `bytes` need not be sound, and there may be no reader for their format. [any]
[[nodiscard]] QImage MakeThumbnail(std::span<const std::uint8_t> bytes);

// How a thumbnail is stored: as a JPEG, one that can be seen through as a PNG. Empty for a null image. [any]
[[nodiscard]] std::vector<std::byte> PackThumbnail(const QImage& image);

// What PackThumbnail has made; null for anything else. [any]
[[nodiscard]] QImage UnpackThumbnail(std::span<const std::byte> packed);
} // namespace HynHost
