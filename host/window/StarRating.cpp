#include <host/window/StarRating.h>

#include <algorithm>

#include <QMouseEvent>
#include <QPainter>

#include <host/window/Style.h>
#include <host/window/Symbols.h>

namespace HynHost
{
namespace
{
constexpr int kStar = 20;
constexpr int kPitch = 24;
constexpr int kInset = 4; // above and below
constexpr int kMost = 5;
} // namespace

StarRating::StarRating(const QString& name, QWidget* parent) : QAbstractSlider(parent)
{
    setRange(0, kMost);
    setPageStep(1);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setCursor(Qt::PointingHandCursor);
    setAccessibleName(name);
    setToolTip(name);
    QObject::connect(this, &QAbstractSlider::actionTriggered, this, [this] { Choose(sliderPosition()); });
    QObject::connect(this, &QAbstractSlider::valueChanged, this, [this] { update(); });
}

void StarRating::SetStars(int stars)
{
    setValue(std::clamp(stars, 0, kMost));
}

QSize StarRating::sizeHint() const
{
    return {kMost * kPitch, kStar + 2 * kInset};
}

void StarRating::Choose(int stars)
{
    setValue(stars);
    if (onRated)
        onRated(value());
}

int StarRating::StarAt(double x) const
{
    return std::clamp(static_cast<int>(x / kPitch) + 1, 1, kMost);
}

void StarRating::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    const Colours& colours = TheColours();
    const int lit = m_hovered > 0 ? m_hovered : value();
    for (int star = 0; star < kMost; ++star)
    {
        const QRectF square(star * kPitch, kInset, kStar, kStar);
        DrawSymbol(painter, star < lit ? Symbol::FullStar : Symbol::Star, square,
                   star < lit ? colours.accent : colours.weak);
    }
    if (!hasFocus())
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colours.accent, 2));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), kCorner, kCorner);
}

void StarRating::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const int star = StarAt(event->position().x());
    m_hovered = 0;
    Choose(star == value() ? 0 : star);
}

void StarRating::mouseMoveEvent(QMouseEvent* event)
{
    m_hovered = StarAt(event->position().x());
    update();
}

void StarRating::leaveEvent(QEvent* /*event*/)
{
    m_hovered = 0;
    update();
}

void StarRating::keyPressEvent(QKeyEvent* event)
{
    if (event->key() >= Qt::Key_0 && event->key() <= Qt::Key_5 && event->modifiers() == Qt::NoModifier)
        return Choose(event->key() - Qt::Key_0);
    QAbstractSlider::keyPressEvent(event);
}
} // namespace HynHost
