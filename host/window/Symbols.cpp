#include <host/window/Symbols.h>

#include <cmath>
#include <numbers>

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>

namespace HynHost
{
namespace
{
// Drawings are made in a square of this side.
constexpr double kSide = 24;
constexpr double kStroke = 1.7;

QPainterPath StarPath()
{
    QPainterPath path;
    for (int corner = 0; corner < 10; ++corner)
    {
        const double radius = corner % 2 == 0 ? 9.5 : 4.2;
        const double angle = std::numbers::pi * (corner / 5.0 - 0.5);
        const QPointF point(12 + radius * std::cos(angle), 12.6 + radius * std::sin(angle));
        corner == 0 ? path.moveTo(point) : path.lineTo(point);
    }
    path.closeSubpath();
    return path;
}

QPainterPath FolderPath()
{
    QPainterPath path(QPointF(3, 18.5));
    path.lineTo(3, 5.5);
    path.lineTo(9.5, 5.5);
    path.lineTo(11.5, 8);
    path.lineTo(21, 8);
    path.lineTo(21, 18.5);
    path.closeSubpath();
    return path;
}

QPainterPath PicturePath()
{
    QPainterPath path;
    path.addRoundedRect(3, 4.5, 18, 15, 2, 2);
    path.addEllipse(QPointF(8.5, 9.5), 1.5, 1.5);
    path.moveTo(4, 18);
    path.lineTo(10, 13);
    path.lineTo(13, 15.5);
    path.lineTo(16, 11.5);
    path.lineTo(20.5, 16.5);
    return path;
}

QPainterPath FilmPath()
{
    QPainterPath path;
    path.addRoundedRect(3, 5, 18, 14, 2, 2);
    path.moveTo(10, 9);
    path.lineTo(15, 12);
    path.lineTo(10, 15);
    path.closeSubpath();
    return path;
}

QPainterPath SoundPath()
{
    QPainterPath path;
    path.addEllipse(QPointF(7, 17.5), 2.8, 2.3);
    path.addEllipse(QPointF(17, 15.5), 2.8, 2.3);
    path.moveTo(9.8, 17.5);
    path.lineTo(9.8, 6.5);
    path.lineTo(19.8, 4.5);
    path.lineTo(19.8, 15.5);
    return path;
}

QPainterPath Lines(std::initializer_list<QLineF> lines)
{
    QPainterPath path;
    for (const QLineF& line : lines)
    {
        path.moveTo(line.p1());
        path.lineTo(line.p2());
    }
    return path;
}

QPainterPath SearchPath()
{
    QPainterPath path = Lines({{15.2, 15.2, 20.5, 20.5}});
    path.addEllipse(QPointF(10.5, 10.5), 6.5, 6.5);
    return path;
}

QPainterPath CalendarPath()
{
    QPainterPath path = Lines({{3.5, 10, 20.5, 10}, {8, 3, 8, 7}, {16, 3, 16, 7}});
    path.addRoundedRect(3.5, 5, 17, 15.5, 2, 2);
    return path;
}

QPainterPath WarningPath()
{
    QPainterPath path = Lines({{12, 9.5, 12, 14}, {12, 16.8, 12, 17}});
    path.addPolygon(QPolygonF({{12, 4}, {21, 20}, {3, 20}, {12, 4}}));
    return path;
}

QPainterPath InformationPath()
{
    QPainterPath path = Lines({{12, 11, 12, 16.5}, {12, 7.6, 12, 7.7}});
    path.addEllipse(QPointF(12, 12), 9, 9);
    return path;
}

QPainterPath TrashPath()
{
    QPainterPath path = Lines({{4, 7, 20, 7}, {9, 7, 9.5, 4}, {9.5, 4, 14.5, 4}, {14.5, 4, 15, 7}});
    path.addPolygon(QPolygonF({{6, 7}, {7, 20.5}, {17, 20.5}, {18, 7}}));
    return path;
}

QPainterPath MorePath()
{
    QPainterPath path;
    for (const double x : {5.5, 12.0, 18.5})
        path.addEllipse(QPointF(x, 12), 0.7, 0.7);
    return path;
}

QPainterPath PathOf(Symbol symbol)
{
    switch (symbol)
    {
    case Symbol::Search:
        return SearchPath();
    case Symbol::Filter:
        return Lines({{4, 7, 20, 7}, {7, 12, 17, 12}, {10, 17, 14, 17}});
    case Symbol::Folder:
        return FolderPath();
    case Symbol::Calendar:
        return CalendarPath();
    case Symbol::Picture:
        return PicturePath();
    case Symbol::Film:
        return FilmPath();
    case Symbol::Sound:
        return SoundPath();
    case Symbol::Star:
    case Symbol::FullStar:
        return StarPath();
    case Symbol::Close:
        return Lines({{6, 6, 18, 18}, {18, 6, 6, 18}});
    case Symbol::More:
        return MorePath();
    case Symbol::Warning:
        return WarningPath();
    case Symbol::Information:
        return InformationPath();
    case Symbol::Trash:
        return TrashPath();
    case Symbol::Back:
        return Lines({{14.5, 6, 8.5, 12}, {8.5, 12, 14.5, 18}});
    case Symbol::Forth:
        return Lines({{9.5, 6, 15.5, 12}, {15.5, 12, 9.5, 18}});
    }
    return {};
}

// Draws at the size that is asked for, so that no screen shows an enlarged picture.
class SymbolEngine : public QIconEngine
{
public:
    SymbolEngine(Symbol symbol, QColor Colours::*colour) : m_symbol(symbol), m_colour(colour) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State /*state*/) override
    {
        QColor colour = TheColours().*m_colour;
        if (mode == QIcon::Disabled)
            colour.setAlphaF(0.4F);
        DrawSymbol(*painter, m_symbol, rect, colour);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, pixmap.rect(), mode, state);
        return pixmap;
    }

    [[nodiscard]] QIconEngine* clone() const override { return new SymbolEngine(*this); }

private:
    Symbol m_symbol;
    QColor Colours::*m_colour;
};
} // namespace

Symbol SymbolOf(MediaKind kind) noexcept
{
    return IsPicture(kind) ? Symbol::Picture : IsVideo(kind) ? Symbol::Film : Symbol::Sound;
}

void DrawSymbol(QPainter& painter, Symbol symbol, const QRectF& square, const QColor& colour)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(square.topLeft());
    painter.scale(square.width() / kSide, square.height() / kSide);
    painter.setPen(QPen(colour, kStroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(symbol == Symbol::FullStar ? QBrush(colour) : QBrush());
    painter.drawPath(PathOf(symbol));
    painter.restore();
}

QIcon SymbolIcon(Symbol symbol, QColor Colours::*colour)
{
    return QIcon(new SymbolEngine(symbol, colour));
}
} // namespace HynHost
