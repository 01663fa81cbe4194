// A program that uses every tool of the screen once, and says on which platform. How its application object comes about
// is told by its argument:
//   none    the tools make it            own      a QApplication of its own, offscreen
//   core    one that has no screen       thread   the first use is on another thread
//   loop    the first use is in the main event loop

#include <cstdio>
#include <cstring>
#include <optional>
#include <thread>

#include <QApplication>
#include <QWidget>

#include <halyon/platform/EventLoop.h>
#include <halyon/tools/CHynIconHelper2.h>
#include <halyon/tools/CHynPubTools.h>
#include <halyon/tools/CHynWaitCursor.h>
#include <halyon/tools/MacTovMenu.h>

using namespace Halyon;

namespace
{
void UseAll()
{
    POINT point = {};
    SRect32 rect = {};
    MacTovMenu menu;
    short nMenu = 1;
    std::uint16_t uItem = 1;
    CHynPubTools::GetCursorPos(&point);
    CHynPubTools::SetCursorPos(&point);
    CHynPubTools::GetWindowRect(nullptr, &rect);
    const CHynWaitCursor wait;
    menu.CreateMenu(1);
    menu.CreateNewMenuItem(0, u"Open", 0, 0);
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        menu.PopupMenu({10, 10}, nMenu, uItem);
    DisposeRgn(CHynPubTools::CreateRgnFromFile(u"/nowhere"));
    if (qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr)
    {
        QWidget widget;
        const int nWindow = CHynPubTools::GetWindowRect(WindowFromQWidget(&widget), &rect);
        std::printf("%s, window %d\n", qPrintable(QGuiApplication::platformName()), nWindow);
    }
    else
        std::printf("no screen\n");
}

void UseAllAndQuit(EventLoopTimerRef timer, void* /*pUserData*/)
{
    UseAll();
    RemoveEventLoopTimer(timer);
    QuitApplicationEventLoop();
}
} // namespace

int main(int argc, char** argv)
{
    const char* pszHow = argc > 1 ? argv[1] : "none";
    std::optional<QApplication> own;
    std::optional<QCoreApplication> core;
    char offscreen[] = "QT_QPA_PLATFORM=offscreen";
    if (std::strcmp(pszHow, "own") == 0)
    {
        putenv(offscreen);
        own.emplace(argc, argv);
    }
    if (std::strcmp(pszHow, "core") == 0)
        core.emplace(argc, argv);
    if (std::strcmp(pszHow, "thread") == 0)
        std::thread(UseAll).join();
    if (std::strcmp(pszHow, "loop") == 0)
    {
        InstallEventLoopTimer(GetMainEventLoop(), 0.0, 0.0, UseAllAndQuit, nullptr, nullptr);
        RunApplicationEventLoop();
        return 0;
    }
    UseAll();
}
