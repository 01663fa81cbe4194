#include <host/PictureFacts.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <exception>
#include <limits>
#include <memory>
#include <mutex>
#include <string_view>

#include <exiv2/exiv2.hpp>

#include <host/Moment.h>

namespace HynHost
{
namespace
{
// The library's XMP parser is not made for threads; it asks for this around its work.
void LockXmp(void* data, bool lock)
{
    auto* mutex = static_cast<std::recursive_mutex*>(data);
    if (lock)
        mutex->lock();
    else
        mutex->unlock();
}

std::string ExifText(const Exiv2::ExifData& exif, const char* key)
{
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    return found == exif.end() ? std::string() : found->toString();
}

std::optional<FILETIME> TakenOf(const Exiv2::ExifData& exif)
{
    struct Keys
    {
        const char* date;
        const char* subSecond;
        const char* offset;
    };
    constexpr std::array<Keys, 2> kKeys = {
        Keys{"Exif.Photo.DateTimeOriginal", "Exif.Photo.SubSecTimeOriginal", "Exif.Photo.OffsetTimeOriginal"},
        Keys{"Exif.Photo.DateTimeDigitized", "Exif.Photo.SubSecTimeDigitized", "Exif.Photo.OffsetTimeDigitized"}};
    for (const Keys& keys : kKeys)
    {
        const auto taken =
            MomentFromExif(ExifText(exif, keys.date), ExifText(exif, keys.subSecond), ExifText(exif, keys.offset));
        if (taken)
            return taken;
    }
    return std::nullopt;
}

// XMP first: it is what programs write, and where both stand the Exif one is the older. A rejected picture (-1) has no
// rating.
std::optional<std::int32_t> RatingOf(const Exiv2::ExifData& exif, const Exiv2::XmpData& xmp)
{
    double rating = -1;
    if (const auto inXmp = xmp.findKey(Exiv2::XmpKey("Xmp.xmp.Rating")); inXmp != xmp.end())
        rating = static_cast<double>(inXmp->toFloat());
    else if (const auto inExif = exif.findKey(Exiv2::ExifKey("Exif.Image.Rating")); inExif != exif.end())
        rating = static_cast<double>(inExif->toFloat());
    if (!(rating >= 0 && rating <= 5))
        return std::nullopt;
    return static_cast<std::int32_t>(std::lround(rating));
}

// Whether a JPEG ends before its image data does: there is no end marker behind the start of the scan. What programs
// append to a whole picture does not matter; it is not looked for behind an endless tail.
bool IsCutShort(std::span<const std::uint8_t> jpeg)
{
    constexpr std::size_t kLongestTail = 64 << 20;
    std::size_t at = 2;
    while (at + 4 <= jpeg.size() && jpeg[at] == 0xFF && jpeg[at + 1] != 0xDA)
    {
        const bool fill = jpeg[at + 1] == 0xFF; // any number of fill bytes may stand before a marker
        at += fill ? 1 : 2 + static_cast<std::size_t>(jpeg[at + 2] << 8 | jpeg[at + 3]);
    }
    constexpr std::array<std::uint8_t, 2> kEnd = {0xFF, 0xD9};
    const auto scan = jpeg.subspan(std::min(at, jpeg.size()));
    const auto tail = scan.last(std::min(scan.size(), kLongestTail));
    const bool found = std::find_end(tail.begin(), tail.end(), kEnd.begin(), kEnd.end()) != tail.end();
    return !found && tail.size() == scan.size();
}

std::int32_t Pixels(int count)
{
    return std::max(count, 0);
}

// Null when there are too many bytes. Throws what the library throws.
std::unique_ptr<Exiv2::Image> OpenImage(std::span<const std::uint8_t> bytes)
{
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<long>::max()))
        return nullptr;
    // What it gives is of another type in each version of the library.
    std::unique_ptr<Exiv2::Image> image(
        Exiv2::ImageFactory::open(bytes.data(), static_cast<long>(bytes.size())).release());
    image->readMetadata();
    return image;
}

// Makers fill the field up with blanks or zeros.
std::string Trimmed(std::string text)
{
    constexpr std::string_view kBlank(" \t\r\n\0", 5);
    text.erase(text.find_last_not_of(kBlank) + 1);
    text.erase(0, std::min(text.find_first_not_of(kBlank), text.size()));
    return text;
}

// "NIKON CORPORATION" makes the "NIKON D40", which need not be said twice.
std::string CameraName(const std::string& maker, const std::string& model)
{
    const auto isSame = [](char a, char b)
    {
        return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
    };
    const std::string word = maker.substr(0, maker.find(' '));
    const bool isNamed = model.size() >= word.size() && std::equal(word.begin(), word.end(), model.begin(), isSame);
    return maker.empty() || (isNamed && !model.empty()) ? model : Trimmed(maker + ' ' + model);
}

void ReadMetadata(std::span<const std::uint8_t> bytes, PictureFacts& facts)
{
    const auto image = OpenImage(bytes);
    if (image == nullptr)
        return;
    facts.width = Pixels(image->pixelWidth());
    facts.height = Pixels(image->pixelHeight());
    facts.taken = TakenOf(image->exifData());
    facts.rating = RatingOf(image->exifData(), image->xmpData());
}
} // namespace

PictureFacts ReadPictureFacts(MediaKind kind, std::span<const std::uint8_t> bytes)
{
    PictureFacts facts;
    try
    {
        ReadMetadata(bytes, facts);
        if (kind == MediaKind::Jpeg && IsCutShort(bytes))
            facts.problem = "the picture is cut short";
        else if (facts.width == 0 || facts.height == 0)
            facts.problem = "the picture has no size";
    }
    catch (const Exiv2::Error& error)
    {
        // Not a word on the picture: the library may know less of its format than we do.
        const bool unknown = error.code() == Exiv2::kerMemoryContainsUnknownImageType;
        facts.problem = unknown ? "its metadata cannot be read" : std::string("broken picture: ") + error.what();
    }
    catch (const std::exception& error)
    {
        facts.problem = std::string("broken picture: ") + error.what();
    }
    return facts;
}

std::string ReadCamera(std::span<const std::uint8_t> bytes)
{
    try
    {
        const auto image = OpenImage(bytes);
        if (image == nullptr)
            return {};
        return CameraName(Trimmed(ExifText(image->exifData(), "Exif.Image.Make")),
                          Trimmed(ExifText(image->exifData(), "Exif.Image.Model")));
    }
    catch (const std::exception&) // what is broken in it is no camera
    {
        return {};
    }
}

void PreparePictureReading()
{
    static std::once_flag once;
    std::call_once(once,
                   []
                   {
                       static std::recursive_mutex mutex;
                       Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
                       Exiv2::XmpParser::initialize(&LockXmp, &mutex);
                       Exiv2::enableBMFF(true);
                   });
}
} // namespace HynHost
