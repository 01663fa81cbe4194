// The application object: the program's own, else one made on first need, on a display that is known to answer.

#include "Application.h"

#include <new>

#include <QApplication>
#include <QInputDevice>
#include <QThread>

#include <unistd.h>

#include <halyon/platform/TovPCMac.h>

#include "Display.h"

namespace Halyon
{
namespace
{
// The toolkit ends the process when it is given a platform that it cannot start, so it is given one that was tried.
QCoreApplication* Make()
{
    static QByteArray platform = UsablePlatform();
    if (platform.isEmpty())
        return nullptr;
    static char name[] = "halyon";
    static char option[] = "-platform";
    static char* arguments[] = {name, option, platform.data(), nullptr};
    static int count = 3;
    // Never ended: when static objects go, the toolkit's own may have gone before.
    static QApplication* application = new QApplication(count, arguments);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    return application;
}
} // namespace

QCoreApplication* MakeScreenApplication() noexcept
try
{
    if (QCoreApplication::instance() == nullptr && GetCurrentTovThreadID() == static_cast<std::uint32_t>(getpid()))
        return Make();
    return QCoreApplication::instance();
}
catch (const std::bad_alloc&)
{
    return nullptr;
}

bool HasScreen() noexcept
{
    const QCoreApplication* application = MakeScreenApplication();
    return qobject_cast<const QGuiApplication*>(application) != nullptr &&
           application->thread() == QThread::currentThread() && QGuiApplication::primaryScreen() != nullptr;
}

bool HasUser() noexcept
{
    if (!HasScreen() || qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr)
        return false;
    // A Wayland session may have neither keyboard nor pointer; other platforms do not list theirs reliably.
    if (IsWayland() && QInputDevice::devices().isEmpty())
        return false;
    const QString platform = QGuiApplication::platformName();
    return platform != QLatin1String("offscreen") && !platform.startsWith(QLatin1String("minimal"));
}

bool IsWayland() noexcept
{
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}
} // namespace Halyon
