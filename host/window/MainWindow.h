// The organiser's window: the timeline, what belongs around it, and what is done with the pictures in it.
//
// Everything that takes time is the library's, which answers by the listener's calls; the window never waits. It
// remembers its size and place, the cells' size and the colours between runs.
#pragma once

#include <deque>
#include <functional>
#include <memory>

#include <QMainWindow>
#include <QSettings>

#include <halyon/thread/CHynThreadManager.h>
#include <host/window/DetailPane.h>
#include <host/window/EmptyState.h>
#include <host/window/ImportBar.h>
#include <host/window/ItemMenu.h>
#include <host/window/Library.h>
#include <host/window/MessageBar.h>
#include <host/window/SearchBar.h>
#include <host/window/TimelineView.h>
#include <host/window/YearBar.h>

class QStackedWidget;

namespace HynHost
{
class MainWindow : public QMainWindow, private LibraryListener
{
public:
    // `manager` has its main thread initialised; it and `texts` outlive the window. Throws HostError when the library
    // cannot be started.
    MainWindow(Halyon::CHynThreadManager& manager, const std::string& catalogFile, const Texts& texts);
    ~MainWindow() override;

    // [main], all of them.

    void Open();
    // Imports a folder now, or after the one that is being imported.
    void Import(const QString& folder);

    // Nothing is being imported any more, nor waits for it.
    std::function<void()> onImportsEnded;

    [[nodiscard]] TimelineView& Timeline() noexcept { return *m_timeline; }
    // What the user chose last time.
    [[nodiscard]] static Appearance SavedAppearance();

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void OnOpened(bool exists) override;
    void OnBroken(const std::string& message) override;
    void OnIndex(std::shared_ptr<const MediaIndex> index, std::size_t all) override;
    void OnThumbnail(long long id, const QImage& image, const QImage& shaped) override;
    void OnDetails(const MediaDetails& details) override;
    void OnFailure(const std::string& message) override;
    void OnTrashed(std::size_t count) override;
    void OnRestored(std::size_t count) override;
    void OnImportRefused(const std::string& folder, const std::string& reason) override;
    void OnImportProgress(const ImportState& state) override;
    void OnImportEnded(const ImportReport& report, const std::string& failure) override;

    void Build(Halyon::CHynThreadManager& manager);
    void ConnectParts();
    void AddKeys();
    void AddKey(QWidget* widget, const QKeySequence& key, std::function<void()> action);
    void ShowPage();
    void ShowSelection();
    void WantThumbnails(std::vector<long long> ids);
    void ChooseFolder();
    void ImportNext();
    void Rate(int stars);
    void Trash();
    void Undo();
    // Does it with the current item, as soon as its path is known.
    void WithPath(std::function<void(const std::string& path)> action);
    void Start(const std::function<void()>& launch);
    void ShowItemMenu(QPoint where);
    void ShowWindowMenu(QPoint where);
    void OpenWithOther();
    void SetAppearance(Appearance appearance);
    void ZoomBy(double factor);
    void Restore();

    const Texts& m_texts;
    QSettings m_settings;
    Appearance m_appearance;
    SearchBar* m_search = nullptr;
    MessageBar* m_message = nullptr;
    QStackedWidget* m_pages = nullptr;
    TimelineView* m_timeline = nullptr;
    YearBar* m_years = nullptr;
    DetailPane* m_details = nullptr;
    EmptyState* m_empty = nullptr;
    ImportBar* m_import = nullptr;
    QWidget* m_dropMark = nullptr;

    bool m_opened = false;
    bool m_searched = false; // the next index answers a new search
    QString m_broken;        // why the catalogue cannot be used
    std::size_t m_all = 0;
    std::deque<QString> m_waiting; // folders to import
    QString m_importing;           // the one that is being imported
    long long m_detailsOf = 0;     // the item whose details were asked for
    std::function<void(const std::string&)> m_withPath;

    std::unique_ptr<Library> m_library; // last: it calls the rest
};
} // namespace HynHost
