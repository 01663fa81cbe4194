// Icons: pictures in memory, and the bytes that keep them.
//
// The bytes of an icon, numbers with the lowest byte first: the mark "HynIcon1"; the number of pictures (32 bits); for
// each its length (32 bits) and the picture in a lossless picture format; at the end a digest of all that.

#include <algorithm>
#include <array>
#include <atomic>
#include <new>

#include <QBuffer>
#include <QCryptographicHash>
#include <QIcon>
#include <QImageWriter>
#include <QList>
#include <QPixmap>
#include <QtEndian>

#include "Application.h"
#include "Pictures.h"

namespace Halyon
{
struct OpaqueIconRef
{
    std::atomic<std::int32_t> nRefCount{1};
    QList<QImage> pictures; // never empty
};

namespace
{
constexpr char kMark[] = {'H', 'y', 'n', 'I', 'c', 'o', 'n', '1'};
constexpr auto kDigest = QCryptographicHash::Sha256;
constexpr int kLargestSide = 1024;

void AppendNumber(QByteArray& bytes, quint32 uNumber)
{
    uNumber = qToLittleEndian(uNumber);
    bytes.append(reinterpret_cast<const char*>(&uNumber), sizeof(uNumber));
}

// Takes bytes from the front; what is not there is taken as nothing, and then `bDamaged` is set.
class Taker
{
public:
    explicit Taker(const QByteArray& bytes) : m_bytes(bytes) {}

    // Damaged bytes can ask for more than a signed size of a 32-bit machine holds.
    QByteArray Take(quint32 uSize)
    {
        bDamaged = bDamaged || uSize > static_cast<quint64>(m_bytes.size() - m_nTaken);
        if (bDamaged)
            return {};
        const auto nSize = static_cast<qsizetype>(uSize);
        m_nTaken += nSize;
        return m_bytes.mid(m_nTaken - nSize, nSize);
    }

    quint32 TakeNumber()
    {
        const QByteArray bytes = Take(sizeof(quint32));
        return bDamaged ? 0 : qFromLittleEndian<quint32>(bytes.constData());
    }

    bool bDamaged = false;

private:
    const QByteArray& m_bytes;
    qsizetype m_nTaken = 0;
};

bool WritePictures(const QList<QImage>& pictures, IconFamily* pFamily)
{
    QByteArray bytes(kMark, sizeof(kMark));
    AppendNumber(bytes, static_cast<quint32>(pictures.size()));
    for (const QImage& picture : pictures)
    {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        if (!QImageWriter(&buffer, "png").write(picture))
            return false;
        AppendNumber(bytes, static_cast<quint32>(buffer.size()));
        bytes += buffer.data();
    }
    bytes += QCryptographicHash::hash(bytes, kDigest);
    pFamily->assign(bytes.begin(), bytes.end());
    return true;
}

// Empty for damaged bytes.
QList<QImage> ReadPictures(std::span<const std::uint8_t> family)
{
    const auto bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(family.data()), static_cast<qsizetype>(family.size()));
    const QByteArray content =
        bytes.chopped(std::min<qsizetype>(bytes.size(), QCryptographicHash::hashLength(kDigest)));
    Taker taker(content);
    if (taker.Take(sizeof(kMark)) != QByteArray(kMark, sizeof(kMark)) ||
        bytes.last(bytes.size() - content.size()) != QCryptographicHash::hash(content, kDigest))
        return {};
    QList<QImage> pictures;
    for (quint32 uLeft = taker.TakeNumber(); uLeft != 0 && !taker.bDamaged; --uLeft)
    {
        const QImage picture = QImage::fromData(taker.Take(taker.TakeNumber()), "png");
        if (picture.isNull())
            return {};
        pictures.append(picture.convertToFormat(QImage::Format_ARGB32));
    }
    return taker.bDamaged ? QList<QImage>() : pictures;
}

QList<QImage> DrawAtUsualSizes(QImageReader& reader)
{
    QList<QImage> pictures;
    QIODevice* device = reader.device();
    for (const int nSide : {16, 24, 32, 48, 64, 128, 256})
    {
        device->seek(0);
        QImageReader drawing(device);
        drawing.setScaledSize(drawing.size().scaled(nSide, nSide, Qt::KeepAspectRatio));
        pictures.append(drawing.read());
    }
    return pictures;
}

QList<QImage> ReadSizes(QImageReader& reader)
{
    if (IsDrawing(reader))
        return DrawAtUsualSizes(reader);
    QList<QImage> pictures = {reader.read()};
    // The further pictures of an animation are not sizes of it.
    while (!reader.supportsAnimation() && pictures.size() < reader.imageCount())
    {
        if (!reader.jumpToImage(static_cast<int>(pictures.size())))
            break;
        pictures.append(reader.read());
    }
    return pictures;
}

bool IsIconSized(const QImage& picture)
{
    return !picture.isNull() && picture.width() <= kLargestSide && picture.height() <= kLargestSide;
}

IconRef MakeIcon(QList<QImage>&& pictures)
{
    IconRef icon = new (std::nothrow) OpaqueIconRef;
    if (icon != nullptr)
        icon->pictures = std::move(pictures);
    return icon;
}
} // namespace

