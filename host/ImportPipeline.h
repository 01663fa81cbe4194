// Runs an import on threads: readers look into files, one writer owns the database handle, the main thread shows how
// far it is. Everything crosses by posted events.
//
//     main ──begin, stop──▶ writer ──jobs──▶ readers
//       ▲                    │  ▲               │
//       └──progress, quit────┘  └──jobs, read───┘
//
// No queue ever fills: the writer has so many jobs out at most, and tells of its progress a few times a second.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <vector>

#include <halyon/thread/CHynThreadManager.h>
#include <halyon/thread/CHynWorkerThread.h>
#include <host/Importer.h>

namespace HynHost
{
class ImportPipeline
{
public:
    // `readers`: how many threads read, at least 1.
    ImportPipeline(Catalog& catalog, ImportScope scope, FolderWalk::Links links, unsigned readers, Progress& progress);
    ~ImportPipeline();
    ImportPipeline(const ImportPipeline&) = delete;
    ImportPipeline& operator=(const ImportPipeline&) = delete;

    // Runs the main event loop until the import has ended or was interrupted; every thread has ended then. Throws what
    // a thread ran into, HostError or DatabaseError. [main]
    ImportReport Run();

private:
    class Reader;
    class Ticker;

    void StartThreads();
    void CountFiles();
    void HandOut(const FileJobPtr& spJob);
    void OnBegin();
    void OnRead(std::uint32_t reader, Carried<FileJob>& job);
    void OnStop();
    void OnAllRead();
    void Quit();
    template <class Work>
    void OnWriter(Work work) noexcept;

    Catalog& m_catalog;
    ImportScope m_scope;
    FolderWalk::Links m_links;
    Progress& m_progress;
    Halyon::CHynAutoPtr<Halyon::CHynThreadManager> m_spManager;
    Halyon::CHynAutoPtr<Halyon::CHynWorkerThread> m_spWriter;
    std::vector<Halyon::CHynAutoPtr<Reader>> m_readers;

    // The writer's own.
    std::unique_ptr<Importer> m_importer;
    std::vector<std::size_t> m_jobsOut; // by reader
    std::chrono::steady_clock::time_point m_tellAt;
    bool m_quit = false;
    std::exception_ptr m_failure; // read when the writer has ended
    ImportReport m_report;        // the same
};
} // namespace HynHost
