#include <host/Recogniser.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include <magic.h>

#include <host/HostError.h>
#include <host/Moment.h>
#include <host/PictureFacts.h>
#include <host/VideoFacts.h>

namespace HynHost
{
namespace
{
// What the library looks at; the marks of every kind lie near the beginning.
constexpr std::size_t kHeadSize = 4096;

// Only its table of marks is wanted: no looking into archives, no guessing at texts and encodings.
constexpr int kMagicFlags = MAGIC_MIME_TYPE | MAGIC_NO_CHECK_COMPRESS | MAGIC_NO_CHECK_TAR | MAGIC_NO_CHECK_APPTYPE |
                            MAGIC_NO_CHECK_ELF | MAGIC_NO_CHECK_TEXT | MAGIC_NO_CHECK_CDF | MAGIC_NO_CHECK_CSV |
                            MAGIC_NO_CHECK_TOKENS | MAGIC_NO_CHECK_ENCODING | MAGIC_NO_CHECK_JSON;

// Marks that are looked at first. Those of the kinds that most files are, since the library takes a third of the time
// of reading a picture to come to the same; and those that its table lacks or words wrongly: brands of camera makers,
// older QuickTime files that begin with an empty atom, the 64-bit and the big-endian wave file.
struct Mark
{
    std::size_t offset;
    std::string_view bytes;
    MediaKind kind;
};
using namespace std::string_view_literals;
constexpr Mark kMarks[] = {
    {0, "\xFF\xD8\xFF\xE0"sv, MediaKind::Jpeg},
    {0, "\xFF\xD8\xFF\xE1"sv, MediaKind::Jpeg},
    {0, "\xFF\xD8\xFF\xDB"sv, MediaKind::Jpeg},
    {0, "\x89PNG\r\n\x1A\n"sv, MediaKind::Png},
    {4, "ftypXAVC"sv, MediaKind::Mp4},
    {4, "ftypMSNV"sv, MediaKind::Mp4},
    {4, "ftypf4v "sv, MediaKind::Mp4},
    {0, "\0\0\0\x08wide"sv, MediaKind::Mov},
    {0,
     "\0\0\0\x08"
     "free"sv,
     MediaKind::Mov},
    {0, "\0\0\0\x08skip"sv, MediaKind::Mov},
    {0, "BW64\xFF\xFF\xFF\xFFWAVE"sv, MediaKind::Wav},
};

std::string_view TextOf(std::span<const std::uint8_t> bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// What follows a tag of the ID3 kind, which may stand before any sort of sound; empty when there is none.
std::span<const std::uint8_t> BehindTag(std::span<const std::uint8_t> bytes)
{
    constexpr std::size_t kTagHeader = 10;
    if (bytes.size() < kTagHeader || !TextOf(bytes).starts_with("ID3"))
        return {};
    std::size_t size = 0; // 7 bits a byte
    for (std::size_t i = 6; i < kTagHeader; ++i)
        size = size << 7 | (bytes[i] & 0x7Fu);
    return bytes.subspan(std::min(kTagHeader + size, bytes.size()));
}
void AddContentFacts(std::span<const std::uint8_t> bytes, FileFacts& facts)
{
    if (IsPicture(*facts.kind))
    {
        PictureFacts picture = ReadPictureFacts(*facts.kind, bytes);
        facts.width = picture.width;
        facts.height = picture.height;
        facts.rating = picture.rating;
        facts.taken = picture.taken.value_or(facts.taken);
        facts.problem = std::move(picture.problem);
    }
    else if (IsVideo(*facts.kind))
    {
        const VideoFacts video = ReadVideoFacts(*facts.kind, bytes);
        facts.width = video.width;
        facts.height = video.height;
    }
}
} // namespace

FileStamp StampOf(const struct stat& status) noexcept
{
    return {status.st_size, status.st_mtim.tv_sec * 1'000'000'000LL + status.st_mtim.tv_nsec,
            static_cast<long long>(status.st_ino)};
}

void Recogniser::Closer::operator()(magic_set* magic) const noexcept
{
    magic_close(magic);
}

Recogniser::Recogniser() : m_magic(magic_open(kMagicFlags))
{
    if (m_magic == nullptr || magic_load(m_magic.get(), nullptr) != 0)
        throw HostError("cannot load", "the database of file kinds",
                        m_magic == nullptr ? "no memory" : magic_error(m_magic.get()));
    PreparePictureReading();
}

std::optional<MediaKind> Recogniser::KindOf(std::span<const std::uint8_t> bytes)
{
    const auto head = bytes.first(std::min(bytes.size(), kHeadSize));
    for (const Mark& mark : kMarks)
    {
        if (head.size() > mark.offset && TextOf(head).substr(mark.offset).starts_with(mark.bytes))
            return mark.kind;
    }
    const char* mime = magic_buffer(m_magic.get(), head.data(), head.size());
    return mime == nullptr ? std::nullopt : MediaKindFromMime(mime);
}

FileFacts Recogniser::Recognise(const std::string& path)
{
    FileFacts facts;
    if (const int error = m_file.Open(path); error != 0)
    {
        facts.problem = SystemReason(error);
        return facts;
    }
    facts.stamp = StampOf(m_file.Status());
    facts.taken = MomentFromUnixNs(facts.stamp.modifiedNs);

    const auto bytes = m_file.Bytes();
    if (const auto behind = BehindTag(bytes); !behind.empty())
        facts.kind = KindOf(behind);
    if (!facts.kind)
        facts.kind = KindOf(bytes);
    if (facts.kind)
        AddContentFacts(bytes, facts);
    facts.wasRead = !m_file.Failed();
    if (!facts.wasRead)
        facts.problem = "part of it could not be read";
    return facts;
}
} // namespace HynHost