OSStatus IconRefToIconFamily(IconRef icon, std::uint32_t uSelector, IconFamily* pFamily) noexcept
try
{
    if (icon == nullptr || pFamily == nullptr || uSelector != kSelectorAllAvailableData)
        return paramErr;
    return WritePictures(icon->pictures, pFamily) ? noErr : memFullErr;
}
catch (const std::bad_alloc&)
{
    return memFullErr;
}

OSStatus RegisterIconRefFromIconFamily(OSType /*creator*/, OSType /*type*/, std::span<const std::uint8_t> family,
                                       IconRef* pIcon) noexcept
try
{
    if (pIcon == nullptr)
        return paramErr;
    *pIcon = nullptr;
    QList<QImage> pictures = ReadPictures(family);
    if (pictures.isEmpty())
        return paramErr;
    *pIcon = MakeIcon(std::move(pictures));
    return *pIcon != nullptr ? noErr : memFullErr;
}
catch (const std::bad_alloc&)
{
    return memFullErr;
}

OSStatus ReadIconFromFSRef(const FSRef* pRef, IconFamily* pFamily) noexcept
try
{
    if (pFamily == nullptr)
        return paramErr;
    PictureFile file;
    if (const OSStatus status = file.Open(pRef); status != noErr)
        return status;
    // Asked before anything is read, so that a photograph costs no more than its header.
    if (!IsDrawing(file.reader) &&
        (file.reader.size().width() > kLargestSide || file.reader.size().height() > kLargestSide))
        return paramErr;
    QList<QImage> pictures = ReadSizes(file.reader);
    if (!std::ranges::all_of(pictures, IsIconSized))
        return paramErr;
    for (QImage& picture : pictures)
        picture.convertTo(QImage::Format_ARGB32);
    return WritePictures(pictures, pFamily) ? noErr : memFullErr;
}
catch (const std::bad_alloc&)
{
    return memFullErr;
}

OSStatus ReleaseIconRef(IconRef icon) noexcept
{
    if (icon == nullptr)
        return paramErr;
    if (icon->nRefCount.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete icon;
    return noErr;
}

IconRef IconRefFromQIcon(const QIcon& icon) noexcept
try
{
    if (!HasScreen())
        return nullptr;
    QList<QImage> pictures;
    for (const QSize& size : icon.availableSizes())
        pictures.append(icon.pixmap(size, 1.0).toImage().convertToFormat(QImage::Format_ARGB32));
    return pictures.isEmpty() ? nullptr : MakeIcon(std::move(pictures));
}
catch (const std::bad_alloc&)
{
    return nullptr;
}

QIcon QIconFromIconRef(IconRef icon)
{
    QIcon result;
    if (icon == nullptr || !HasScreen())
        return result;
    for (const QImage& picture : icon->pictures)
        result.addPixmap(QPixmap::fromImage(picture));
    return result;
}
} // namespace Halyon
