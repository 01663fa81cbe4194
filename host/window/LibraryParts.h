// What a Library is made of.
#pragma once

#include <atomic>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <halyon/platform/TovMutex.h>
#include <host/FunctionWorker.h>
#include <host/window/EditQueue.h>
#include <host/window/Library.h>
#include <host/window/LibraryImport.h>
#include <host/window/LibraryTrash.h>
#include <host/window/MainPost.h>
#include <host/window/SharedCatalog.h>
#include <host/window/ThumbnailFinder.h>

namespace HynHost
{
class Library::Parts
{
public:
    Parts(Halyon::CHynThreadManager& manager, std::string file, LibraryListener& listener);
    ~Parts();
    Parts(const Parts&) = delete;
    Parts& operator=(const Parts&) = delete;

    void Open();
    void Search(const MediaQuery& query);
    void WantThumbnails(std::vector<long long> ids, ThumbnailShape shape)
    {
        m_thumbnails.Want(std::move(ids), std::move(shape));
    }
    void WantDetails(long long id);
    void Rate(std::vector<long long> ids, int stars);
    void MoveToTrash(std::vector<long long> ids);
    void UndoTrash();
    [[nodiscard]] bool CanUndoTrash() const noexcept { return m_undoLevels != 0; }
    void StartImport(const std::string& folder);
    void CancelImport();
    [[nodiscard]] bool IsImporting() const noexcept { return m_isImporting; }

private:
    template <class Work>
    void Edit(Work work);
    void Fail(const std::string& message);
    void Break(const std::string& message);
    void Refresh();
    void Find();
    [[nodiscard]] bool IsWanted(const MediaQuery& query);
    void FindDetails(long long id);
    void StoreLater(MadeThumbnail made);
    void StoreMade();
    ThumbnailFinder::Results ThumbnailResults();
    LibraryImport::Results ImportResults();
    void EndWriter() noexcept;
    void TellOfTrash(std::size_t count, void (LibraryListener::*tell)(std::size_t count));

    LibraryListener& m_listener;
    SharedCatalog m_catalog;
    std::atomic<long long> m_wantedDetails = 0;
    Halyon::TovMutex m_mutex;
    MediaQuery m_query HYN_GUARDED_BY(m_mutex);
    bool m_isSearching HYN_GUARDED_BY(m_mutex) = false;
    std::vector<MadeThumbnail> m_made HYN_GUARDED_BY(m_mutex); // and not stored
    bool m_toldOfStoring = false;                              // the writer's own
    std::size_t m_undoLevels = 0;                              // the main thread's own
    bool m_isImporting = false;                                // the same
    std::atomic<bool> m_isWhole = false;                       // everything has been made

    // The workers post to each other, so that all are stopped before one goes.
    MainPost m_main;
    LibraryTrash m_trash; // the writer's own
    FunctionWorker m_writer;
    EditQueue m_edits;
    FunctionWorker m_reader;
    ThumbnailFinder m_thumbnails;
    LibraryImport m_import;
};
} // namespace HynHost
