// The process's main thread as an event thread: handlers run between the events of the user interface.
//
// It makes no thread. A timer of the application's event loop fires at once and then every 0.01 s, and each tick
// handles at most one event, so a burst never holds the interface up. The thread manager makes it (`InitMainThread`).
#pragma once

#include <halyon/platform/EventLoop.h>
#include <halyon/thread/CHynEventThread.h>

namespace Halyon
{
class CHynMainThread : public CHynEventThread
{
public:
    // `uThreadID`: the main thread's identifier.
    explicit CHynMainThread(std::uint32_t uThreadID);

    std::uint32_t GetThreadID() override { return m_uThreadID; }
    HynResult Start(IHynThreadManager* pManager, int* pStarted) override;
    HynResult Stop() override;
    HynResult Run() override;
    HynResult SetPriority(int nPriority) override;
    HynResult PostEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam, IHynEventParam* pParam,
                        void* pReceiver) override;
    HynResult SendEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam, IHynEventParam* pParam,
                        void* pReceiver) override;

    // Ends the timer. [main]
    ~CHynMainThread() override;

    // Handles at most one event. Always HYN_S_OK. [main]
    virtual HynResult ProcessEvent();
    // The counter that each posted event raises by one. [any]
    virtual MPQueueID GetQueueID();

    HynResult DefaultQueryInterface(const HYN_GUID& iid, void** ppv) override;

private:
    const std::uint32_t m_uThreadID;
    CHynLock m_lock;
    MPQueueID m_notifications = nullptr;
    EventLoopTimerRef m_timer = nullptr;
};

// The timer's callback: takes one notification, if there is one, and handles one event. Null is ignored. [main]
void TimerProc(EventLoopTimerRef timer, void* pMainThread);
} // namespace Halyon
