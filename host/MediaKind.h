// The kinds of media file that the catalogue knows.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace HynHost
{
enum class MediaKind : std::uint8_t
{
    Jpeg,
    Png,
    Gif,
    Tiff,
    WebP,
    Heif,
    Wav,
    Mp3,
    Flac,
    Mp4,
    Mov,
    Mkv,
};

// The name that the catalogue stores and people see ("JPEG"). [any]
[[nodiscard]] std::string_view MediaKindName(MediaKind kind) noexcept;

// The kind with such a name; nothing for other texts. [any]
[[nodiscard]] std::optional<MediaKind> MediaKindFromName(std::string_view name) noexcept;

// The kind of a MIME type as the recognition library words it ("image/jpeg"); nothing for what is no medium of ours.
// [any]
[[nodiscard]] std::optional<MediaKind> MediaKindFromMime(std::string_view mime) noexcept;

// Whether it is a still picture, a film (which may turn out to hold sound alone). [any]
[[nodiscard]] bool IsPicture(MediaKind kind) noexcept;
[[nodiscard]] bool IsVideo(MediaKind kind) noexcept;
} // namespace HynHost
