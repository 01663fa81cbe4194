// Brings a folder's media files into a catalogue, and the catalogue up to date with the folder.
//
// It works in batches: a few hundred files are found, looked up, read where they are new or changed, and then stored in
// one exclusive transaction. Nothing is locked while files are read, and an interrupted import loses nothing that it
// has counted as done. Memory does not grow with the folder.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <host/Catalog.h>
#include <host/CatalogFiles.h>
#include <host/FolderWalk.h>
#include <host/Progress.h>
#include <host/Recogniser.h>

namespace HynHost
{
// What an import did. Media files are counted once, in one of the first three.
struct ImportReport
{
    std::uint64_t added = 0;
    std::uint64_t changed = 0;
    std::uint64_t unchanged = 0;
    std::uint64_t gone = 0;   // no longer there, or no media files any more
    std::uint64_t others = 0; // files that are no media
    std::uint64_t done = 0;   // files of all sorts that are behind it
    std::uint64_t total = 0;  // that there were at the start; 0 when they were not counted
    std::uint64_t passedLinks = 0;
    bool interrupted = false;

    struct Problem
    {
        std::string path; // as the system gives it
        std::string reason;
    };
    std::vector<Problem> problems; // the first of them
    std::uint64_t moreProblems = 0;
};

class Importer
{
public:
    // `folder` is absolute and without links. Throws HostError when it cannot be read.
    Importer(Catalog& catalog, std::string folder, FolderWalk::Links links, Progress& progress);

    // Works to the end or to an interrupt; the report then tells how far it came. Throws HostError or DatabaseError.
    void Run();

    [[nodiscard]] const ImportReport& Report() const noexcept { return m_report; }

    // Says on standard error that and where an import was interrupted.
    void TellInterrupted() const;

private:
    struct Item
    {
        WalkedFile file;
        std::optional<KnownFile> known;
        FileFacts facts;

        [[nodiscard]] bool IsUnchanged() const { return known && known->stamp == file.stamp; }
        [[nodiscard]] std::string Path() const { return file.folder + file.name; }
    };

    void CountFiles();
    bool FillBatch();
    void LookUpBatch();
    void ReadBatch();
    void StoreRead(std::size_t end);
    void Settle(const Item& item);
    void RemoveGone();
    void RemoveFiles(const std::vector<StoredFile>& files);
    void AddProblem(const std::string& path, const std::string& reason);
    [[nodiscard]] bool IsCatalog(const WalkedFile& file) const;
    Transaction Begin(Transaction::Kind kind);

    Catalog& m_catalog;
    CatalogFiles m_files;
    std::string m_catalogFile; // the path as the walk gives it
    std::string m_folder;      // with a "/" at its end
    FolderWalk::Links m_links;
    Progress& m_progress;
    FolderWalk m_walk;
    Recogniser m_recogniser;
    std::vector<Item> m_batch;
    std::size_t m_stored = 0;      // items of the batch that are behind us
    std::uint64_t m_inCatalog = 0; // files found that the catalogue holds by now
    ImportReport m_report;
};
} // namespace HynHost
