// The worker: a thread that sleeps until events are posted to it and hands them to its handlers.
//
// Derive from it to run code of one's own at the start and the end of the thread (InitThread, ExitThread). Hosts take
// CHynWorkerThread, which is ready-made.
//
// Locks: `m_lock` is held by Start; order: m_lock before the manager's lock (Start registers). A post takes the lock of
// the queue's producers alone: the test for running and the insertion are one step under it. Handlers run under the
// queue's observer lock only.
//
// Lifetime: the last reference is not given back on the thread itself. The manager's table holds one while it runs.
#pragma once

#include <atomic>

#include <halyon/thread/CHynEventThread.h>
#include <halyon/thread/IHynThreadManager.h>

namespace Halyon
{
class CHynThread : public CHynEventThread
{
public:
    std::uint32_t GetThreadID() override { return m_uThreadID.load(std::memory_order_acquire); }
    HynResult Start(IHynThreadManager* pManager, int* pStarted) override;
    HynResult Stop() override;
    HynResult Run() override;
    HynResult SetPriority(int nPriority) override;
    HynResult PostEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam, IHynEventParam* pParam,
                        void* pReceiver) override;
    HynResult SendEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam, IHynEventParam* pParam,
                        void* pReceiver) override;

    // Stops the thread when it runs. A derived class whose InitThread, ExitThread or handlers use its own fields stops
    // it in its own destructor.
    ~CHynThread() override;
    HynResult DefaultQueryInterface(const HYN_GUID& iid, void** ppv) override;

    // Run on the new thread, before the first event and after the last; empty here. By then the identifier is known and
    // the manager, if there is one, knows the thread.
    virtual void InitThread();
    virtual void ExitThread();

    // As PostEvent; a non-zero `bFront` puts the event in front of everything pending. [any]
    HynResult PostEventEx(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam, IHynEventParam* pParam,
                          void* pReceiver, int bFront);

    // 1 while events are being handled, else 0. [any]
    [[nodiscard]] int IsBusy() const noexcept { return m_nBusy.load(std::memory_order_acquire); }

    // Non-zero when the thread does not run, or has been told to stop. [any]
    [[nodiscard]] int CheckExitFlag() const noexcept { return m_nExit.load(std::memory_order_acquire); }

    // The entry of the new thread: makes the identifier known and calls Run. `pThread` is the CHynThread. Returns 0.
    static std::uint32_t ThreadProc(void* pThread);

protected:
    // `nCapacity`: how many events may be pending. `pszName`: what debuggers call the thread, cut after 15 bytes; null
    // for no name of its own.
    explicit CHynThread(std::int32_t nCapacity, const char* pszName = nullptr);

private:
    HynResult CreateThread();
    void CloseHandles();
    void Drain();

    std::atomic<std::uint32_t> m_uThreadID{0};
    std::atomic<std::int32_t> m_nExit{1};
    std::atomic<TovThreadRef> m_thread{0};
    std::atomic<TovEventRef> m_event{0};
    CHynLock m_lock;
    std::atomic<std::int32_t> m_nBusy{0};
    bool m_bKnown HYN_GUARDED_BY(m_lock) = false; // whether the manager, if there is one, knows the thread
    CHynAutoPtr<IHynThreadManager> m_spManager;

    std::atomic<TovThreadRef> m_body{0};         // m_thread as Stop needs it: that one may become 0 early
    std::atomic<TovEventRef> m_identified{0};    // signalled once the identifier is known
    std::atomic<std::int32_t> m_nMayBeAsleep{0}; // whether a post has to signal the event
    char m_szName[16] = {};
};
} // namespace Halyon
