// Threads.
//
// A thread that was waited for has been joined: its stack is free, its thread-local objects are destroyed, and none of
// this code runs on it any more, so the module that holds the code may be unloaded. A thread that nobody waits for is
// detached by whoever lets go of it last: the reference, a waiter, or the thread itself.

#include <halyon/platform/TovPCMac.h>

#include <algorithm>
#include <climits>
#include <cstring>

#include "Futex.h"
#include "TovHandleTable.h"

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

using Halyon::Linux::Deadline;
using Halyon::Linux::FutexWait;
using Halyon::Linux::FutexWake;
using Halyon::Linux::HandleSlot;
using Halyon::Linux::HandleTable;

namespace
{
// Steps in the life of a thread, in a word that waiters sleep on.
enum Phase : std::uint32_t
{
    kRunning,
    kReturned, // the body has returned; the thread is about to be gone
    kJoining,  // one of the waiters joins it
    kJoined
};

// The running body, and every call that works on the thread, count as uses of the slot.
struct ThreadSlot : HandleSlot
{
    TovThreadProc proc = nullptr;
    void* pArgument = nullptr;
    pthread_t thread{}; // written before the reference is handed out
    std::uint32_t uForkCount = 0;
    std::atomic<std::uint32_t> threadID{0}; // 0 until it runs
    std::atomic<std::uint32_t> phase{kRunning};
    TovCriticalSection running{0, 0}; // held where the thread must not get past kRunning
};

HandleTable<ThreadSlot> constinit g_threads;

// After a fork the parent's threads do not exist.
bool IsOfThisProcess(const ThreadSlot& slot) noexcept
{
    return slot.uForkCount == TovGetForkCount();
}

void Detach(ThreadSlot& slot) noexcept
{
    if (slot.phase.load(std::memory_order_acquire) != kJoined && IsOfThisProcess(slot))
        pthread_detach(slot.thread);
    g_threads.Free(slot);
}

const std::uint32_t* Word(const std::atomic<std::uint32_t>& value) noexcept
{
    return reinterpret_cast<const std::uint32_t*>(&value);
}

void Publish(std::atomic<std::uint32_t>& value, std::uint32_t what) noexcept
{
    value.store(what, std::memory_order_release);
    FutexWake(Word(value), INT_MAX);
}

// A use of the slot, from construction to the end of the scope.
class ThreadUse
{
public:
    explicit ThreadUse(ThreadSlot* slot) noexcept : m_slot(slot) {}
    ~ThreadUse()
    {
        if (m_slot != nullptr && g_threads.Unpin(*m_slot))
            Detach(*m_slot);
    }
    ThreadUse(const ThreadUse&) = delete;
    ThreadUse& operator=(const ThreadUse&) = delete;

private:
    ThreadSlot* m_slot;
};

// Says that the body has ended, however it did: by returning, or by leaving through pthread_exit.
class BodyEnd
{
public:
    explicit BodyEnd(ThreadSlot& slot) noexcept : m_slot(slot) {}
    ~BodyEnd()
    {
        TovEnterCriticalSection(&m_slot.running);
        m_slot.phase.store(kReturned, std::memory_order_release);
        TovLeaveCriticalSection(&m_slot.running);
        FutexWake(Word(m_slot.phase), INT_MAX);
    }
    BodyEnd(const BodyEnd&) = delete;
    BodyEnd& operator=(const BodyEnd&) = delete;

private:
    ThreadSlot& m_slot;
};

void* ThreadMain(void* argument)
{
    auto& slot = *static_cast<ThreadSlot*>(argument);
    const ThreadUse use(&slot);
    const BodyEnd end(slot);
    Publish(slot.threadID, GetCurrentTovThreadID());
    slot.proc(slot.pArgument);
    return nullptr;
}

bool StartThread(ThreadSlot& slot, std::uint32_t stackSize) noexcept
{
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0)
        return false;
    // A size that the system refuses leaves its usual one.
    if (stackSize != 0)
        pthread_attr_setstacksize(&attributes, stackSize);
    const bool started = pthread_create(&slot.thread, &attributes, ThreadMain, &slot) == 0;
    pthread_attr_destroy(&attributes);
    return started;
}

