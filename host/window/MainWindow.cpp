#include <host/window/MainWindow.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QMimeData>
#include <QPainter>
#include <QShortcut>
#include <QStackedWidget>

#include <halyon/tools/CHynWaitCursor.h>
#include <host/HostError.h>
#include <host/Launching.h>
#include <host/window/AboutBox.h>
#include <host/window/Style.h>
#include <host/window/WideText.h>

namespace HynHost
{
namespace
{
constexpr QSize kFirstSize(1180, 800);
constexpr QSize kLeastSize(640, 400);
constexpr int kWidthForDetails = 900;
constexpr double kZoomStep = 1.2;

// Over the whole window while something that can be dropped is above it.
class DropMark : public QWidget
{
public:
    DropMark(QString text, QWidget* parent) : QWidget(parent), m_text(std::move(text))
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        hide();
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        const Colours& colours = TheColours();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QColor veil = colours.ground;
        veil.setAlpha(225);
        painter.fillRect(rect(), veil);
        painter.setPen(QPen(colours.accent, 2, Qt::DashLine));
        painter.drawRoundedRect(QRectF(rect()).adjusted(16, 16, -16, -16), 12, 12);
        painter.setFont(SizedFont(1.6, QFont::DemiBold));
        painter.setPen(colours.text);
        painter.drawText(rect(), Qt::AlignCenter, m_text);
    }

private:
    QString m_text;
};

QStringList DroppedPaths(const QMimeData& data)
{
    QStringList paths;
    for (const QUrl& url : data.urls())
    {
        if (url.isLocalFile())
            paths.append(url.toLocalFile());
    }
    return paths;
}
} // namespace

MainWindow::MainWindow(Halyon::CHynThreadManager& manager, const std::string& catalogFile, const Texts& texts)
    : m_texts(texts), m_settings(QStringLiteral("Halyon"), QStringLiteral("Organiser")), m_appearance(SavedAppearance())
{
    setWindowTitle(texts("program"));
    setWindowIcon(ProgramIcon());
    setMinimumSize(kLeastSize);
    setAcceptDrops(true);
    Build(manager);
    ConnectParts();
    AddKeys();
    Restore();
    m_timeline->setFocus();
    m_library = std::make_unique<Library>(manager, catalogFile, static_cast<LibraryListener&>(*this));
}

MainWindow::~MainWindow()
{
    m_library.reset();
}

void MainWindow::Build(Halyon::CHynThreadManager& manager)
{
    auto* whole = new QWidget(this);
    m_search = new SearchBar(m_texts, whole);
    m_message = new MessageBar(m_texts, whole);
    m_pages = new QStackedWidget(whole);
    m_import = new ImportBar(m_texts, whole);

    auto* pictures = new QWidget(m_pages);
    m_timeline = new TimelineView(m_texts, pictures);
    m_years = new YearBar(m_texts, pictures);
    m_details = new DetailPane(manager, m_texts, pictures);
    auto* row = new QHBoxLayout(pictures);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(m_timeline, 1);
    row->addWidget(m_years);
    row->addWidget(m_details);
    m_empty = new EmptyState(m_pages);
    m_pages->addWidget(pictures);
    m_pages->addWidget(m_empty);

    auto* column = new QVBoxLayout(whole);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_search);
    column->addWidget(m_message);
    column->addWidget(m_pages, 1);
    column->addWidget(m_import);
    setCentralWidget(whole);
    m_dropMark = new DropMark(m_texts("drop"), this);
}

void MainWindow::ConnectParts()
{
    m_search->onQuery = [this](const MediaQuery& query)
    {
        m_searched = true;
        m_library->Search(query);
    };
    m_search->onAdd = [this]
    {
        ChooseFolder();
    };
    m_search->onMore = [this](QPoint where)
    {
        ShowWindowMenu(where);
    };
    m_search->onLeave = [this]
    {
        m_timeline->setFocus();
    };
    m_timeline->onWanted = [this](std::vector<long long> ids)
    {
        WantThumbnails(std::move(ids));
    };
    m_timeline->onCurrent = m_timeline->onSelection = [this]
    {
        ShowSelection();
    };
    m_timeline->onScrolled = [this]
    {
        m_years->SetMonth(m_timeline->DayInSight() / 100);
    };
    m_timeline->onMenu = [this](QPoint where)
    {
        ShowItemMenu(where);
    };
    m_timeline->onOpen = [this]
    {
        WithPath([](const std::string& path) { OpenDocument(path); });
    };
    m_years->onMonth = [this](std::uint32_t month)
    {
        m_timeline->ShowMonth(month);
    };
    m_details->onRated = [this](int stars)
    {
        Rate(stars);
    };
    m_import->onCancel = [this]
    {
        m_waiting.clear();
        m_library->CancelImport();
    };
}

