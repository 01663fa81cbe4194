// Brings a folder's media files into a catalogue, and the catalogue up to date with the folder.
//
// It walks, looks up and stores; reading files is for others: each file that is new or changed is handed out as a job
// and comes back with what was read. So many jobs are on the way at most, and nothing is locked meanwhile. Results are
// stored some hundreds at a time, in one exclusive transaction each: an interrupted import loses nothing that it has
// counted as done. Memory does not grow with the folder.
//
//     Importer importer(catalog, scope, links, observer, handOut);
//     importer.Start();                      // hands out the first jobs
//     ... TakeBack(job) for each that is read, in any order, until IsDone() ...
//
// An importer belongs to the thread that makes it, which owns the database handle.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <halyon/framework/CHynAutoPtr.h>
#include <host/Catalog.h>
#include <host/CatalogFiles.h>
#include <host/Events.h>
#include <host/FolderWalk.h>
#include <host/ImportObserver.h>
#include <host/ImportScope.h>

namespace HynHost
{
// A file on its way: found, looked up, and read unless it is unchanged.
struct FileJob
{
    WalkedFile file;
    std::optional<KnownFile> known;
    FileFacts facts;
    std::optional<std::vector<std::byte>> thumbnail; // that was made with it, empty for none; nothing: not tried

    [[nodiscard]] bool IsUnchanged() const { return known && known->stamp == file.stamp; }
    [[nodiscard]] std::string Path() const { return file.folder + file.name; }
};
using FileJobPtr = Halyon::CHynAutoPtr<Carried<FileJob>>;

class Importer
{
public:
    // So many jobs are handed out and not back at most: what a reader's queue must hold.
    static constexpr std::size_t kMostJobs = 1024;

    // `scope` and `observer` outlive the importer. `handOut` sends a job to a reader. Throws HostError when the folder
    // cannot be read.
    Importer(Catalog& catalog, const ImportScope& scope, FolderWalk::Links links, ImportObserver& observer,
             std::function<void(const FileJobPtr&)> handOut);

    // All throw HostError, DatabaseError or what the observer throws. [owner]

    // Enters the volumes in the catalogue and hands out the first jobs. An import without any is done at once.
    void Start();
    // Takes a job that was read, and hands out others.
    void TakeBack(FileJobPtr spJob);
    // Stores what has come back and ends; jobs that are still out are forgotten. After it has thrown, it may be tried
    // again.
    void StopEarly();

    // Whether all is stored and the files that are gone are removed, or it was interrupted. [owner]
    [[nodiscard]] bool IsDone() const noexcept { return m_done; }

    [[nodiscard]] const ImportReport& Report() const noexcept { return m_report; }

private:
    using Clock = std::chrono::steady_clock;
    using Jobs = std::vector<FileJobPtr>;

    // A volume of the import.
    struct Part
    {
        const Volume& volume;
        long long id = 0;
        std::string top; // what is imported of it: a path on the volume, with a "/" at its end
    };

    void EnterVolumes();
    [[nodiscard]] const Part& PartOf(const std::string& folder) const;
    [[nodiscard]] StoredFolder Place(const std::string& folder) const;
    void HandOutMore();
    [[nodiscard]] Jobs FindSome();
    void LookUp(const Jobs& jobs);
    void StoreRead();
    void Settle(const FileJob& job);
    void Finish();
    void RemoveGone();
    [[nodiscard]] bool RemoveGone(const Part& part);
    void RemoveFiles(const std::vector<StoredFile>& files);
    void Tell(const std::string& folder);
    void AddProblem(const std::string& path, const std::string& reason);
    [[nodiscard]] bool IsCatalog(const WalkedFile& file) const;
    Transaction Begin(Transaction::Kind kind);

    Catalog& m_catalog;
    CatalogFiles m_files;
    std::string m_catalogFile; // the path as the walk gives it; empty: in no folder
    std::vector<Part> m_parts;
    ImportObserver& m_observer;
    std::function<void(const FileJobPtr&)> m_handOut;
    FolderWalk m_walk;
    bool m_walkEnded = false;
    std::size_t m_out = 0; // jobs that are handed out
    Jobs m_read;           // jobs that came back and are not stored
    Clock::time_point m_storeAt;
    Clock::time_point m_tellAt;
    std::uint64_t m_inCatalog = 0; // files found that the catalogue holds by now
    bool m_done = false;
    ImportReport m_report;
};
} // namespace HynHost
