#include <host/MediaKind.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

namespace HynHost
{
namespace
{
constexpr std::array<std::string_view, 12> kNames = {"JPEG", "PNG", "GIF",  "TIFF", "WebP", "HEIF",
                                                     "WAV",  "MP3", "FLAC", "MP4",  "MOV",  "MKV"};
static_assert(kNames.size() == static_cast<std::size_t>(MediaKind::Mkv) + 1);

struct MimeKind
{
    std::string_view mime;
    MediaKind kind;
};

constexpr MimeKind kMimes[] = {
    {"image/jpeg", MediaKind::Jpeg},
    {"image/png", MediaKind::Png},
    {"image/gif", MediaKind::Gif},
    {"image/tiff", MediaKind::Tiff},
    {"image/webp", MediaKind::WebP},
    {"image/heic", MediaKind::Heif},
    {"image/heif", MediaKind::Heif},
    {"image/heic-sequence", MediaKind::Heif},
    {"audio/x-wav", MediaKind::Wav},
    {"audio/mpeg", MediaKind::Mp3},
    {"audio/flac", MediaKind::Flac},
    {"video/mp4", MediaKind::Mp4},
    {"video/x-m4v", MediaKind::Mp4},
    {"video/3gpp", MediaKind::Mp4},
    {"video/quicktime", MediaKind::Mov},
    {"video/x-matroska", MediaKind::Mkv},
    {"image/heif-sequence", MediaKind::Heif},
    {"image/avif", MediaKind::Heif},
    {"image/vnd.mozilla.apng", MediaKind::Png},
    {"audio/mp4", MediaKind::Mp4},
    {"audio/x-m4a", MediaKind::Mp4},
    {"video/3gpp2", MediaKind::Mp4},
    {"video/webm", MediaKind::Mkv},
};
} // namespace

std::string_view MediaKindName(MediaKind kind) noexcept
{
    return kNames[static_cast<std::size_t>(kind)];
}

std::optional<MediaKind> MediaKindFromName(std::string_view name) noexcept
{
    const auto found = std::ranges::find(kNames, name);
    return found == kNames.end() ? std::nullopt : std::optional(static_cast<MediaKind>(found - kNames.begin()));
}

std::optional<MediaKind> MediaKindFromMime(std::string_view mime) noexcept
{
    const auto* found = std::ranges::find(kMimes, mime, &MimeKind::mime);
    return found == std::end(kMimes) ? std::nullopt : std::optional(found->kind);
}

bool IsPicture(MediaKind kind) noexcept
{
    return kind <= MediaKind::Heif;
}

bool IsVideo(MediaKind kind) noexcept
{
    return kind >= MediaKind::Mp4;
}
} // namespace HynHost