// Joins a thread whose body has returned; what is left of it ends soon, but its thread-local objects may take a while.
bool Join(ThreadSlot& slot, const Deadline& deadline) noexcept
{
    if (deadline.End() == nullptr)
        return pthread_join(slot.thread, nullptr) == 0;
    const timespec end = deadline.EndInRealTime();
    return pthread_timedjoin_np(slot.thread, nullptr, &end) == 0;
}

// The system's number for a thread of this priority: it counts niceness, so a patient thread is a nice one. The
// process's usual niceness is that of its first thread; other threads inherit it unless they were made by a patient
// one.
int NicenessOf(int nPriority) noexcept
{
    constexpr int kRange = 40;
    return getpriority(PRIO_PROCESS, static_cast<id_t>(getpid())) - std::clamp(nPriority, -kRange, kRange);
}
} // namespace

TovThreadRef TovCreateThread(TovThreadProc proc, void* pArgument, int nFlags, std::uint32_t uStackSize) noexcept
{
    if (proc == nullptr || nFlags != 0)
        return 0;
    ThreadSlot* slot = g_threads.Acquire();
    if (slot == nullptr)
        return 0;
    slot->proc = proc;
    slot->pArgument = pArgument;
    slot->uForkCount = TovGetForkCount();
    slot->threadID.store(0, std::memory_order_relaxed);
    slot->phase.store(kRunning, std::memory_order_relaxed);
    const TovThreadRef thread = g_threads.Open(*slot, 0, 1);
    if (StartThread(*slot, uStackSize))
        return thread;
    g_threads.Close(thread);
    g_threads.Unpin(*slot);
    g_threads.Free(*slot);
    return 0;
}

int TovWaitThread(TovThreadRef thread, std::int32_t nMilliseconds) noexcept
{
    ThreadSlot* slot = g_threads.Pin(thread);
    const ThreadUse use(slot);
    if (slot == nullptr || !IsOfThisProcess(*slot))
        return 1;
    const Deadline deadline(nMilliseconds);
    for (;;)
    {
        std::uint32_t seen = slot->phase.load(std::memory_order_acquire);
        if (seen == kJoined)
            return 0;
        if (seen != kReturned)
        {
            if (!FutexWait(Word(slot->phase), seen, deadline))
                return 1;
        }
        else if (slot->phase.compare_exchange_strong(seen, kJoining, std::memory_order_acquire))
        {
            const bool joined = Join(*slot, deadline);
            Publish(slot->phase, joined ? kJoined : kReturned);
            return joined ? 0 : 1;
        }
    }
}

void TovCloseThreadRef(TovThreadRef thread) noexcept
{
    ThreadSlot* slot = g_threads.Find(thread);
    if (g_threads.Close(thread) == HandleTable<ThreadSlot>::Closing::Unused)
        Detach(*slot);
}

void TovSetCurrentThreadName(const char* pszName) noexcept
{
    if (pszName == nullptr)
        return;
    // The kernel keeps 15 bytes.
    char name[16] = {};
    std::strncpy(name, pszName, sizeof name - 1);
    pthread_setname_np(pthread_self(), name);
}

int TovSetThreadPriority(TovThreadRef thread, int nPriority) noexcept
{
    ThreadSlot* slot = g_threads.Pin(thread);
    const ThreadUse use(slot);
    if (slot == nullptr || !IsOfThisProcess(*slot))
        return 1;
    const Deadline never(kTovForever);
    while (slot->threadID.load(std::memory_order_acquire) == 0)
        FutexWait(Word(slot->threadID), 0, never);
    // The identifier may name a stranger's thread once this one is gone.
    TovEnterCriticalSection(&slot->running);
    const bool done =
        slot->phase.load(std::memory_order_relaxed) == kRunning &&
        setpriority(PRIO_PROCESS, slot->threadID.load(std::memory_order_relaxed), NicenessOf(nPriority)) == 0;
    TovLeaveCriticalSection(&slot->running);
    return done ? 0 : 1;
}
