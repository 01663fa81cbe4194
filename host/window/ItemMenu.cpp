#include <host/window/ItemMenu.h>

#include <array>

#include <halyon/tools/MacTovMenu.h>
#include <host/window/WideText.h>

using Halyon::MacTovMenu;

namespace HynHost
{
namespace
{
// The menus' identifiers.
enum : short
{
    kItems = 1,
    kApplications,
    kStars,
    kWindow,
    kAppearance,
};

constexpr int kAtEnd = 0xFFFF;
constexpr std::size_t kMostApplications = 12;
constexpr int kMostStars = 5;

// The text behind a tab stands at the right, where a menu tells the key.
void Append(MacTovMenu& menu, const QString& text, const char* key = nullptr)
{
    const QString shown = key == nullptr ? text : text + QLatin1Char('\t') + QString::fromUtf8(key);
    menu.CreateNewMenuItem(kAtEnd, ToWide(shown), 0, 0);
}

void AppendSeparator(MacTovMenu& menu)
{
    menu.CreateNewMenuItem(kAtEnd, u"-", 0, 0);
}

struct Chosen
{
    short menu = 0;
    std::uint16_t item = 0;
};

Chosen Ask(MacTovMenu& menu, QPoint where)
{
    Chosen chosen;
    menu.PopupMenu({where.x(), where.y()}, chosen.menu, chosen.item);
    return chosen;
}

void FillApplications(MacTovMenu& menu, const Texts& texts, const std::vector<Application>& applications)
{
    menu.CreateMenu(kApplications);
    for (const Application& application : applications)
        Append(menu, FromText(application.name));
    if (!applications.empty())
        AppendSeparator(menu);
    Append(menu, texts("menu.other"));
}

void FillStars(MacTovMenu& menu, const Texts& texts)
{
    constexpr std::array kKeys = {"0", "1", "2", "3", "4", "5"};
    menu.CreateMenu(kStars);
    Append(menu, texts("menu.noStars"), kKeys[0]);
    for (int stars = 1; stars <= kMostStars; ++stars)
        Append(menu, QString(stars, QChar(0x2605)), kKeys.at(static_cast<std::size_t>(stars)));
}

ItemChoice FromItem(const Chosen& chosen)
{
    using Command = ItemChoice::Command;
    // As AskWhatToDo fills the menu.
    constexpr std::array kCommands = {Command::None, Command::Open, Command::None, Command::None, Command::ShowInFolder,
                                      Command::None, Command::None, Command::None, Command::Trash};
    return {chosen.item < kCommands.size() ? kCommands.at(chosen.item) : Command::None, 0, {}};
}
} // namespace

ItemChoice AskWhatToDo(const Texts& texts, QPoint where, const std::vector<Application>& applications, bool isThere)
{
    std::vector<Application> offered = applications;
    if (offered.size() > kMostApplications)
        offered.resize(kMostApplications);
    MacTovMenu applicationsMenu;
    MacTovMenu stars;
    MacTovMenu menu;
    FillApplications(applicationsMenu, texts, offered);
    FillStars(stars, texts);
    menu.CreateMenu(kItems);
    Append(menu, texts("menu.open"), texts("key.return").toUtf8());
    Append(menu, texts("menu.openWith"));
    menu.SetChildren(&applicationsMenu, 2);
    AppendSeparator(menu);
    Append(menu, texts("menu.folder"));
    AppendSeparator(menu);
    Append(menu, texts("menu.rate"));
    menu.SetChildren(&stars, 6);
    AppendSeparator(menu);
    Append(menu, texts("menu.trash"), texts("key.delete").toUtf8());
    for (const std::uint16_t item : std::array<std::uint16_t, 3>{1, 2, 4})
        menu.Enable(isThere ? 1 : 0, item);

    const Chosen chosen = Ask(menu, where);
    if (chosen.menu == kStars)
        return {ItemChoice::Command::Rate, chosen.item - 1, {}};
    if (chosen.menu == kApplications && chosen.item <= offered.size())
        return {ItemChoice::Command::OpenWith, 0, offered[chosen.item - 1U].entry};
    if (chosen.menu == kApplications)
        return {ItemChoice::Command::OpenOther, 0, {}};
    return FromItem(chosen);
}

WindowChoice AskWindowMenu(const Texts& texts, QPoint where, bool canUndo, Appearance appearance)
{
    MacTovMenu appearances;
    appearances.CreateMenu(kAppearance);
    const auto append = [&](const char* key, Appearance of)
    {
        Append(appearances, texts(key), appearance == of ? "\u2713" : nullptr);
    };
    append("menu.asDesktop", Appearance::Desktop);
    append("menu.light", Appearance::Light);
    append("menu.dark", Appearance::Dark);
    MacTovMenu menu;
    menu.CreateMenu(kWindow);
    Append(menu, texts("menu.undo"), texts("key.undo").toUtf8());
    menu.Enable(canUndo ? 1 : 0, 1);
    Append(menu, texts("menu.appearance"));
    menu.SetChildren(&appearances, 2);
    AppendSeparator(menu);
    Append(menu, texts("menu.about"));
    Append(menu, texts("menu.quit"), texts("key.quit").toUtf8());

    const Chosen chosen = Ask(menu, where);
    constexpr std::array kAppearances = {WindowChoice::None, WindowChoice::AppearDesktop, WindowChoice::AppearLight,
                                         WindowChoice::AppearDark};
    constexpr std::array kChoices = {WindowChoice::None, WindowChoice::Undo,  WindowChoice::None,
                                     WindowChoice::None, WindowChoice::About, WindowChoice::Quit};
    if (chosen.menu == kAppearance)
        return kAppearances.at(chosen.item);
    return chosen.item < kChoices.size() ? kChoices.at(chosen.item) : WindowChoice::None;
}
} // namespace HynHost
