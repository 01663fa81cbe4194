#include <host/window/YearBar.h>

#include <algorithm>
#include <cmath>

#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <host/window/Style.h>

namespace HynHost
{
namespace
{
constexpr int kWidth = 80;
constexpr int kMargin = 16;       // above and below
constexpr double kMostPitch = 14; // a month's height where there are few
constexpr int kLongest = 36;      // bar
constexpr int kYears = 34;        // the years' column
} // namespace

YearBar::YearBar(const Texts& texts, QWidget* parent) : QAbstractSlider(parent), m_texts(texts)
{
    setObjectName(QStringLiteral("yearBar"));
    setOrientation(Qt::Vertical);
    setInvertedAppearance(true); // the latest month, 0, is at the top
    setInvertedControls(true);
    setPageStep(12);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    setCursor(Qt::PointingHandCursor);
    setAccessibleName(texts("years"));
    QObject::connect(this, &QAbstractSlider::actionTriggered, this, [this] { GoTo(sliderPosition()); });
}

QSize YearBar::sizeHint() const
{
    return {kWidth, 200};
}

void YearBar::SetIndex(std::shared_ptr<const MediaIndex> index)
{
    m_index = std::move(index);
    m_most = 1;
    for (const MediaMonth& month : m_index->Months())
        m_most = std::max(m_most, month.count);
    m_hovered = -1;
    setRange(0, std::max(0, Count() - 1));
    update();
}

void YearBar::SetMonth(std::uint32_t month)
{
    const auto& months = m_index->Months();
    const auto at = std::ranges::lower_bound(months, month, std::ranges::greater(), &MediaMonth::month);
    if (at == months.end())
        return;
    setValue(static_cast<int>(at - months.begin()));
    setAccessibleDescription(m_texts.Month(at->month));
    update();
}

void YearBar::GoTo(int month)
{
    if (month < 0 || month >= Count())
        return;
    setValue(month);
    if (onMonth)
        onMonth(m_index->Months()[static_cast<std::size_t>(month)].month);
    update();
}

double YearBar::Pitch() const
{
    return std::min(kMostPitch, (height() - 2.0 * kMargin) / std::max(1, Count()));
}

double YearBar::TopOf(int month) const
{
    return kMargin + month * Pitch();
}

int YearBar::MonthAt(double y) const
{
    return std::clamp(static_cast<int>(std::floor((y - kMargin) / Pitch())), 0, std::max(0, Count() - 1));
}

QPoint YearBar::PlaceOf(int month) const
{
    return {kWidth - kMargin, static_cast<int>(TopOf(month) + Pitch() / 2)};
}

void YearBar::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (Count() == 0)
        return;
    PaintBars(painter);
    PaintYears(painter);
    if (!hasFocus())
        return;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(TheColours().accent, 2));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, kGrid, -1, -kGrid), kCorner, kCorner);
}

void YearBar::PaintBars(QPainter& painter) const
{
    const Colours& colours = TheColours();
    const double thick = std::max(1.0, std::min(Pitch() - 2, 8.0));
    painter.setPen(Qt::NoPen);
    for (int month = 0; month < Count(); ++month)
    {
        // By the root, so that small months are seen beside large ones.
        const double share = std::sqrt(static_cast<double>(m_index->Months()[static_cast<std::size_t>(month)].count) /
                                       static_cast<double>(m_most));
        const double length = std::max(3.0, share * kLongest);
        const bool isHere = month == value();
        QColor colour = colours.weak;
        colour.setAlpha(month == m_hovered ? 255 : 110);
        painter.setBrush(isHere ? colours.accent : colour);
        const double height = isHere ? std::max(thick, 3.0) : thick;
        const QRectF bar(kWidth - kGrid - length, TopOf(month) + (Pitch() - height) / 2, length, height);
        painter.drawRoundedRect(bar, height / 2, height / 2);
    }
}

void YearBar::PaintYears(QPainter& painter) const
{
    const Colours& colours = TheColours();
    painter.setFont(SizedFont(0.85));
    const int line = painter.fontMetrics().height();
    const std::uint32_t here = m_index->Months()[static_cast<std::size_t>(value())].month / 100;
    double free = 0; // where the next year may be written
    std::uint32_t last = 0;
    for (int month = 0; month < Count(); ++month)
    {
        const std::uint32_t year = m_index->Months()[static_cast<std::size_t>(month)].month / 100;
        const double top = TopOf(month) + (Pitch() - line) / 2;
        if (year == last || top < free)
            continue;
        last = year;
        free = top + line + 4;
        painter.setPen(year == here ? colours.text : colours.weak);
        painter.drawText(QRectF(0, top, kYears, line), Qt::AlignRight | Qt::AlignVCenter, QString::number(year));
    }
}

void YearBar::Say(int month, QPoint where)
{
    const MediaMonth& said = m_index->Months()[static_cast<std::size_t>(month)];
    QToolTip::showText(
        where,
        m_texts("month.count", {{QLatin1String("month"), m_texts.Month(said.month)},
                                {QLatin1String("count"), m_texts.Count("count", static_cast<long long>(said.count))}}),
        this);
}

void YearBar::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && Count() > 0)
        GoTo(MonthAt(event->position().y()));
}

void YearBar::mouseMoveEvent(QMouseEvent* event)
{
    if (Count() == 0)
        return;
    m_hovered = MonthAt(event->position().y());
    Say(m_hovered, event->globalPosition().toPoint());
    if ((event->buttons() & Qt::LeftButton) != 0)
        GoTo(m_hovered);
    update();
}

void YearBar::leaveEvent(QEvent* /*event*/)
{
    m_hovered = -1;
    update();
}

void YearBar::focusInEvent(QFocusEvent* event)
{
    QAbstractSlider::focusInEvent(event);
    update();
}

void YearBar::focusOutEvent(QFocusEvent* event)
{
    QAbstractSlider::focusOutEvent(event);
    update();
}
} // namespace HynHost
