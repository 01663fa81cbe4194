// Whether the screen can be asked for something, and the application object behind it.
//
// Every call of the platform that needs the toolkit's screen asks here first. Inside the platform only.
#pragma once

class QCoreApplication;

namespace Halyon
{
// True when the calling thread may use windows, cursors and fonts: an application object with a screen lives on it.
// The program's first call, on its main thread, makes one when there is none.
bool HasScreen() noexcept;

// The same, and widgets and menus work, and a user can see them and answer.
bool HasUser() noexcept;

// True on Wayland, where a pop-up belongs to a window.
bool IsWayland() noexcept;

// Makes the application object if the program has none, and returns the program's; null when none can be made. For the
// main event loop too, which belongs to another library: the function itself is null in a program without the tools of
// the screen.
[[gnu::weak]] QCoreApplication* MakeScreenApplication() noexcept;
} // namespace Halyon
