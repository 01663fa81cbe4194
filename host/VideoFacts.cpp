#include <host/VideoFacts.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <optional>

namespace HynHost
{
namespace
{
using Bytes = std::span<const std::uint8_t>;

std::uint64_t BigEndian(Bytes bytes)
{
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes)
        value = value << 8 | byte;
    return value;
}

// One piece of a file that is made of pieces within pieces.
struct Piece
{
    std::uint64_t name;
    Bytes content;
};

// Takes `header` bytes and then `size` bytes of content off the front of `rest`; what is cut short counts as far as it
// goes.
Bytes Take(Bytes& rest, std::size_t header, std::uint64_t size)
{
    const Bytes behind = rest.subspan(header);
    const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(size, behind.size()));
    rest = behind.subspan(length);
    return behind.first(length);
}

// MP4 and MOV: boxes, each with its size, the header included, and a name of four letters.
std::optional<Piece> NextBox(Bytes& rest)
{
    constexpr std::size_t kShort = 8;
    constexpr std::size_t kLong = 16;
    if (rest.size() < kShort)
        return std::nullopt;
    std::uint64_t size = BigEndian(rest.first(4));
    const std::uint64_t name = BigEndian(rest.subspan(4, 4));
    if (size == 1 && rest.size() < kLong)
        return std::nullopt;
    const std::size_t header = size == 1 ? kLong : kShort;
    if (size == 1)
        size = BigEndian(rest.subspan(8, 8));
    else if (size == 0) // up to the end of the file
        size = rest.size();
    if (size < header)
        return std::nullopt;
    return Piece{name, Take(rest, header, size - header)};
}

// Matroska: elements, each with a name and a size whose first bytes say how long they are.
std::optional<Piece> NextElement(Bytes& rest)
{
    if (rest.empty() || rest[0] == 0)
        return std::nullopt;
    const auto nameSize = static_cast<std::size_t>(std::countl_zero(rest[0])) + 1;
    if (rest.size() <= nameSize || rest[nameSize] == 0)
        return std::nullopt;
    const auto sizeSize = static_cast<std::size_t>(std::countl_zero(rest[nameSize])) + 1;
    if (rest.size() < nameSize + sizeSize)
        return std::nullopt;
    const std::uint64_t mask = (std::uint64_t{1} << (7 * sizeSize)) - 1;
    std::uint64_t size = BigEndian(rest.subspan(nameSize, sizeSize)) & mask;
    if (size == mask) // not known when it was written: up to the end of what holds it
        size = rest.size();
    const std::uint64_t name = BigEndian(rest.first(nameSize));
    return Piece{name, Take(rest, nameSize + sizeSize, size)};
}

constexpr std::uint64_t BoxName(const char (&name)[5])
{
    std::uint64_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8 | static_cast<std::uint8_t>(name[i]);
    return value;
}

// The first piece of that name, or no bytes.
template <class Next>
Bytes Find(Bytes parent, std::uint64_t name, Next next)
{
    while (const auto piece = next(parent))
    {
        if (piece->name == name)
            return piece->content;
    }
    return {};
}

std::int32_t Pixels(std::uint64_t number)
{
    constexpr std::uint64_t kMost = 1 << 20;
    return number > kMost ? 0 : static_cast<std::int32_t>(number);
}

// The size stands at the end of a track's header, in units of 1/65536 pixel; sound has none.
VideoFacts FromBoxes(Bytes bytes)
{
    Bytes movie = Find(bytes, BoxName("moov"), NextBox);
    while (const auto track = NextBox(movie))
    {
        if (track->name != BoxName("trak"))
            continue;
        const Bytes header = Find(track->content, BoxName("tkhd"), NextBox);
        const std::size_t at = !header.empty() && header[0] == 1 ? 88 : 76; // with times of 64 bits, or of 32
        if (header.size() < at + 8)
            continue;
        const VideoFacts facts = {Pixels(BigEndian(header.subspan(at, 4)) >> 16),
                                  Pixels(BigEndian(header.subspan(at + 4, 4)) >> 16)};
        if (facts.width != 0 && facts.height != 0)
            return facts;
    }
    return {};
}

VideoFacts FromElements(Bytes bytes)
{
    constexpr std::uint64_t kSegment = 0x18538067;
    constexpr std::uint64_t kTracks = 0x1654AE6B;
    constexpr std::uint64_t kTrack = 0xAE;
    constexpr std::uint64_t kVideo = 0xE0;
    constexpr std::uint64_t kPixelWidth = 0xB0;
    constexpr std::uint64_t kPixelHeight = 0xBA;
    Bytes tracks = Find(Find(bytes, kSegment, NextElement), kTracks, NextElement);
    while (const auto track = NextElement(tracks))
    {
        const Bytes video = track->name == kTrack ? Find(track->content, kVideo, NextElement) : Bytes();
        const VideoFacts facts = {Pixels(BigEndian(Find(video, kPixelWidth, NextElement))),
                                  Pixels(BigEndian(Find(video, kPixelHeight, NextElement)))};
        if (facts.width != 0 && facts.height != 0)
            return facts;
    }
    return {};
}
} // namespace

VideoFacts ReadVideoFacts(MediaKind kind, std::span<const std::uint8_t> bytes)
{
    return kind == MediaKind::Mkv ? FromElements(bytes) : FromBoxes(bytes);
}
} // namespace HynHost
