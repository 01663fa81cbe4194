#include <host/window/DayButton.h>

#include <QCalendarWidget>
#include <QFrame>
#include <QPushButton>
#include <QTextCharFormat>
#include <QVBoxLayout>

#include <host/window/Style.h>
#include <host/window/Symbols.h>

namespace HynHost
{
namespace
{
std::uint32_t Packed(const QDate& date)
{
    return static_cast<std::uint32_t>(date.year() * 10000 + date.month() * 100 + date.day());
}

QDate Unpacked(std::uint32_t day)
{
    return {static_cast<int>(day / 10000), static_cast<int>(day / 100 % 100), static_cast<int>(day % 100)};
}

// A calendar as the rest of the window looks.
QCalendarWidget* MakeCalendar(const QLocale& locale, QWidget* parent)
{
    const Colours& colours = TheColours();
    auto* calendar = new QCalendarWidget(parent);
    calendar->setLocale(locale);
    calendar->setFirstDayOfWeek(locale.firstDayOfWeek());
    calendar->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
    calendar->setMinimumSize(288, 256);
    QTextCharFormat weak;
    weak.setForeground(colours.weak);
    weak.setBackground(colours.surface);
    calendar->setHeaderTextFormat(weak);
    for (const Qt::DayOfWeek day : {Qt::Saturday, Qt::Sunday})
        calendar->setWeekdayTextFormat(day, weak);
    for (const auto& [name, symbol] :
         {std::pair("qt_calendar_prevmonth", Symbol::Back), std::pair("qt_calendar_nextmonth", Symbol::Forth)})
    {
        if (auto* button = calendar->findChild<QToolButton*>(QString::fromLatin1(name)))
            button->setIcon(SymbolIcon(symbol, &Colours::text));
    }
    return calendar;
}
} // namespace

DayButton::DayButton(const Texts& texts, const QString& name, QWidget* parent)
    : QToolButton(parent), m_texts(texts), m_name(name)
{
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    setIcon(SymbolIcon(Symbol::Calendar, &Colours::weak));
    SetDay(0);
    QObject::connect(this, &QToolButton::clicked, this, [this] { ShowCalendar(); });
}

void DayButton::SetDay(std::uint32_t day)
{
    m_day = day;
    const QString shown = m_texts.Locale().toString(Unpacked(day), QLocale::ShortFormat);
    setText(day == 0 ? m_name : m_name + QStringLiteral(" ") + shown);
    setAccessibleName(text());
}

void DayButton::ShowCalendar()
{
    auto* popup = new QFrame(this, Qt::Popup);
    popup->setAttribute(Qt::WA_DeleteOnClose);
    popup->setObjectName(QStringLiteral("dayPopup"));
    QCalendarWidget* calendar = MakeCalendar(m_texts.Locale(), popup);
    if (m_day != 0)
        calendar->setSelectedDate(Unpacked(m_day));
    auto* any = new QPushButton(m_texts("search.anyDay"), popup);
    auto* column = new QVBoxLayout(popup);
    column->setContentsMargins(kGrid, kGrid, kGrid, kGrid);
    column->addWidget(calendar);
    column->addWidget(any);

    const auto choose = [this, popup](std::uint32_t day)
    {
        SetDay(day);
        popup->close();
        if (onDay)
            onDay();
    };
    QObject::connect(calendar, &QCalendarWidget::clicked, this, [choose](const QDate& date) { choose(Packed(date)); });
    QObject::connect(calendar, &QCalendarWidget::activated, this,
                     [choose](const QDate& date) { choose(Packed(date)); });
    QObject::connect(any, &QPushButton::clicked, this, [choose] { choose(0); });
    popup->move(mapToGlobal(QPoint(0, height() + 4)));
    popup->show();
    calendar->setFocus();
}
} // namespace HynHost
