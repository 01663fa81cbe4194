// The menus that the window pops up: what can be done with the selected pictures, and what concerns the whole window.
#pragma once

#include <string>
#include <vector>

#include <QPoint>

#include <host/DefaultApplication.h>
#include <host/window/Style.h>
#include <host/window/Texts.h>

namespace HynHost
{
struct ItemChoice
{
    enum class Command
    {
        None,
        Open,
        OpenWith,  // `application`
        OpenOther, // with an application that is to be asked for
        ShowInFolder,
        Rate, // `stars`
        Trash,
    };
    Command command = Command::None;
    int stars = 0;
    std::string application;
};

// Shows the menu there on the desktop and waits for the user. `isThere`: the file of what was clicked can be reached.
// [main]
[[nodiscard]] ItemChoice AskWhatToDo(const Texts& texts, QPoint where, const std::vector<Application>& applications,
                                     bool isThere);

enum class WindowChoice
{
    None,
    Undo,
    AppearDesktop,
    AppearLight,
    AppearDark,
    About,
    Quit,
};

// [main]
[[nodiscard]] WindowChoice AskWindowMenu(const Texts& texts, QPoint where, bool canUndo, Appearance appearance);
} // namespace HynHost
