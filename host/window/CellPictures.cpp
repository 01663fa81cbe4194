#include <host/window/CellPictures.h>

#include <algorithm>
#include <memory>
#include <utility>

#include <QPainter>

#include <host/window/Style.h>

namespace HynHost
{
namespace
{
// The middle of the picture, as large as the cell.
QImage Square(const QImage& image, int pixels)
{
    const int side = std::min(image.width(), image.height());
    return image.copy((image.width() - side) / 2, (image.height() - side) / 2, side, side)
        .scaled(pixels, pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}
} // namespace

QImage DrawCell(const QImage& thumbnail, int side, qreal pixelRatio)
{
    const int pixels = qRound(side * pixelRatio);
    if (thumbnail.isNull() || pixels <= 0)
        return {};
    QImage cell(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    cell.fill(Qt::transparent);
    QPainter painter(&cell);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QBrush(Square(thumbnail, pixels)));
    painter.drawRoundedRect(cell.rect(), kCorner * pixelRatio, kCorner * pixelRatio);
    return cell;
}

void CellPictures::Put(long long id, QImage cell, qreal pixelRatio)
{
    if (cell.isNull())
    {
        m_missing.insert(id);
        return;
    }
    const auto bytes = static_cast<int>(cell.sizeInBytes());
    auto pixmap = std::make_unique<QPixmap>(QPixmap::fromImage(std::move(cell)));
    pixmap->setDevicePixelRatio(pixelRatio);
    m_missing.remove(id);
    m_pixmaps.insert(id, pixmap.release(), bytes);
}

bool CellPictures::IsSettled(long long id, int side, qreal pixelRatio) const
{
    if (m_missing.contains(id))
        return true;
    const QPixmap* pixmap = m_pixmaps.object(id);
    return pixmap != nullptr && pixmap->width() == qRound(side * pixelRatio);
}
} // namespace HynHost
