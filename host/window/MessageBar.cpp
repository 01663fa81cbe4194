#include <host/window/MessageBar.h>

#include <chrono>
#include <utility>

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>

#include <host/window/Style.h>
#include <host/window/Symbols.h>

namespace HynHost
{
namespace
{
constexpr std::chrono::seconds kStays{12};
constexpr int kSymbol = 20;
} // namespace

MessageBar::MessageBar(const Texts& texts, QWidget* parent)
    : QWidget(parent), m_frame(new QFrame(this)), m_symbol(new QLabel(m_frame)), m_text(new QLabel(m_frame)),
      m_action(new QPushButton(m_frame)), m_close(new QToolButton(m_frame))
{
    setObjectName(QStringLiteral("messages"));
    m_frame->setObjectName(QStringLiteral("messageBar"));
    auto* room = new QVBoxLayout(this);
    room->setContentsMargins(3 * kGrid, 2 * kGrid, 3 * kGrid, kGrid);
    room->addWidget(m_frame);
    auto* row = new QHBoxLayout(m_frame);
    row->setContentsMargins(2 * kGrid, kGrid, kGrid, kGrid);
    row->setSpacing(kGrid);
    m_text->setWordWrap(true);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_action->setObjectName(QStringLiteral("messageAction"));
    m_close->setProperty("flat", true);
    m_close->setAccessibleName(texts("close"));
    m_close->setToolTip(texts("close"));
    row->addWidget(m_symbol);
    row->addWidget(m_text, 1);
    row->addWidget(m_action);
    row->addWidget(m_close);
    m_goes.setSingleShot(true);
    m_goes.setInterval(kStays);
    QObject::connect(&m_goes, &QTimer::timeout, this, [this] { hide(); });
    QObject::connect(m_close, &QToolButton::clicked, this, [this] { hide(); });
    QObject::connect(m_action, &QPushButton::clicked, this,
                     [this]
                     {
                         hide();
                         if (m_onAction)
                             m_onAction();
                     });
    hide();
}

void MessageBar::Tell(const QString& text, const QString& action, std::function<void()> onAction)
{
    m_onAction = std::move(onAction);
    m_action->setText(action);
    m_action->setVisible(!action.isEmpty());
    Say(text, false);
    m_goes.start();
}

void MessageBar::TellProblem(const QString& text)
{
    m_action->hide();
    m_goes.stop();
    Say(text, true);
}

void MessageBar::Say(const QString& text, bool problem)
{
    m_frame->setProperty("problem", problem);
    m_frame->style()->unpolish(m_frame); // the sheet looks at the property again
    m_frame->style()->polish(m_frame);
    m_symbol->setPixmap(
        SymbolIcon(problem ? Symbol::Warning : Symbol::Information, problem ? &Colours::problem : &Colours::accent)
            .pixmap(QSize(kSymbol, kSymbol), devicePixelRatioF()));
    m_close->setIcon(SymbolIcon(Symbol::Close, &Colours::weak));
    m_text->setText(text);
    setAccessibleName(text);
    show();
}

QString MessageBar::Text() const
{
    return isHidden() ? QString() : m_text->text();
}
} // namespace HynHost
