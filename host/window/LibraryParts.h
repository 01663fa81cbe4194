// What a Library is made of.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include <halyon/platform/TovMutex.h>
#include <host/window/FunctionWorker.h>
#include <host/window/Library.h>
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
    void WantThumbnails(std::vector<long long> ids) { m_thumbnails.Want(std::move(ids)); }
    void WantDetails(long long id);
    void Rate(std::vector<long long> ids, int stars);

private:
    template <class Work>
    void Guarded(Work work) noexcept;
    void Fail(const std::string& message);
    void Break(const std::string& message);
    void Refresh();
    void Find();
    void FindDetails(long long id);
    void StoreLater(MadeThumbnail made);
    void StoreMade();

    LibraryListener& m_listener;
    SharedCatalog m_catalog;
    std::atomic<long long> m_wantedDetails = 0;
    Halyon::TovMutex m_mutex;
    MediaQuery m_query HYN_GUARDED_BY(m_mutex);
    bool m_isSearching HYN_GUARDED_BY(m_mutex) = false;
    std::vector<MadeThumbnail> m_made HYN_GUARDED_BY(m_mutex); // and not stored
    bool m_toldOfStoring = false;                              // the writer's own

    // The workers post to each other, so that all are stopped before one goes.
    MainPost m_main;
    FunctionWorker m_writer;
    FunctionWorker m_reader;
    ThumbnailFinder m_thumbnails;
};
} // namespace HynHost
