// The organiser's window, a program of its own in a bundle: `hynhost show` starts it, so that no other subcommand loads
// the window system's libraries.
#include <cstdio>
#include <exception>
#include <memory>
#include <optional>
#include <string>

#include <QApplication>
#include <QLibraryInfo>
#include <QLoggingCategory>
#include <QScrollBar>
#include <QTimer>
#include <QTranslator>

#include <unistd.h>

#include <CLI/CLI.hpp>

#include <halyon/thread/CHynThreadManager.h>
#include <host/Catalog.h>
#include <host/HostError.h>
#include <host/ShowCommand.h>
#include <host/Storage.h>
#include <host/window/MainWindow.h>
#include <host/window/Style.h>
#include <host/window/Trace.h>

using namespace HynHost;

namespace
{
void TellError(const char* reason)
{
    std::fprintf(stderr, "hynhost: %s\n", reason);
}

// Lets no exception into the toolkit, which does not know them.
class Application : public QApplication
{
public:
    Application(int& argc, char** argv, Trace* trace) : QApplication(argc, argv), m_trace(trace) {}

    bool notify(QObject* receiver, QEvent* event) override
    {
        const auto begun = Trace::Clock::now();
        if (m_trace != nullptr)
            m_trace->BeginEvent();
        bool known = false;
        try
        {
            known = QApplication::notify(receiver, event);
        }
        catch (const std::exception& error)
        {
            TellError(error.what());
        }
        if (m_trace != nullptr)
            m_trace->EndEvent(begun);
        return known;
    }

private:
    Trace* m_trace;
};

// The toolkit's way to say that there is no display is to abort.
void OnMessageBeforeDisplay(QtMsgType type, const QMessageLogContext& /*context*/, const QString& /*message*/)
{
    if (type != QtFatalMsg)
        return;
    TellError("cannot show the window: no display can be reached (DISPLAY or WAYLAND_DISPLAY names it)");
    _exit(1);
}

// Moves through the whole timeline in the same time whatever its length, a step each frame, and quits.
class Scroller
{
public:
    Scroller(TimelineView& view, Trace& trace) : m_view(view), m_trace(trace)
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { Step(); });
    }

    void Start()
    {
        m_trace.BeginScroll();
        m_timer.start(kFrameMs);
    }

private:
    static constexpr int kFrameMs = 16;
    static constexpr int kSteps = 1000;

    void Step()
    {
        QScrollBar& bar = *m_view.verticalScrollBar();
        bar.setValue(static_cast<int>(std::int64_t{bar.maximum()} * ++m_step / kSteps));
        if (m_step < kSteps)
            return;
        m_trace.EndScroll();
        QCoreApplication::quit();
    }

    TimelineView& m_view;
    Trace& m_trace;
    QTimer m_timer;
    int m_step = 0;
};

void WatchPainting(TimelineView& view, Trace& trace, Scroller& scroller, const ShowOptions& options)
{
    view.onPainted = [&, begun = false]() mutable
    {
        trace.NotePaint(view.HasPictureInSight());
        if (!trace.HasContent() || std::exchange(begun, true))
            return;
        if (options.traceScroll)
            scroller.Start();
        else if (options.traceQuit && options.folder.empty())
            QCoreApplication::quit();
    };
}

int Show(int argc, char** argv, const ShowOptions& options)
{
    std::unique_ptr<Trace> trace;
    if (options.trace || options.traceScroll || options.traceQuit)
        trace = std::make_unique<Trace>();
    const QtMessageHandler handler = qInstallMessageHandler(OnMessageBeforeDisplay);
    Application application(argc, argv, trace.get());
    qInstallMessageHandler(handler);
    QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.imageio*=false")); // the catalogue tells of broken pictures

    const Texts texts;
    QLocale::setDefault(texts.Locale());
    QTranslator dialogs;
    if (dialogs.load(texts.Locale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                     QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&dialogs);
    QGuiApplication::setApplicationDisplayName(texts("program"));
    QGuiApplication::setDesktopFileName(QStringLiteral("hynorganiser"));
    ApplyStyle(application, MainWindow::SavedAppearance());

    const Halyon::CHynAutoPtr<Halyon::CHynThreadManager> manager(new Halyon::CHynThreadManager);
    if (Halyon::HynFailed(manager->InitMainThread(nullptr)))
        throw HostError("cannot show the window: its events cannot be handled");
    MainWindow window(*manager, options.catalog.empty() ? Catalog::DefaultFile() : options.catalog, texts);
    std::optional<Scroller> scroller;
    if (trace != nullptr)
    {
        trace->Watch();
        WatchPainting(window.Timeline(), *trace, scroller.emplace(window.Timeline(), *trace), options);
    }
    if (options.traceQuit)
        window.onImportsEnded = &QCoreApplication::quit;
    window.show();
    window.Open();
    if (!options.folder.empty())
        window.Import(QString::fromStdString(options.folder));
    const int status = QApplication::exec();
    if (trace != nullptr)
        trace->Print();
    return status;
}
} // namespace

int main(int argc, char** argv)
try
{
    CLI::App app("Shows the catalogue in a window.", "hynorganiser");
    ShowOptions options;
    std::string storage;
    app.add_option("--storage", storage, "An extension library of SQLite with a storage layer")
        ->envname("HYNHOST_STORAGE");
    AddShowOptions(app, options);
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& error)
    {
        return app.exit(error) == 0 ? 0 : 2;
    }
    if (!storage.empty())
        LoadStorage(storage);
    return Show(argc, argv, options);
}
catch (const std::exception& error)
{
    TellError(error.what());
    return 1;
}
