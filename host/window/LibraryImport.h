// The import of a Library: what runs on its writer, and what the window is told of it.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <host/FunctionWorker.h>
#include <host/ImportPipeline.h>
#include <host/window/Library.h>
#include <host/window/SharedCatalog.h>

namespace HynHost
{
class LibraryImport : public ImportObserver
{
public:
    // What is told, on workers.
    struct Results
    {
        std::function<void(const std::string& folder, const std::string& reason)> onRefused;
        std::function<void(const ImportState& state)> onProgress;
        std::function<void(const ImportReport& report, const std::string& failure)> onEnded;
        std::function<void()> onStored;                           // what the catalogue holds has changed
        std::function<void(std::function<void()> edit)> whenFree; // to do it as the EditQueue does
        std::function<void(const std::string& message)> onFailure;
    };

    // Throws HostError when a worker cannot be started. All given by reference outlive the object.
    LibraryImport(Halyon::CHynThreadManager& manager, SharedCatalog& catalog, FunctionWorker& writer, Results results);

    // Checks the folder and imports it. Requires: nothing is being imported. [main]
    void Start(const std::string& folder);

    // The end is told as soon as the catalogue lets what was read be stored, and at once when it is locked; then that
    // is stored later. [main]
    void Cancel();

    // Ends what runs, without a word, and stores what was read if it can be stored at once. [the writer]
    void Finish() noexcept;
    // Requires: the catalogue is stopped. [main]
    void StopCounting() { m_counter.Stop(); }

private:
    using Clock = std::chrono::steady_clock;

    void Run(const std::string& folder, std::uint64_t number) noexcept;
    void Begin(const std::string& folder);
    void Count(const ImportScope& scope, std::uint64_t number) noexcept;
    void StoreRest(ImportPipeline& pipeline);
    [[nodiscard]] bool IsFirstAt(std::uint64_t number) noexcept;
    [[nodiscard]] bool IsOutOfPatience() const;
    [[nodiscard]] double SecondsLeft(std::uint64_t done, std::uint64_t total);

    [[nodiscard]] bool MustStop() const noexcept override;
    [[nodiscard]] std::shared_ptr<void> BeforeLock(const ImportReport& soFar, Transaction::Kind kind) override;
    void OnProgress(const ImportReport& soFar, std::uint64_t looked, const std::string& folder) override;
    void OnEnded(const ImportReport& report, std::exception_ptr failure) override;

    Halyon::CHynThreadManager& m_manager;
    SharedCatalog& m_catalog;
    FunctionWorker& m_writer;
    const Results m_results;

    // Imports are numbered from 1.
    std::uint64_t m_started = 0;                    // the main thread's own
    std::atomic<std::uint64_t> m_cancelledUpTo = 0; // this one and all before it
    std::atomic<std::uint64_t> m_begun = 0;         // this one was begun, or cancelled before that
    std::atomic<Clock::rep> m_cancelledAt = 0;      // since the clock's beginning
    std::atomic<std::uint64_t> m_number = 0;        // of the one that runs, or ran last; the writer sets it
    std::atomic<std::uint64_t> m_total = 0;         // its files; 0: not counted yet

    // The writer's own.
    std::shared_ptr<ImportPipeline> m_pipeline;                       // and of an edit that stores its rest
    std::deque<std::pair<Clock::time_point, std::uint64_t>> m_lately; // how much was done by when
    Clock::time_point m_showAt;
    std::uint64_t m_shown = 0; // files that were stored when that was last told

    FunctionWorker m_counter;
};
} // namespace HynHost
