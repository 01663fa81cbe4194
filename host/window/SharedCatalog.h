// A catalogue that the workers of a window use, each through an engine handle of its own.
//
//     SharedCatalog catalog("catalog.db");
//     if (catalog.Open(Catalog::Mode::Existing))
//         catalog.Read([](Database& database) { return ReadDetails(database, ...); });
//
// Nobody waits longer for a locked catalogue than until Stop(), who writes hardly at all: then calls throw Stopped.
// They throw HostError for what the catalogue refuses.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <halyon/platform/TovMutex.h>
#include <host/Catalog.h>
#include <host/CatalogVolumes.h>
#include <host/window/CatalogLock.h>

namespace HynHost
{
// Thrown when somebody no longer wants what is being done; nothing is told of it.
struct Stopped
{
};

class SharedCatalog
{
public:
    explicit SharedCatalog(std::string file) : m_file(std::move(file)) {}

    // Opens it unless it is open. False when there is none and it is not to be made. Throws Stopped also when `stop`
    // gets true. [any, one at a time]
    bool Open(Catalog::Mode mode, const std::function<bool()>& stop = {});

    [[nodiscard]] bool IsOpen() const noexcept { return m_isOpen.load(std::memory_order_acquire); }
    [[nodiscard]] const std::string& File() const noexcept { return m_file; }

    // Waits end, now and from now on; what need not wait is still done. [any]
    void Stop() noexcept { m_stopped.store(true); }
    [[nodiscard]] bool IsStopped() const noexcept { return m_stopped.load(); }

    // Waits until nobody's lock is in the way, or throws Stopped, also when `stop` gets true. [any]
    void WaitFor(Transaction::Kind kind, const std::function<bool()>& stop = {}) const;

    // Calls `work(database)` and gives its result. `action` is for what is thrown ("cannot search"). [any & open]
    template <class Work>
    auto Read(const char* action, Work work)
    {
        return Guarded(action,
                       [&]
                       {
                           WaitFor(Transaction::Kind::Read);
                           return work(m_catalog->GetDatabase());
                       });
    }

    // The same in a transaction, which is committed unless `work` throws. Waits for nobody but this process: while
    // others hold the lock, it throws Stopped and has done nothing. [any & open]
    template <class Work>
    void Write(const char* action, Work work)
    {
        Guarded(action,
                [&]
                {
                    const auto giveUp = std::chrono::steady_clock::now() + kPatience;
                    WaitFor(Transaction::Kind::Exclusive,
                            [giveUp] { return std::chrono::steady_clock::now() >= giveUp; });
                    Transaction transaction(m_catalog->GetDatabase());
                    work(m_catalog->GetDatabase());
                    transaction.Commit();
                });
    }

    // Calls `work()`; a DatabaseError becomes a HostError that tells its reason. [any & open]
    template <class Work>
    auto Guarded(const char* action, Work work)
    {
        try
        {
            return work();
        }
        catch (const DatabaseError& failure)
        {
            ThrowRefusal(action, m_file, failure);
        }
    }

    // [any & open]
    [[nodiscard]] Catalog& Get() noexcept { return *m_catalog; }

    // Where the volumes are now, or were a few seconds ago. [any & open]
    [[nodiscard]] std::shared_ptr<const VolumePlaces> Places();

private:
    static constexpr auto kPatience = std::chrono::milliseconds(20); // readers of this process are faster

    [[nodiscard]] std::function<bool()> WithStop(const std::function<bool()>& stop) const;

    const std::string m_file;
    std::atomic<bool> m_stopped = false;
    std::atomic<bool> m_isOpen = false;
    std::unique_ptr<Catalog> m_catalog;  // written once, before m_isOpen
    std::unique_ptr<CatalogLock> m_lock; // the same
    Halyon::TovMutex m_mutex;
    std::shared_ptr<const VolumePlaces> m_places HYN_GUARDED_BY(m_mutex);
    std::chrono::steady_clock::time_point m_placesUntil HYN_GUARDED_BY(m_mutex);
};
} // namespace HynHost
