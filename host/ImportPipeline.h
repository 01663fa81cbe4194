// Runs an import on threads: readers look into files, one writer owns the database handle and the pipeline itself.
//
//     writer ──jobs──▶ readers
//       ▲                 │
//       └──jobs, read─────┘
//
// Files cross by posted events. No queue ever fills: the writer has so many jobs out at most. The observer is told on
// the writer, which is free for other work between two files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include <halyon/thread/CHynThreadManager.h>
#include <halyon/thread/CHynWorkerThread.h>
#include <host/Importer.h>

namespace HynHost
{
// How an import goes about it.
struct ImportSettings
{
    // Makes the thumbnail of a picture from its bytes, as the catalogue keeps it; empty when there can be none. None is
    // made without the function. Called on the readers; throws nothing.
    using ThumbnailFunction = std::function<std::vector<std::byte>(std::span<const std::uint8_t> bytes)>;

    FolderWalk::Links links = FolderWalk::Links::Pass;
    unsigned readers = 1; // how many threads read, at least 1
    ThumbnailFunction makeThumbnail;
};

class ImportPipeline
{
public:
    // `writer` is the calling thread. Everything given by reference outlives the pipeline. Throws HostError when a
    // reader cannot be started.
    ImportPipeline(Catalog& catalog, ImportScope scope, ImportSettings settings, Halyon::CHynThreadManager& manager,
                   Halyon::CHynWorkerThread& writer, ImportObserver& observer);
    // Waits for the files that the readers are at. [writer]
    ~ImportPipeline();
    ImportPipeline(const ImportPipeline&) = delete;
    ImportPipeline& operator=(const ImportPipeline&) = delete;

    // Begins; the observer is told when it is over, maybe from in here. [writer]
    void Begin() noexcept;

    // Stores what was read so far and ends: nothing that a reader is still at is waited for. Not when it is over.
    // [writer]
    void Stop() noexcept;

    // Tries once more to store what was read, after an end by a failure. Throws as the import does. [writer]
    void StoreRest();

    [[nodiscard]] bool IsOver() const noexcept { return m_isOver; } // [writer]

private:
    class Reader;

    void HandOut(const FileJobPtr& spJob);
    void OnRead(std::uint32_t reader, Carried<FileJob>& job) noexcept;
    template <class Work>
    void Step(Work work) noexcept;

    Catalog& m_catalog;
    const ImportScope m_scope;
    const ImportSettings m_settings;
    Halyon::CHynWorkerThread& m_writer;
    ImportObserver& m_observer;
    Halyon::CHynAutoPtr<Halyon::IHynEventHandler> m_spOnRead;
    std::vector<Halyon::CHynAutoPtr<Reader>> m_readers;
    std::unique_ptr<Importer> m_importer;
    std::vector<std::size_t> m_jobsOut; // by reader
    bool m_isOver = false;
};
} // namespace HynHost
