// Threads and sleep.

#include <halyon/platform/TovPCMac.h>

#include <cerrno>
#include <climits>
#include <ctime>
#include <memory>
#include <new>

#include <pthread.h>
#include <sys/resource.h>

#include "Futex.h"
#include "TovHandleTable.h"

using Halyon::Linux::Deadline;
using Halyon::Linux::FutexWait;
using Halyon::Linux::FutexWake;
using Halyon::Linux::HandleTable;

namespace
{
// What a running thread and its references share.
struct ThreadState
{
    TovThreadProc proc = nullptr;
    void* pArgument = nullptr;
    std::uint32_t ended = 0;    // 1 when the body has returned
    std::uint32_t threadID = 0; // the kernel's, once it runs
};

struct ThreadSlot
{
    std::mutex mutex;
    std::uint32_t generation = 1;         // guarded by mutex
    std::shared_ptr<ThreadState> spState; // guarded by mutex
    std::uint32_t nextFree = 0;
};

HandleTable<ThreadSlot>& Slots() noexcept
{
    static HandleTable<ThreadSlot> slots;
    return slots;
}

constexpr unsigned kIndexBits = sizeof(TovThreadRef) == 8 ? 32 : 20;
constexpr std::uint32_t kGenerationMask = sizeof(TovThreadRef) == 8 ? 0xFFFFFFFFu : 0xFFFu;

std::uint32_t IndexOf(TovThreadRef thread) noexcept
{
    return static_cast<std::uint32_t>(thread & ((TovThreadRef{1} << kIndexBits) - 1)) - 1;
}

// The state behind a reference, empty for 0 and for one closed before.
std::shared_ptr<ThreadState> StateOf(TovThreadRef thread) noexcept
{
    ThreadSlot* slot = thread != 0 ? Slots().Find(IndexOf(thread)) : nullptr;
    if (slot == nullptr)
        return nullptr;
    const std::scoped_lock lock(slot->mutex);
    return slot->generation == static_cast<std::uint32_t>(thread >> kIndexBits) ? slot->spState : nullptr;
}

void* ThreadMain(void* argument)
{
    const std::unique_ptr<std::shared_ptr<ThreadState>> spOwned(static_cast<std::shared_ptr<ThreadState>*>(argument));
    ThreadState& state = **spOwned;
    std::atomic_ref(state.threadID).store(GetCurrentTovThreadID(), std::memory_order_release);
    FutexWake(&state.threadID, INT_MAX);
    state.proc(state.pArgument);
    std::atomic_ref(state.ended).store(1, std::memory_order_release);
    FutexWake(&state.ended, INT_MAX);
    return nullptr;
}

bool StartDetached(const std::shared_ptr<ThreadState>& spState, std::uint32_t stackSize) noexcept
{
    auto* owned = new (std::nothrow) std::shared_ptr<ThreadState>(spState);
    if (owned == nullptr)
        return false;
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0)
    {
        delete owned;
        return false;
    }
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    // A size that the system refuses leaves its usual one.
    if (stackSize != 0)
        pthread_attr_setstacksize(&attributes, stackSize);
    pthread_t thread{};
    const bool started = pthread_create(&thread, &attributes, ThreadMain, owned) == 0;
    pthread_attr_destroy(&attributes);
    if (!started)
        delete owned;
    return started;
}

std::atomic<TovSleepProc> g_sleepProc{nullptr};

void SleepMicroseconds(std::uint64_t microseconds) noexcept
{
    if (const TovSleepProc proc = g_sleepProc.load(std::memory_order_acquire))
    {
        proc(microseconds);
        return;
    }
    timespec left{};
    left.tv_sec = static_cast<std::time_t>(microseconds / 1'000'000);
    left.tv_nsec = static_cast<decltype(left.tv_nsec)>(microseconds % 1'000'000 * 1'000);
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR)
    {
    }
}
} // namespace

TovThreadRef TovCreateThread(TovThreadProc proc, void* pArgument, int nFlags, std::uint32_t uStackSize) noexcept
try
{
    if (proc == nullptr || nFlags != 0)
        return 0;
    auto spState = std::make_shared<ThreadState>();
    spState->proc = proc;
    spState->pArgument = pArgument;
    const std::uint32_t index = Slots().Acquire();
    if (index == HandleTable<ThreadSlot>::kNone)
        return 0;
    if (!StartDetached(spState, uStackSize))
    {
        Slots().Free(index);
        return 0;
    }
    ThreadSlot& slot = *Slots().Find(index);
    const std::scoped_lock lock(slot.mutex);
    slot.spState = std::move(spState);
    return (TovThreadRef{slot.generation} << kIndexBits) | (TovThreadRef{index} + 1);
}
catch (const std::bad_alloc&)
{
    return 0;
}

int TovWaitThread(TovThreadRef thread, std::int32_t nMilliseconds) noexcept
{
    const std::shared_ptr<ThreadState> spState = StateOf(thread);
    if (spState == nullptr)
        return 1;
    Deadline deadline(nMilliseconds);
    const std::atomic_ref ended(spState->ended);
    while (ended.load(std::memory_order_acquire) == 0)
    {
        if (deadline.HasPassed())
            return 1;
        FutexWait(&spState->ended, 0, deadline.Left());
    }
    return 0;
}

void TovCloseThreadRef(TovThreadRef thread) noexcept
{
    ThreadSlot* slot = thread != 0 ? Slots().Find(IndexOf(thread)) : nullptr;
    if (slot == nullptr)
        return;
    {
        const std::scoped_lock lock(slot->mutex);
        if (slot->generation != static_cast<std::uint32_t>(thread >> kIndexBits) || slot->spState == nullptr)
            return;
        slot->generation = (slot->generation + 1) & kGenerationMask;
        slot->spState.reset();
    }
    Slots().Free(IndexOf(thread));
}

int TovSetThreadPriority(TovThreadRef thread, int nPriority) noexcept
{
    const std::shared_ptr<ThreadState> spState = StateOf(thread);
    if (spState == nullptr)
        return 1;
    const std::atomic_ref threadID(spState->threadID);
    while (threadID.load(std::memory_order_acquire) == 0)
        FutexWait(&spState->threadID, 0, nullptr);
    if (std::atomic_ref(spState->ended).load(std::memory_order_acquire) != 0)
        return 1;
    // Niceness counts the other way round: a patient thread is a nice one.
    return setpriority(PRIO_PROCESS, threadID.load(std::memory_order_relaxed), -nPriority) == 0 ? 0 : 1;
}

void TovSleep(std::uint32_t uMilliseconds) noexcept
{
    SleepMicroseconds(std::uint64_t{uMilliseconds} * 1000);
}

void TovUSleep(std::uint32_t uMicroseconds) noexcept
{
    SleepMicroseconds(uMicroseconds);
}

TovSleepProc TovSetSleepProc(TovSleepProc proc) noexcept
{
    return g_sleepProc.exchange(proc, std::memory_order_acq_rel);
}
