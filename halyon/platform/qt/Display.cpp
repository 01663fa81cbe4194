// A display is tried with the client library that the toolkit itself would use, so that permissions count as well.
// The library is looked up at run time: where it is missing, the toolkit cannot use that display either.

#include "Display.h"

#include <initializer_list>

#include <QCoreApplication>
#include <QFile>
#include <QLibrary>
#include <QList>
#include <QPluginLoader>

namespace Halyon
{
namespace
{
struct Client
{
    const char* pszPlatform; // the toolkit's name for it
    const char* pszLibrary;
    int nVersion;
    bool (*answers)(QLibrary& client);
};

template <class Function>
Function Resolve(QLibrary& library, const char* pszName)
{
    return reinterpret_cast<Function>(library.resolve(pszName));
}

bool X11Answers(QLibrary& client)
{
    const auto connect = Resolve<void* (*)(const char*, int*)>(client, "xcb_connect");
    const auto hasError = Resolve<int (*)(void*)>(client, "xcb_connection_has_error");
    const auto disconnect = Resolve<void (*)(void*)>(client, "xcb_disconnect");
    if (connect == nullptr || hasError == nullptr || disconnect == nullptr)
        return false;
    // Never null: a connection that failed says so itself.
    void* connection = connect(nullptr, nullptr);
    const bool bAnswers = hasError(connection) == 0;
    disconnect(connection);
    return bAnswers;
}

bool WaylandAnswers(QLibrary& client)
{
    const auto connect = Resolve<void* (*)(const char*)>(client, "wl_display_connect");
    const auto disconnect = Resolve<void (*)(void*)>(client, "wl_display_disconnect");
    if (connect == nullptr || disconnect == nullptr)
        return false;
    void* display = connect(nullptr);
    if (display == nullptr)
        return false;
    disconnect(display);
    return true;
}

constexpr Client kClients[] = {
    {"xcb", "xcb", 1, X11Answers},
    {"wayland", "wayland-client", 0, WaylandAnswers},
};

// The plug-in's file can be loaded, with every library that it needs.
bool IsInstalled(const QByteArray& platform)
{
    // The toolkit's plug-in of that name covers several kinds of drawing and is called after one of them.
    const QByteArray file = platform == "wayland" ? QByteArrayLiteral("wayland-generic") : platform;
    QStringList folders = QCoreApplication::libraryPaths();
    for (QString& folder : folders)
        folder += QLatin1String("/platforms");
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM_PLUGIN_PATH"))
        folders.prepend(qEnvironmentVariable("QT_QPA_PLATFORM_PLUGIN_PATH"));
    for (const QString& folder : folders)
    {
        const QString path = folder + QLatin1String("/libq") + QString::fromLatin1(file) + QLatin1String(".so");
        if (QFile::exists(path) && QPluginLoader(path).load())
            return true;
    }
    return false;
}

// `platform` may have options of its own behind a colon. One that is not known here is not trusted to start.
bool CanStart(const QByteArray& platform)
{
    const QByteArray name = platform.split(':').first();
    if (name == "offscreen" || name == "minimal")
        return IsInstalled(name);
    for (const Client& client : kClients)
    {
        // The other kinds of Wayland drawing start where the usual one does, or fall back to it.
        if (name != client.pszPlatform)
            continue;
        QLibrary library(QString::fromLatin1(client.pszLibrary), client.nVersion);
        return IsInstalled(name) && library.load() && client.answers(library);
    }
    return false;
}
} // namespace

QByteArray UsablePlatform()
{
    QList<QByteArray> platforms = {"xcb", "wayland"};
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        platforms = qgetenv("QT_QPA_PLATFORM").split(';');
    platforms.append("offscreen");
    for (const QByteArray& platform : platforms)
    {
        if (CanStart(platform))
            return platform;
    }
    return {};
}
} // namespace Halyon