void MainWindow::AddKey(QWidget* widget, const QKeySequence& key, std::function<void()> action)
{
    auto* shortcut = new QShortcut(key, widget);
    shortcut->setContext(widget == this ? Qt::WindowShortcut : Qt::WidgetShortcut);
    QObject::connect(shortcut, &QShortcut::activated, this, std::move(action));
}

void MainWindow::AddKeys()
{
    AddKey(this, QKeySequence::Open, [this] { ChooseFolder(); });
    AddKey(this, QKeySequence::Find, [this] { m_search->FocusText(); });
    AddKey(this, QKeySequence::Undo, [this] { Undo(); });
    AddKey(this, Qt::CTRL | Qt::Key_Q, [this] { close(); });
    AddKey(this, QKeySequence::ZoomIn, [this] { ZoomBy(kZoomStep); });
    AddKey(this, QKeySequence::ZoomOut, [this] { ZoomBy(1 / kZoomStep); });
    AddKey(this, Qt::CTRL | Qt::Key_0, [this] { m_timeline->SetWantedSide(TimelineView::kUsualSide); });
    AddKey(m_timeline, Qt::Key_Plus, [this] { ZoomBy(kZoomStep); });
    AddKey(m_timeline, Qt::Key_Minus, [this] { ZoomBy(1 / kZoomStep); });
    AddKey(m_timeline, Qt::Key_Delete, [this] { Trash(); });
    AddKey(m_timeline, Qt::Key_Escape, [this] { m_search->Clear(); });
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter})
        AddKey(m_timeline, key, [this] { m_timeline->onOpen(); });
    for (int stars = 0; stars <= 5; ++stars)
        AddKey(m_timeline, Qt::Key_0 + stars, [this, stars] { Rate(stars); });
}

// --- what the window remembers ---------------------------------------------------------------------------------------

Appearance MainWindow::SavedAppearance()
{
    const QSettings settings(QStringLiteral("Halyon"), QStringLiteral("Organiser"));
    const QString saved = settings.value(QStringLiteral("appearance")).toString();
    return saved == QLatin1String("dark")    ? Appearance::Dark
           : saved == QLatin1String("light") ? Appearance::Light
                                             : Appearance::Desktop;
}

void MainWindow::Restore()
{
    if (!restoreGeometry(m_settings.value(QStringLiteral("geometry")).toByteArray()))
        resize(kFirstSize);
    m_timeline->SetWantedSide(m_settings.value(QStringLiteral("cellSide"), TimelineView::kUsualSide).toInt());
    m_search->ShowFilter(m_settings.value(QStringLiteral("filter"), false).toBool());
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    m_settings.setValue(QStringLiteral("geometry"), saveGeometry());
    m_settings.setValue(QStringLiteral("cellSide"), m_timeline->WantedSide());
    m_settings.setValue(QStringLiteral("filter"), m_search->IsFilterShown());
    QMainWindow::closeEvent(event);
}

void MainWindow::SetAppearance(Appearance appearance)
{
    constexpr std::pair<Appearance, const char*> kNames[] = {
        {Appearance::Desktop, "desktop"}, {Appearance::Light, "light"}, {Appearance::Dark, "dark"}};
    for (const auto& [of, name] : kNames)
    {
        if (of == appearance)
            m_settings.setValue(QStringLiteral("appearance"), QString::fromLatin1(name));
    }
    m_appearance = appearance;
    ApplyStyle(*qApp, appearance);
}

void MainWindow::ZoomBy(double factor)
{
    m_timeline->SetWantedSide(static_cast<int>(std::lround(m_timeline->WantedSide() * factor)));
}

void MainWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    m_details->setVisible(width() >= kWidthForDetails);
    m_dropMark->setGeometry(rect());
}

// --- what is shown ---------------------------------------------------------------------------------------------------

void MainWindow::Open()
{
    m_broken.clear();
    m_library->Open();
}

// Of a catalogue that is there, the pictures come next; until then the window must not say that there are none.
void MainWindow::OnOpened(bool exists)
{
    m_broken.clear();
    if (exists)
        return;
    m_opened = true;
    m_search->SetCounts(0, m_all = 0);
    ShowPage();
}

void MainWindow::OnBroken(const std::string& message)
{
    m_broken = FromText(message);
    ShowPage();
}

