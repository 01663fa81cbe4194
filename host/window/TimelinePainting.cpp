// How the timeline draws itself.

#include <algorithm>

#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>

#include <host/window/Style.h>
#include <host/window/Symbols.h>
#include <host/window/TimelineView.h>

namespace HynHost
{
namespace
{
constexpr int kRing = 3;
constexpr int kBadge = 22;

const QColor kOverPicture(0, 0, 0, 130);

const QColor& ToneOf(MediaKind kind)
{
    const Colours& colours = TheColours();
    return IsPicture(kind) ? colours.picture : IsVideo(kind) ? colours.film : colours.sound;
}

void PaintStars(QPainter& painter, int stars, const QRect& cell)
{
    const int side = std::clamp(cell.width() / 10, 9, 14);
    const QRect back(cell.left() + 6, cell.bottom() - side - 13, stars * side + 10, side + 8);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kOverPicture);
    painter.drawRoundedRect(back, back.height() / 2.0, back.height() / 2.0);
    for (int star = 0; star < stars; ++star)
        DrawSymbol(painter, Symbol::FullStar,
                   QRectF(back.left() + 5 + star * side, back.top() + 4, side, side).adjusted(1, 1, -1, -1), Qt::white);
}

void PaintRing(QPainter& painter, const QRect& cell, const QColor& colour, int width)
{
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour, width));
    const double inset = width / 2.0;
    painter.drawRoundedRect(QRectF(cell).adjusted(inset, inset, -inset, -inset), kCorner - inset / 2,
                            kCorner - inset / 2);
}
} // namespace

void TimelineView::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(event->rect(), TheColours().ground);
    if (!Index().Items().empty())
    {
        const int top = verticalOffset();
        const auto [first, last] = m_layout.ItemsBetween(top + event->rect().top(), top + event->rect().bottom() + 1);
        for (std::size_t place = first; place < last; ++place)
            PaintCell(painter, place);
        const std::size_t firstDay = m_layout.DayAt(top);
        for (std::size_t day = firstDay + 1; day < Index().Days().size() && m_layout.TopOf(day) < top + height(); ++day)
            PaintHeading(painter, day, m_layout.TopOf(day) - top, false);
        // The heading of the topmost day stays in sight until the next one pushes it out.
        PaintHeading(painter, firstDay, std::min(0, m_layout.BottomOf(firstDay) - top - TimelineLayout::kHeading),
                     true);
    }
    painter.end();
    if (onPainted)
        onPainted();
}

void TimelineView::PaintHeading(QPainter& painter, std::size_t day, int y, bool overCells) const
{
    const MediaDay& shown = Index().Days()[day];
    if (overCells)
        painter.fillRect(QRect(0, y, viewport()->width(), HeadingBottom()), TheColours().ground);
    const int right =
        TimelineLayout::kMargin + m_layout.Columns() * (m_layout.Side() + TimelineLayout::kGap) - TimelineLayout::kGap;
    const QRect line(TimelineLayout::kMargin, y + kGrid, right - TimelineLayout::kMargin, HeadingBottom() - kGrid);
    painter.setFont(SizedFont(1.0));
    painter.setPen(TheColours().weak);
    const QString count = m_texts.Count("count", static_cast<long long>(shown.count));
    painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter, count);
    painter.setFont(SizedFont(1.2, QFont::DemiBold));
    painter.setPen(TheColours().text);
    const QRect room = line.adjusted(0, 0, -painter.fontMetrics().horizontalAdvance(count), 0);
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(m_texts.Day(shown.day), Qt::ElideRight, room.width()));
}

void TimelineView::PaintCell(QPainter& painter, std::size_t place) const
{
    const MediaItem& item = Index().Items()[place];
    const QRect cell = m_layout.CellOf(place).translated(0, -verticalOffset());
    const QPixmap* picture = m_pictures.Find(item.id);
    if (picture != nullptr)
        painter.drawPixmap(cell, *picture);
    else
    {
        painter.setPen(Qt::NoPen);
        painter.setBrush(ToneOf(item.kind));
        painter.drawRoundedRect(cell, kCorner, kCorner);
    }
    PaintBadges(painter, item, cell, picture != nullptr);
    const QModelIndex index = m_model.index(static_cast<int>(place));
    const bool isCurrent = m_keys && index == currentIndex() && hasFocus();
    if (selectionModel()->isSelected(index))
    {
        PaintRing(painter, cell, TheColours().accent, isCurrent ? kRing + 1 : kRing);
        PaintRing(painter, cell.adjusted(kRing, kRing, -kRing, -kRing), TheColours().ground, 1);
    }
    else if (isCurrent)
        PaintRing(painter, cell, TheColours().accent, 2);
    else if (place == m_hovered)
        PaintRing(painter, cell, TheColours().dark ? QColor(255, 255, 255, 70) : QColor(0, 0, 0, 60), 2);
}

void TimelineView::PaintBadges(QPainter& painter, const MediaItem& item, const QRect& cell, bool hasPicture) const
{
    if (!hasPicture)
    {
        const int side = std::min(40, cell.width() / 3);
        QColor weak = TheColours().weak;
        weak.setAlpha(IsPicture(item.kind) ? 70 : 150);
        DrawSymbol(painter, SymbolOf(item.kind),
                   QRectF(cell.center().x() - side / 2.0, cell.center().y() - side / 2.0, side, side), weak);
    }
    QRect badge(cell.right() - kBadge - 5, cell.top() + 6, kBadge, kBadge);
    const auto paint = [&](Symbol symbol)
    {
        painter.setPen(Qt::NoPen);
        painter.setBrush(kOverPicture);
        painter.drawEllipse(badge);
        DrawSymbol(painter, symbol, QRectF(badge).adjusted(4, 4, -4, -4), Qt::white);
        badge.translate(-kBadge - 4, 0);
    };
    if (!IsPicture(item.kind) && hasPicture)
        paint(SymbolOf(item.kind));
    if (item.broken)
        paint(Symbol::Warning);
    if (item.stars > 0)
        PaintStars(painter, item.stars, cell);
}
} // namespace HynHost
