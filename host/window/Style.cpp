#include <host/window/Style.h>

#include <utility>

#include <QApplication>
#include <QPalette>
#include <QRegularExpression>
#include <QStyleFactory>

namespace HynHost
{
namespace
{
Colours Light()
{
    return {false,     "#f6f6f4", "#ffffff", "#eaeae6", "#dededa", "#1c1d20", "#686a70",
            "#2f62d8", "#ffffff", "#e4e4e0", "#dfe3ee", "#e9e2ec", "#b3261e"};
}

Colours Dark()
{
    return {true,      "#17181a", "#202124", "#2c2d31", "#34363a", "#ececee", "#9c9ea5",
            "#86aaff", "#0c1838", "#26272b", "#262b36", "#2f2834", "#ff9a90"};
}

Colours g_colours = Light();

// "@name" stands for a colour, "@~name" for a quarter of it.
constexpr const char* kSheet = R"(
QToolTip { background: @text; color: @ground; border: none; padding: 6px 8px; }

#topBar, #filterBar { background: @surface; }
#topBar, #filterBar { border-bottom: 1px solid @line; }
#topBar[bare="true"] { background: @ground; border-color: @ground; }
#importBar { background: @surface; border-top: 1px solid @line; }
#detailPane { background: @surface; border: none; border-left: 1px solid @line; }
#detailPane QScrollArea, #detailBody { background: @surface; border: none; }

QLineEdit { background: @ground; border: 2px solid transparent; border-radius: 6px; padding: 0 4px; min-height: 32px;
            selection-background-color: @accent; selection-color: @onAccent; }
QLineEdit:hover { background: @hover; }
QLineEdit QToolButton { background: transparent; border: none; min-height: 0; padding: 0; }
QLineEdit:focus { border-color: @accent; background: @surface; }

QPushButton, QToolButton { background: @surface; border: 1px solid @line; border-radius: 6px; padding: 6px 14px;
                           min-height: 20px; color: @text; }
QToolButton { padding: 6px 8px; }
QPushButton:hover, QToolButton:hover { background: @hover; }
QPushButton:pressed, QToolButton:pressed { background: @line; }
QPushButton:focus, QToolButton:focus { border: 2px solid @accent; padding: 5px 13px; }
QToolButton:focus { padding: 5px 7px; }
QPushButton:disabled, QToolButton:disabled { color: @weak; }
QPushButton[primary="true"] { background: @accent; border-color: @accent; color: @onAccent; }
QPushButton[primary="true"]:hover { background: @strong; border-color: @strong; }
QPushButton[primary="true"]:focus { border: 2px solid @ring; }
QToolButton[flat="true"] { background: transparent; border-color: transparent; }
QToolButton[flat="true"]:hover { background: @hover; }
QToolButton[flat="true"]:focus { border: 2px solid @accent; }
QToolButton:checked { background: @~accent; border-color: @accent; color: @text; }
QToolButton::menu-indicator { image: none; width: 0; }

QLabel[weak="true"] { color: @weak; }
QLabel[problem="true"] { color: @problem; }

QProgressBar { background: @hover; border: none; border-radius: 2px; max-height: 4px; min-height: 4px; }
QProgressBar::chunk { background: @accent; border-radius: 2px; }

QScrollBar:vertical { background: transparent; width: 12px; margin: 0; }
QScrollBar::handle:vertical { background: @line; border-radius: 3px; min-height: 32px; margin: 2px 3px; }
QScrollBar::handle:vertical:hover { background: @weak; }
QScrollBar::add-line, QScrollBar::sub-line { height: 0; width: 0; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }

QMenu { background: @surface; border: 1px solid @line; padding: 6px; }
QMenu::item { padding: 6px 24px 6px 16px; border-radius: 4px; }
QMenu::item:selected { background: @hover; }
QMenu::item:disabled { color: @weak; }
QMenu::separator { height: 1px; background: @line; margin: 6px 8px; }

#messageBar { background: @surface; border: 1px solid @line; border-radius: 8px; }
#messageBar[problem="true"] { border-color: @problem; }

QCalendarWidget QWidget#qt_calendar_navigationbar { background: @surface; }
QCalendarWidget QToolButton { background: transparent; border-color: transparent; padding: 4px 8px; }
QCalendarWidget QToolButton:hover { background: @hover; }
QCalendarWidget QAbstractItemView { background: @surface; border: none; outline: none;
                                    selection-background-color: @accent; selection-color: @onAccent; }
#dayPopup { background: @surface; border: 1px solid @line; }
)";

QString Quarter(const QColor& colour)
{
    return QStringLiteral("rgba(%1, %2, %3, 25%)").arg(colour.red()).arg(colour.green()).arg(colour.blue());
}

QString Sheet(const Colours& colours)
{
    const std::pair<const char*, QColor> names[] = {
        {"ground", colours.ground},
        {"surface", colours.surface},
        {"hover", colours.hover},
        {"line", colours.line},
        {"text", colours.text},
        {"weak", colours.weak},
        {"accent", colours.accent},
        {"onAccent", colours.onAccent},
        {"problem", colours.problem},
        {"ring", colours.dark ? colours.accent.lighter(130) : colours.accent.darker(190)},
        {"strong", colours.dark ? colours.accent.lighter(110) : colours.accent.darker(112)},
    };
    QString sheet = QString::fromLatin1(kSheet);
    for (const auto& [name, colour] : names)
    {
        const QString plain = QString::fromLatin1(name) + QStringLiteral("(?![A-Za-z])");
        sheet.replace(QRegularExpression(QStringLiteral("@~") + plain), Quarter(colour));
        sheet.replace(QRegularExpression(QStringLiteral("@") + plain), colour.name());
    }
    return sheet;
}

QPalette PaletteOf(const Colours& colours)
{
    QPalette palette;
    palette.setColor(QPalette::Window, colours.ground);
    palette.setColor(QPalette::Base, colours.surface);
    palette.setColor(QPalette::AlternateBase, colours.hover);
    palette.setColor(QPalette::Button, colours.surface);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    {
        palette.setColor(role, colours.text);
        palette.setColor(QPalette::Disabled, role, colours.weak);
    }
    palette.setColor(QPalette::PlaceholderText, colours.weak);
    palette.setColor(QPalette::Highlight, colours.accent);
    palette.setColor(QPalette::HighlightedText, colours.onAccent);
    palette.setColor(QPalette::Link, colours.accent);
    palette.setColor(QPalette::Mid, colours.line);
    palette.setColor(QPalette::Dark, colours.line);
    palette.setColor(QPalette::ToolTipBase, colours.text);
    palette.setColor(QPalette::ToolTipText, colours.ground);
    return palette;
}

// The desktop's own palette is seen only until another one is set.
bool DesktopIsDark()
{
    static const bool s_dark = QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
    return s_dark;
}
} // namespace

void ApplyStyle(QApplication& application, Appearance appearance)
{
    const bool desktopIsDark = DesktopIsDark();
    g_colours =
        appearance == Appearance::Dark || (appearance == Appearance::Desktop && desktopIsDark) ? Dark() : Light();
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(PaletteOf(g_colours));
    application.setStyleSheet(Sheet(g_colours));
}

const Colours& TheColours() noexcept
{
    return g_colours;
}

QFont SizedFont(double factor, QFont::Weight weight)
{
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * factor);
    font.setWeight(weight);
    return font;
}
} // namespace HynHost