void MainWindow::OnIndex(std::shared_ptr<const MediaIndex> index, std::size_t all)
{
    m_opened = true;
    m_all = all;
    m_search->SetCounts(index->Items().size(), all);
    m_years->SetIndex(index);
    m_timeline->SetIndex(std::move(index),
                         std::exchange(m_searched, false) ? TimelineView::Keep::Current : TimelineView::Keep::Place);
    if (m_detailsOf != 0)
        m_library->WantDetails(m_detailsOf);
    ShowPage();
}

void MainWindow::ShowPage()
{
    const bool showsPictures = m_broken.isEmpty() && (!m_timeline->Index().Items().empty() || !m_opened);
    const bool hadFocus = focusWidget() == nullptr || m_pages->isAncestorOf(focusWidget());
    m_pages->setCurrentIndex(showsPictures ? 0 : 1);
    if (showsPictures)
    {
        if (hadFocus)
            m_timeline->setFocus();
        return;
    }
    if (!m_broken.isEmpty())
        m_empty->Set(EmptyState::Drawing::Trouble, m_texts("broken.title"), m_broken, m_texts("broken.button"),
                     [this] { Open(); });
    else if (m_all > 0)
        m_empty->Set(EmptyState::Drawing::Search, m_texts("none.title"), m_texts("none.words"), m_texts("search.clear"),
                     [this] { m_search->Clear(); });
    else
        m_empty->Set(EmptyState::Drawing::Pictures, m_texts("first.title"), m_texts("first.words"),
                     m_texts("first.button"), [this] { ChooseFolder(); });
    if (hadFocus)
        m_empty->FocusButton();
}

void MainWindow::ShowSelection()
{
    const auto selected = static_cast<std::size_t>(m_timeline->SelectedIds().size());
    const long long wanted = selected == 1 ? m_timeline->SelectedIds().front() : 0;
    if (wanted == m_detailsOf && wanted != 0)
        return;
    m_detailsOf = wanted;
    if (wanted == 0)
        m_details->ShowCount(selected);
    else
    {
        m_library->WantDetails(wanted);
        m_timeline->AskSoon();
    }
}

// The picture that is shown large comes first, also when its cell has its own already.
void MainWindow::WantThumbnails(std::vector<long long> ids)
{
    if (m_detailsOf != 0 && m_details->isVisible() && m_details->ThumbnailOf() != m_detailsOf)
    {
        std::erase(ids, m_detailsOf);
        ids.insert(ids.begin(), m_detailsOf);
    }
    m_library->WantThumbnails(std::move(ids), m_timeline->CellShape());
}

void MainWindow::OnThumbnail(long long id, const QImage& image, const QImage& shaped)
{
    m_timeline->SetCell(id, shaped);
    if (id == m_detailsOf)
        m_details->SetThumbnail(id, image);
}

void MainWindow::OnDetails(const MediaDetails& details)
{
    if (details.id == m_detailsOf)
        m_details->ShowDetails(details);
    if (m_withPath && details.id == m_timeline->CurrentId())
    {
        const auto action = std::exchange(m_withPath, nullptr);
        Start([&] { action(details.path); });
    }
}

void MainWindow::OnFailure(const std::string& message)
{
    m_message->TellProblem(m_texts.Translated(FromText(message)));
}

// --- what is done with pictures --------------------------------------------------------------------------------------

void MainWindow::WithPath(std::function<void(const std::string& path)> action)
{
    const long long current = m_timeline->CurrentId();
    if (current == 0)
        return;
    if (m_details->Details().id == current)
        return Start([&] { action(m_details->Details().path); });
    m_withPath = std::move(action);
    m_library->WantDetails(current);
}

// Starting a program is the one thing here that is really waited for.
void MainWindow::Start(const std::function<void()>& launch)
try
{
    const Halyon::CHynWaitCursor cursor;
    launch();
}
catch (const HostError& error)
{
    m_message->TellProblem(m_texts.Translated(FromText(error.what())));
}

void MainWindow::Rate(int stars)
{
    if (std::vector<long long> ids = m_timeline->SelectedIds(); !ids.empty())
        m_library->Rate(std::move(ids), stars);
}

void MainWindow::Trash()
{
    if (std::vector<long long> ids = m_timeline->SelectedIds(); !ids.empty())
        m_library->MoveToTrash(std::move(ids));
}

void MainWindow::Undo()
{
    if (m_library->CanUndoTrash())
        m_library->UndoTrash();
}

void MainWindow::OnTrashed(std::size_t count)
{
    m_message->Tell(m_texts.Count("trashed", static_cast<long long>(count)), m_texts("undo"), [this] { Undo(); });
}

void MainWindow::OnRestored(std::size_t count)
{
    m_message->Tell(m_texts.Count("restored", static_cast<long long>(count)));
}

