// The pending events of one thread, and the handlers they go to.
//
// Thread objects own one each; hosts meet it through them. Any thread inserts; only the owning thread takes.
//
// Both locks of the owning thread's side cost it next to nothing (HynBiasedLock) once it has adopted the queue.
//
// Locks, in this order where two are held: `m_observerLock`, held across every handler of a dispatch; `m_takeLock`, the
// consumer's end of the list; `m_listLock`, the producers' end. A dispatch holds the first alone. Parameters are
// released with none of the list's locks held, so that their destructors may post.
#pragma once

#include <atomic>
#include <list>
#include <map>

#include <halyon/thread/HynBiasedLock.h>
#include <halyon/thread/HynEventChunks.h>
#include <halyon/thread/IHynEventHandler.h>

namespace Halyon
{
class CHynThreadEventQueue
{
public:
    // At most `nCapacity` events are ever pending; with 0 or less, none.
    explicit CHynThreadEventQueue(std::int32_t nCapacity);
    CHynThreadEventQueue(const CHynThreadEventQueue&) = delete;
    CHynThreadEventQueue& operator=(const CHynThreadEventQueue&) = delete;
    // Drops what is pending and releases the handlers that are left.
    virtual ~CHynThreadEventQueue();

    // Queues a copy of `info` at the back, or in front of everything pending. Returns 1, or 0 when the queue is full or
    // there is no memory. [any]
    int InsertEvent(const HynEventInfo& info, int bFront);
    // The same; the queue takes the parameter's reference over when it returns 1. [any]
    int InsertEvent(HynEventInfo&& info, int bFront);

    // The same, but returns -1 when `nClosed` is not 0. The look and the insertion are one step with respect to every
    // operation that takes events away: what is let in before `nClosed` is set is there for a ClearQueue after it.
    // Returns -2, too, instead of 0 when there is no memory. [any]
    int InsertEventUnless(const std::atomic<std::int32_t>& nClosed, HynEventInfo&& info, int bFront);

    // Drops everything pending. [any]
    void ClearQueue();

    // Drops pending events with any of `uCount` identifiers. HYN_S_OK, or HYN_E_FAIL for null or 0. [any]
    std::uint32_t RemoveEvents(const std::uint32_t* pIDs, std::uint32_t uCount);

    // Takes the front event and dispatches it. Returns 1, or 0 when nothing is pending. [owner]
    int ProcessNext();

    // Whether nothing is pending. [any]
    [[nodiscard]] bool IsEmpty() noexcept;

    // Makes the calling thread the owning one, for which taking and dispatching is cheap. Without an owner, and on
    // other threads, they work alike but cost more. Requires: no dispatch runs on the calling thread, and the owning
    // thread before it never uses the queue again. [any]
    void Adopt() noexcept;

    // The owning thread's last word. Requires: no dispatch runs. [owner]
    void Disown() noexcept;

    // Calls the handlers of `dwEventID` that are registered with `pReceiver`, in the order of their registration, until
    // one returns HYN_S_EVENT_HANDLED. Handlers registered meanwhile are not called, handlers unregistered meanwhile no
    // longer. Returns the last handler's result. HYN_E_NOHANDLER: none for the identifier. HYN_E_FAIL: none for the
    // receiver. [owner]
    HynResult Invoke(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam, IHynEventParam* pParam,
                     void* pReceiver);

    // Files a handler, with a reference, unless the same one stands there with the same `pUser`. Null is ignored.
    // Without memory it is not filed; AddObserver tells. [any]
    void RegisterObserver(std::uint32_t dwEventID, IHynEventHandler* pHandler, void* pUser);

    // The same. HYN_E_FAIL: there is no memory, it is not filed. [any]
    HynResult AddObserver(std::uint32_t dwEventID, IHynEventHandler* pHandler, void* pUser);

    // Removes the first handler that is the same and has this `pUser`; its reference is given back, after the dispatch
    // when one is running. When no handler of the identifier is left, its pending events are dropped. [any]
    void UnRegisterObserver(std::uint32_t dwEventID, IHynEventHandler* pHandler, void* pUser);

private:
    struct Observer
    {
        void* pUser;
        CHynAutoPtr<IHynEventHandler> spHandler;
        bool bRemoved = false; // during a dispatch, in which it may be running; swept after it
    };
    // Nodes, so that what is removed can be taken out of them without memory.
    using Observers = std::list<Observer>;
    struct ObserverList
    {
        Observers pairs;
        std::size_t uLive = 0; // pairs that have not been removed
    };

    template <class Predicate>
    void Drop(Predicate predicate);
    static Observers::iterator FindObserver(ObserverList& list, IHynEventHandler* pHandler, void* pUser);
    bool RemoveObserver(std::uint32_t dwEventID, IHynEventHandler* pHandler, void* pUser);
    void EndDispatch() HYN_REQUIRES(m_observerLock);
    bool HasRoom() noexcept HYN_REQUIRES(m_incoming.lock);
    int InsertFront(HynEventInfo&& info) HYN_REQUIRES(m_taken.lock, m_incoming.lock);

    // Each group of fields is used by another side, so each has cache lines of its own.
    struct alignas(64) ProducersEnd
    {
        explicit ProducersEnd(HynEventChunkPool& pool) noexcept : list(pool) {}

        CHynLock lock;
        HynEventChunks list HYN_GUARDED_BY(lock);
        std::int32_t nRoom HYN_GUARDED_BY(lock) = 0; // insertions that fit for certain
    };
    struct alignas(64) ConsumersEnd
    {
        explicit ConsumersEnd(HynEventChunkPool& pool) noexcept : list(pool) {}

        HynBiasedLock lock;
        HynEventChunks list HYN_GUARDED_BY(lock); // in front of the producers' list
        std::atomic<std::int32_t> nSize{}; // of the list; written under lock, read by producers that are out of room
    };

    const std::int32_t m_nCapacity;
    HynBiasedLock m_observerLock;
    int m_nDispatchDepth HYN_GUARDED_BY(m_observerLock) = 0;
    bool m_bSweep HYN_GUARDED_BY(m_observerLock) = false; // something was removed during a dispatch
    std::map<std::uint32_t, ObserverList> m_observers HYN_GUARDED_BY(m_observerLock);
    HynEventChunkPool m_pool;
    ProducersEnd m_incoming{m_pool};
    ConsumersEnd m_taken{m_pool};
};
} // namespace Halyon
