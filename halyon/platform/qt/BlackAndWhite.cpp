// Pictures in black and white.

#include <array>
#include <bit>
#include <cstring>
#include <new>

#include <QImage>

#include "Conversions.h"
#include "Pictures.h"

namespace Halyon
{
namespace
{
// Luminance in 1/32 of a level: 0 to 255 * 32.
constexpr std::uint32_t kWhite = 255 * 32;
constexpr std::uint32_t kHalf = 128 * 32;

constexpr std::uint32_t Luminance(QRgb pixel)
{
    return (pixel >> 16 & 0xFFu) * 11 + (pixel >> 8 & 0xFFu) * 16 + (pixel & 0xFFu) * 5;
}

struct Opaque
{
    using Pixel = QRgb;
    std::uint8_t operator()(QRgb pixel) const { return Luminance(pixel) < kHalf; }
};

struct Transparent
{
    using Pixel = QRgb;
    std::uint8_t operator()(QRgb pixel) const
    {
        const std::uint32_t uAlpha = pixel >> 24;
        return Luminance(pixel) * uAlpha + kWhite * (255 - uAlpha) < kHalf * 255;
    }
};

struct Gray
{
    using Pixel = std::uint8_t;
    std::uint8_t operator()(std::uint8_t uLevel) const { return uLevel < 128; }
};

// Eight bytes of 0 or 1 as one byte, the first as its lowest bit. Each one of the factor brings one flag to the
// top byte, and no two meet below it.
std::uint64_t PackEight(const std::uint8_t* flags)
{
    constexpr bool bLittle = std::endian::native == std::endian::little;
    std::uint64_t uFlags = 0;
    std::memcpy(&uFlags, flags, sizeof(uFlags));
    return uFlags * (bLittle ? 0x0102040810204080u : 0x8040201008040201u) >> 56;
}

template <class IsBlack>
void PackRow(const typename IsBlack::Pixel* pixels, int nWidth, std::uint64_t* words)
{
    const IsBlack isBlack;
    std::array<std::uint8_t, 64> flags = {};
    for (int x = 0; x < nWidth; x += 64, pixels += 64, ++words)
    {
        // Two steps, so that the compiler can take many pixels at a time in the first.
        if (nWidth - x >= 64)
        {
            for (std::size_t i = 0; i < 64; ++i)
                flags[i] = isBlack(pixels[i]);
        }
        else
        {
            flags.fill(0);
            for (std::size_t i = 0; i < static_cast<std::size_t>(nWidth - x); ++i)
                flags[i] = isBlack(pixels[i]);
        }
        std::uint64_t uWord = 0;
        for (std::size_t i = 0; i < 8; ++i)
            uWord |= PackEight(&flags[i * 8]) << (i * 8);
        *words = uWord;
    }
}

template <class IsBlack>
void Pack(const QImage& image, BitMap& map)
{
    for (int y = 0; y < image.height(); ++y)
        PackRow<IsBlack>(reinterpret_cast<const typename IsBlack::Pixel*>(image.constScanLine(y)), image.width(),
                         &map.spWords[static_cast<std::size_t>(y) * map.uRowWords]);
}

void PackAny(QImage& image, BitMap& map)
{
    switch (image.format())
    {
    case QImage::Format_RGB32:
        return Pack<Opaque>(image, map);
    case QImage::Format_ARGB32:
        return Pack<Transparent>(image, map);
    case QImage::Format_Grayscale8:
        return Pack<Gray>(image, map);
    default:
        break;
    }
    image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    if (image.format() == QImage::Format_ARGB32)
        Pack<Transparent>(image, map);
    else if (!image.isNull())
        Pack<Opaque>(image, map);
}
} // namespace

OSStatus GraphicsImportDraw(const FSRef* pRef, BitMap* pMap) noexcept
try
{
    if (pMap == nullptr)
        return paramErr;
    PictureFile file;
    if (const OSStatus status = file.Open(pRef); status != noErr)
        return status;
    QImage image = file.reader.read();
    constexpr int nLargest = std::numeric_limits<std::int16_t>::max();
    if (image.isNull() || image.width() > nLargest || image.height() > nLargest)
        return paramErr;
    BitMap map;
    map.bounds = FromQRect(image.rect());
    map.uRowWords = (static_cast<std::size_t>(image.width()) + 63) / 64;
    map.spWords.reset(new (std::nothrow) std::uint64_t[map.uRowWords * static_cast<std::size_t>(image.height())]);
    if (map.spWords == nullptr)
        return memFullErr;
    PackAny(image, map);
    if (image.isNull())
        return memFullErr;
    *pMap = std::move(map);
    return noErr;
}
catch (const std::bad_alloc&)
{
    return memFullErr;
}
} // namespace Halyon
