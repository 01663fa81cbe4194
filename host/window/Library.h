// A catalogue as a window uses it: everything is asked for at once and answered later, so that the window never waits.
//
//     Library library(manager, "catalog.db", listener);
//     library.Open();                    // OnOpened, then OnIndex
//     library.WantThumbnails(visible);   // OnThumbnail for each
//
// Workers read and write; each has an engine handle of its own. Answers come by the thread manager's main-thread pump,
// so the listener is called on the main thread, and not after the library was destroyed. Requests never wait for a
// locked catalogue, an import or a disk.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QImage>

#include <halyon/thread/CHynThreadManager.h>
#include <host/Importer.h>
#include <host/window/MediaIndex.h>

namespace HynHost
{
// What is told of one item.
struct MediaDetails
{
    long long id = 0;
    std::string path;
    std::string kind;
    long long size = 0; // bytes
    FILETIME modified{};
    FILETIME taken{};
    std::int32_t width = 0; // pixels; 0: not known
    std::int32_t height = 0;
    int stars = -1;      // 0 to 5; -1: none
    std::string camera;  // of a picture that tells; read from the file
    std::string problem; // why it could not be read wholly
    bool isThere = true; // its file can be reached now
};

// How far an import is.
struct ImportState
{
    std::uint64_t done = 0;
    std::uint64_t total = 0; // 0: not counted yet
    double secondsLeft = -1; // < 0: not known yet
    std::string folder;
};

// Makes of a thumbnail what a window draws, so that its own thread need not. [any]
using ThumbnailShape = std::function<QImage(const QImage& image)>;

// Messages are ready to be shown, in English, and name the action, the object and the reason.
class LibraryListener
{
public:
    virtual ~LibraryListener() = default;

    // The catalogue is there and can be read, or there is none yet (`exists`). [main]
    virtual void OnOpened(bool exists) = 0;
    // The catalogue cannot be used. [main]
    virtual void OnBroken(const std::string& message) = 0;
    // What the last search finds; again after everything that changes it. `all` counts the whole catalogue. [main]
    virtual void OnIndex(std::shared_ptr<const MediaIndex> index, std::size_t all) = 0;
    // A null image: there is none for this item. `shaped` is what was made of it, or null. [main]
    virtual void OnThumbnail(long long id, const QImage& image, const QImage& shaped) = 0;
    // [main]
    virtual void OnDetails(const MediaDetails& details) = 0;
    // What could not be done (rate, trash, undo). [main]
    virtual void OnFailure(const std::string& message) = 0;
    // So many items went to the trash or came back from it. [main]
    virtual void OnTrashed(std::size_t count) = 0;
    virtual void OnRestored(std::size_t count) = 0;

    // The folder may not be imported; nothing was begun. [main]
    virtual void OnImportRefused(const std::string& folder, const std::string& reason) = 0;
    // A few times a second. [main]
    virtual void OnImportProgress(const ImportState& state) = 0;
    // `failure` is empty unless the import broke off; `report.interrupted` after CancelImport. [main]
    virtual void OnImportEnded(const ImportReport& report, const std::string& failure) = 0;
};

class Library
{
public:
    // `manager` has its main thread initialised; both outlive the library. Starts the workers. Throws HostError when
    // they cannot be started.
    Library(Halyon::CHynThreadManager& manager, std::string catalogFile, LibraryListener& listener);
    // Waits for the step that each worker is at; a running import is cancelled.
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // [main], all of them.

    void Open();

    // Replaces the search. Of several that wait, only the last is done; what others find is no longer told.
    void Search(const MediaQuery& query);

    // Replaces what is wanted, the most urgent first; what was wanted before and is not on its way is forgotten.
    // Thumbnails that the catalogue does not hold are made and stored. `shape` is called for each on the workers.
    void WantThumbnails(std::vector<long long> ids, ThumbnailShape shape = {});

    // Replaces what is wanted.
    void WantDetails(long long id);

    // Gives items 0 to 5 stars, or none for -1. What is given in the window outlasts what the files say.
    void Rate(std::vector<long long> ids, int stars);

    // Takes items out of the catalogue and moves their files to the desktop's trash. What cannot be moved stays.
    void MoveToTrash(std::vector<long long> ids);
    // Brings what the last MoveToTrash took back, files and stars; again for the one before. [main]
    void UndoTrash();
    [[nodiscard]] bool CanUndoTrash() const noexcept;

    // Checks the folder and imports it, with thumbnails. One at a time; refused while one runs.
    void StartImport(const std::string& folder);
    void CancelImport();
    [[nodiscard]] bool IsImporting() const noexcept;

private:
    class Parts;
    std::unique_ptr<Parts> m_parts;
};

// The size of a thumbnail's longer side, in pixels.
inline constexpr int kThumbnailSide = 320;
} // namespace HynHost
