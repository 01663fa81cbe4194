#include <host/window/EmptyState.h>

#include <utility>

#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QVBoxLayout>

#include <host/window/Style.h>
#include <host/window/Symbols.h>

namespace HynHost
{
namespace
{
constexpr int kDrawingWidth = 224;
constexpr int kDrawingHeight = 168;
constexpr int kSentenceWidth = 440;

// A photograph, drawn around the origin.
void DrawPhotograph(QPainter& painter, double turn, QPointF at, const QColor& sky, bool scenery)
{
    const Colours& colours = TheColours();
    painter.save();
    painter.translate(at);
    painter.rotate(turn);
    const QRectF frame(-60, -46, 120, 92);
    painter.setPen(QPen(colours.line, 1));
    painter.setBrush(colours.surface);
    painter.drawRoundedRect(frame, 6, 6);
    QPainterPath inside;
    inside.addRoundedRect(frame.adjusted(7, 7, -7, -7), 3, 3);
    painter.setPen(Qt::NoPen);
    painter.fillPath(inside, sky);
    if (scenery)
    {
        painter.setClipPath(inside);
        painter.setBrush(colours.accent);
        painter.drawEllipse(QPointF(26, -16), 9, 9);
        QColor hill = colours.accent;
        hill.setAlpha(110);
        painter.setBrush(hill);
        painter.drawPolygon(QPolygonF({{-62, 44}, {-16, -14}, {24, 44}}));
        hill.setAlpha(170);
        painter.setBrush(hill);
        painter.drawPolygon(QPolygonF({{-14, 46}, {22, 4}, {62, 46}}));
    }
    painter.restore();
}

void DrawBigSymbol(QPainter& painter, Symbol symbol, const QColor& colour)
{
    QColor disc = colour;
    disc.setAlpha(28);
    painter.setPen(Qt::NoPen);
    painter.setBrush(disc);
    painter.drawEllipse(QPointF(0, 0), 64, 64);
    DrawSymbol(painter, symbol, QRectF(-30, -30, 60, 60), colour);
}
} // namespace

EmptyState::EmptyState(QWidget* parent)
    : QWidget(parent), m_room(new QWidget(this)), m_title(new QLabel(this)), m_sentence(new QLabel(this)),
      m_button(new QPushButton(this))
{
    m_room->setFixedSize(kDrawingWidth, kDrawingHeight);
    m_title->setFont(SizedFont(1.6, QFont::DemiBold));
    m_title->setAlignment(Qt::AlignCenter);
    m_sentence->setWordWrap(true);
    m_sentence->setTextFormat(Qt::PlainText);
    m_sentence->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    m_sentence->setFixedWidth(kSentenceWidth);
    m_sentence->setProperty("weak", true);
    m_button->setProperty("primary", true);
    m_button->setObjectName(QStringLiteral("emptyAction"));
    auto* column = new QVBoxLayout(this);
    column->setSpacing(0);
    column->addStretch(2);
    column->addWidget(m_room, 0, Qt::AlignHCenter);
    column->addSpacing(3 * kGrid);
    column->addWidget(m_title, 0, Qt::AlignHCenter);
    column->addSpacing(kGrid);
    column->addWidget(m_sentence, 0, Qt::AlignHCenter);
    column->addSpacing(3 * kGrid);
    column->addWidget(m_button, 0, Qt::AlignHCenter);
    column->addStretch(3);
    QObject::connect(m_button, &QPushButton::clicked, this,
                     [this]
                     {
                         if (m_onButton)
                             m_onButton();
                     });
}

void EmptyState::Set(Drawing drawing, const QString& title, const QString& sentence, const QString& button,
                     std::function<void()> onButton)
{
    m_drawing = drawing;
    m_title->setText(title);
    m_sentence->setText(sentence);
    m_sentence->setFixedHeight(m_sentence->heightForWidth(kSentenceWidth)); // the layout would make it one line
    m_button->setText(button);
    m_onButton = std::move(onButton);
    update();
}

void EmptyState::FocusButton()
{
    m_button->setFocus();
}

void EmptyState::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QRectF(m_room->geometry()).center());
    const Colours& colours = TheColours();
    switch (m_drawing)
    {
    case Drawing::Pictures:
        DrawPhotograph(painter, -11, {-38, 6}, colours.sound, false);
        DrawPhotograph(painter, 9, {40, 10}, colours.film, false);
        DrawPhotograph(painter, -2, {0, -12}, colours.picture, true);
        break;
    case Drawing::Search:
        DrawBigSymbol(painter, Symbol::Search, colours.weak);
        break;
    case Drawing::Trouble:
        DrawBigSymbol(painter, Symbol::Warning, colours.problem);
        break;
    }
}
} // namespace HynHost