void MainWindow::ShowItemMenu(QPoint where)
{
    const MediaDetails& details = m_details->Details();
    const bool isKnown = details.id == m_timeline->CurrentId();
    const ItemChoice choice =
        AskWhatToDo(m_texts, where, isKnown ? ApplicationsFor(details.path) : std::vector<Application>(),
                    !isKnown || details.isThere);
    switch (choice.command)
    {
    case ItemChoice::Command::None:
        break;
    case ItemChoice::Command::Open:
        m_timeline->onOpen();
        break;
    case ItemChoice::Command::OpenWith:
        WithPath([entry = choice.application](const std::string& path) { StartApplication(entry, path); });
        break;
    case ItemChoice::Command::OpenOther:
        OpenWithOther();
        break;
    case ItemChoice::Command::ShowInFolder:
        WithPath([](const std::string& path) { OpenDocument(QFileInfo(FromText(path)).path().toStdString()); });
        break;
    case ItemChoice::Command::Rate:
        Rate(choice.stars);
        break;
    case ItemChoice::Command::Trash:
        Trash();
        break;
    }
}

void MainWindow::OpenWithOther()
{
    const QString application =
        QFileDialog::getOpenFileName(this, m_texts("menu.other"), QStringLiteral("/usr/share/applications"));
    if (!application.isEmpty())
        WithPath([application](const std::string& path) { StartApplication(application.toStdString(), path); });
}

void MainWindow::ShowWindowMenu(QPoint where)
{
    switch (AskWindowMenu(m_texts, where, m_library->CanUndoTrash(), m_appearance))
    {
    case WindowChoice::None:
        break;
    case WindowChoice::Undo:
        Undo();
        break;
    case WindowChoice::AppearDesktop:
        SetAppearance(Appearance::Desktop);
        break;
    case WindowChoice::AppearLight:
        SetAppearance(Appearance::Light);
        break;
    case WindowChoice::AppearDark:
        SetAppearance(Appearance::Dark);
        break;
    case WindowChoice::About:
        ShowAbout(m_texts, this);
        break;
    case WindowChoice::Quit:
        close();
        break;
    }
}

// --- import ----------------------------------------------------------------------------------------------------------

void MainWindow::ChooseFolder()
{
    const QString folder = QFileDialog::getExistingDirectory(this, m_texts("first.button"));
    if (!folder.isEmpty())
        Import(folder);
}

void MainWindow::Import(const QString& folder)
{
    m_waiting.push_back(folder);
    if (!m_library->IsImporting())
        ImportNext();
}

void MainWindow::ImportNext()
{
    if (m_waiting.empty())
    {
        if (onImportsEnded)
            onImportsEnded();
        return;
    }
    const QString folder = std::exchange(m_waiting.front(), {});
    m_waiting.pop_front();
    m_importing = folder;
    m_library->StartImport(folder.toStdString());
}

void MainWindow::OnImportRefused(const std::string& folder, const std::string& reason)
{
    // The window has its own words for what comes before the reason.
    QString why = FromText(reason);
    if (const qsizetype end = why.indexOf(FromText(folder) + QStringLiteral(": ")); end >= 0)
        why.remove(0, end + FromText(folder).size() + 2);
    m_message->TellProblem(m_texts("import.refused", {{QLatin1String("folder"), QDir(FromText(folder)).dirName()},
                                                      {QLatin1String("reason"), m_texts.Translated(why)}}));
    ImportNext();
}

void MainWindow::OnImportProgress(const ImportState& state)
{
    m_import->SetState(m_importing, state);
}

void MainWindow::OnImportEnded(const ImportReport& report, const std::string& failure)
{
    m_import->hide();
    const std::uint64_t taken = report.added + report.changed;
    const std::uint64_t problems = report.problems.size() + report.moreProblems;
    QString text =
        m_texts.Count(report.interrupted ? "import.cancelled" : "import.done", static_cast<long long>(taken));
    if (problems > 0)
        text += QLatin1Char(' ') + m_texts.Count("import.problems", static_cast<long long>(problems));
    if (failure.empty())
        m_message->Tell(text);
    else
        m_message->TellProblem(m_texts.Translated(FromText(failure)));
    ImportNext();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (DroppedPaths(*event->mimeData()).isEmpty())
        return;
    event->acceptProposedAction();
    m_dropMark->raise();
    m_dropMark->show();
}

void MainWindow::dragLeaveEvent(QDragLeaveEvent* /*event*/)
{
    m_dropMark->hide();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    m_dropMark->hide();
    event->acceptProposedAction();
    for (const QString& path : DroppedPaths(*event->mimeData()))
        Import(path);
}
} // namespace HynHost
