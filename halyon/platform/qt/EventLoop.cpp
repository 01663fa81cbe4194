// The main event loop over the process's Qt event loop.

#include <halyon/platform/EventLoop.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <new>
#include <vector>

#include <QCoreApplication>
#include <QTimer>

#include <halyon/platform/TovMutex.h>

#include "Application.h"

namespace Halyon
{
struct OpaqueEventLoop
{
};

struct OpaqueMPQueue
{
    std::atomic<std::uint32_t> count{0};
};

struct OpaqueEventLoopTimer
{
    std::chrono::milliseconds firstDelay;
    std::chrono::milliseconds interval; // 0: fires once
    EventLoopTimerProcPtr proc;
    void* pUserData;
    std::unique_ptr<QTimer> spTimer; // null while the program has no application object
    int nCalls = 0;                  // of proc that have not returned
    bool bRemoved = false;           // goes when they have
};

namespace
{
OpaqueEventLoop g_mainLoop;

// The loop's state that other threads reach. The application object may come and go several times in a program.
TovMutex g_mutex;
bool g_applicationLives HYN_GUARDED_BY(g_mutex) = false;
bool g_quitRequested HYN_GUARDED_BY(g_mutex) = false;
std::vector<OpaqueEventLoopTimer*> g_timers; // main thread only

// Set when there was no memory to tell the loop of the request: the next timer does.
std::atomic<bool> g_quitUntold{false};

bool TakeQuitRequest() noexcept
{
    const TovMutexLock lock(g_mutex);
    return std::exchange(g_quitRequested, false);
}

void QuitOnRequest()
{
    if (TakeQuitRequest())
        QCoreApplication::quit();
}

void Fire(OpaqueEventLoopTimer* timer)
{
    if (g_quitUntold.exchange(false))
        QuitOnRequest();
    if (timer->interval.count() == 0)
        timer->spTimer->stop();
    else if (timer->spTimer->intervalAsDuration() != timer->interval)
        timer->spTimer->start(timer->interval);
    ++timer->nCalls;
    timer->proc(timer, timer->pUserData);
    if (--timer->nCalls != 0 || !timer->bRemoved)
        return;
    // This runs inside the toolkit timer's own signal.
    timer->spTimer.release()->deleteLater();
    delete timer;
}

void Begin(OpaqueEventLoopTimer* timer)
{
    timer->spTimer = std::make_unique<QTimer>();
    timer->spTimer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer->spTimer.get(), &QTimer::timeout, timer->spTimer.get(), [timer] { Fire(timer); });
    timer->spTimer->start(timer->firstDelay);
}

void OnApplicationEnds()
{
    for (OpaqueEventLoopTimer* timer : g_timers)
        timer->spTimer.reset();
    const TovMutexLock lock(g_mutex);
    g_applicationLives = false;
}

void OnApplicationBegins()
{
    qAddPostRoutine(OnApplicationEnds);
    for (OpaqueEventLoopTimer* timer : g_timers)
        Begin(timer);
    const TovMutexLock lock(g_mutex);
    g_applicationLives = true;
}

Q_COREAPP_STARTUP_FUNCTION(OnApplicationBegins)

void Execute()
{
    if (!TakeQuitRequest())
        QCoreApplication::exec();
}

std::chrono::milliseconds Milliseconds(EventTimerInterval seconds)
{
    return std::chrono::round<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}
} // namespace

void RunApplicationEventLoop()
{
    // A program with the screen's tools needs the application object that they need, or they could not work in its
    // loop.
    if (MakeScreenApplication != nullptr)
        MakeScreenApplication();
    if (QCoreApplication::instance() != nullptr)
    {
        Execute();
        return;
    }
    static char name[] = "halyon";
    static char* arguments[] = {name, nullptr};
    static int count = 1;
    const QCoreApplication application(count, arguments);
    Execute();
}

void QuitApplicationEventLoop() noexcept
try
{
    const TovMutexLock lock(g_mutex);
    g_quitRequested = true;
    // Queued, so that it reaches a loop which is about to run as well; the request itself decides.
    if (g_applicationLives)
        QMetaObject::invokeMethod(QCoreApplication::instance(), &QuitOnRequest, Qt::QueuedConnection);
}
catch (const std::bad_alloc&)
{
    g_quitUntold = true;
}

EventLoopRef GetMainEventLoop() noexcept
{
    return &g_mainLoop;
}

OSStatus InstallEventLoopTimer(EventLoopRef /*loop*/, EventTimerInterval firstDelay, EventTimerInterval interval,
                               EventLoopTimerProcPtr proc, void* pUserData, EventLoopTimerRef* pTimer) noexcept
try
{
    // The comparisons are false for not-a-number.
    if (proc == nullptr || !(firstDelay >= 0.0) || !(interval >= 0.0))
        return paramErr;
    auto spTimer = std::make_unique<OpaqueEventLoopTimer>();
    spTimer->firstDelay = Milliseconds(firstDelay);
    spTimer->interval = Milliseconds(interval);
    spTimer->proc = proc;
    spTimer->pUserData = pUserData;
    if (QCoreApplication::instance() != nullptr)
        Begin(spTimer.get());
    g_timers.push_back(spTimer.get());
    OpaqueEventLoopTimer* timer = spTimer.release();
    if (pTimer != nullptr)
        *pTimer = timer;
    return noErr;
}
catch (const std::bad_alloc&)
{
    return memFullErr;
}

OSStatus RemoveEventLoopTimer(EventLoopTimerRef timer) noexcept
{
    if (timer == nullptr)
        return noErr;
    std::erase(g_timers, timer);
    timer->bRemoved = true;
    if (timer->nCalls == 0)
        delete timer;
    else
        timer->spTimer->stop();
    return noErr;
}

OSStatus MPCreateQueue(MPQueueID* pQueue) noexcept
{
    if (pQueue == nullptr)
        return paramErr;
    *pQueue = new (std::nothrow) OpaqueMPQueue;
    return *pQueue != nullptr ? noErr : memFullErr;
}

OSStatus MPDeleteQueue(MPQueueID queue) noexcept
{
    delete queue;
    return noErr;
}

OSStatus MPNotifyQueue(MPQueueID queue, void* /*pFirst*/, void* /*pSecond*/, void* /*pThird*/) noexcept
{
    if (queue == nullptr)
        return paramErr;
    queue->count.fetch_add(1, std::memory_order_release);
    return noErr;
}

OSStatus MPWaitOnQueue(MPQueueID queue, void** /*ppFirst*/, void** /*ppSecond*/, void** /*ppThird*/,
                       std::int32_t /*nTimeout*/) noexcept
{
    if (queue == nullptr)
        return paramErr;
    std::uint32_t count = queue->count.load(std::memory_order_relaxed);
    while (count != 0)
    {
        if (queue->count.compare_exchange_weak(count, count - 1, std::memory_order_acquire, std::memory_order_relaxed))
            return noErr;
    }
    return kMPTimeoutErr;
}
} // namespace Halyon
