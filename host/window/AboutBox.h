// What the program is, and its version.
#pragma once

#include <QIcon>

#include <host/window/Texts.h>

namespace HynHost
{
// The program's icon, of its bundle; an empty one when there is none. [main]
[[nodiscard]] QIcon ProgramIcon();

// Shows the box and waits until it is closed. [main]
void ShowAbout(const Texts& texts, QWidget* parent);
} // namespace HynHost
