#include <host/window/Thumbnails.h>

#include <algorithm>
#include <limits>

#include <QBuffer>
#include <QByteArray>
#include <QImageReader>
#include <QSize>

#include <host/window/Library.h>

namespace HynHost
{
namespace
{
constexpr int kJpegQuality = 85;

// Without a copy of the bytes.
QByteArray View(const void* bytes, std::size_t size)
{
    return QByteArray::fromRawData(static_cast<const char*>(bytes), static_cast<qsizetype>(size));
}
} // namespace

QImage MakeThumbnail(std::span<const std::uint8_t> bytes)
{
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<qsizetype>::max()))
        return {};
    QByteArray view = View(bytes.data(), bytes.size());
    QBuffer buffer(&view);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    if (const QSize size = reader.size(); std::max(size.width(), size.height()) > kThumbnailSide)
    {
        const QSize scaled = size.scaled(kThumbnailSide, kThumbnailSide, Qt::KeepAspectRatio);
        reader.setScaledSize(scaled.expandedTo(QSize(1, 1)));
    }
    QImage image = reader.read();
    if (std::max(image.width(), image.height()) > kThumbnailSide) // of a format that tells no size
        image = image.scaled(kThumbnailSide, kThumbnailSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return image;
}

std::vector<std::byte> PackThumbnail(const QImage& image)
{
    std::vector<std::byte> packed;
    if (image.isNull())
        return packed;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    const bool seesThrough = image.hasAlphaChannel();
    if (!image.save(&buffer, seesThrough ? "PNG" : "JPG", seesThrough ? -1 : kJpegQuality))
        return packed;
    const auto* data = reinterpret_cast<const std::byte*>(bytes.constData());
    packed.assign(data, data + bytes.size());
    return packed;
}

QImage UnpackThumbnail(std::span<const std::byte> packed)
{
    return QImage::fromData(View(packed.data(), packed.size()));
}
} // namespace HynHost
