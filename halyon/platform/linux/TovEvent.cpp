// Events: generation and signal in one word that the kernel can wait on.

#include <halyon/platform/TovPCMac.h>

#include <climits>

#include "Futex.h"
#include "TovHandleTable.h"

using Halyon::Linux::Deadline;
using Halyon::Linux::FutexWait;
using Halyon::Linux::FutexWake;
using Halyon::Linux::HandleTable;

namespace
{
struct EventSlot
{
    // The low bit is the signal, the rest the generation, which closing raises. Odd generations are in use.
    std::uint32_t word = 0;
    std::atomic<std::uint32_t> waiters{0};
    std::uint32_t nextFree = 0;
};

constexpr std::uint32_t kSignal = 1;
constexpr std::uint32_t kGenerationStep = 2;
constexpr std::uint32_t kDeadHandlePauseMilliseconds = 10;

HandleTable<EventSlot>& Slots() noexcept
{
    static HandleTable<EventSlot> slots;
    return slots;
}

// A handle: the slot's number plus 1 below, the generation above.
struct Handle
{
    EventSlot* slot = nullptr;
    std::uint32_t index = 0;
    std::uint32_t generation = 0; // with the signal bit 0
};

constexpr unsigned kIndexBits = sizeof(TovEventRef) == 8 ? 32 : 20;

Handle Resolve(TovEventRef event) noexcept
{
    if (event == 0)
        return {};
    const auto index = static_cast<std::uint32_t>(event & ((TovEventRef{1} << kIndexBits) - 1)) - 1;
    const auto generation = static_cast<std::uint32_t>(event >> kIndexBits) * kGenerationStep;
    return {Slots().Find(index), index, generation};
}

bool IsCurrent(const Handle& handle, std::uint32_t word) noexcept
{
    return (word & ~kSignal) == handle.generation;
}
} // namespace

TovEventRef TovCreateEvent(int bManualReset, int bInitialState) noexcept
{
    if (bManualReset != 0)
        return 0;
    const std::uint32_t index = Slots().Acquire();
    if (index == HandleTable<EventSlot>::kNone)
        return 0;
    const std::atomic_ref word(Slots().Find(index)->word);
    const std::uint32_t generation = word.load(std::memory_order_relaxed) & ~kSignal;
    if (bInitialState != 0)
        word.fetch_or(kSignal, std::memory_order_release);
    return (static_cast<TovEventRef>(generation / kGenerationStep) << kIndexBits) | (TovEventRef{index} + 1);
}

int TovSetEvent(TovEventRef event) noexcept
{
    const Handle handle = Resolve(event);
    if (handle.slot == nullptr)
        return 1;
    const std::atomic_ref word(handle.slot->word);
    std::uint32_t seen = word.load(std::memory_order_relaxed);
    do
    {
        if (!IsCurrent(handle, seen))
            return 1;
    } while (!word.compare_exchange_weak(seen, seen | kSignal));
    if (handle.slot->waiters.load() != 0)
        FutexWake(&handle.slot->word, 1);
    return 0;
}

int TovWaitEvent(TovEventRef event, std::int32_t nMilliseconds) noexcept
{
    const Handle handle = Resolve(event);
    Deadline deadline(nMilliseconds);
    bool waited = false;
    while (handle.slot != nullptr)
    {
        const std::atomic_ref word(handle.slot->word);
        std::uint32_t seen = word.load(std::memory_order_acquire);
        if (!IsCurrent(handle, seen))
        {
            if (waited)
                return 1;
            break;
        }
        if ((seen & kSignal) != 0)
        {
            if (word.compare_exchange_weak(seen, handle.generation, std::memory_order_acquire))
                return 0;
            continue;
        }
        if (deadline.HasPassed())
            return 1;
        waited = true;
        handle.slot->waiters.fetch_add(1);
        FutexWait(&handle.slot->word, handle.generation, deadline.Left());
        handle.slot->waiters.fetch_sub(1);
    }
    TovSleep(kDeadHandlePauseMilliseconds);
    return 1;
}

void TovCloseEvent(TovEventRef event) noexcept
{
    const Handle handle = Resolve(event);
    if (handle.slot == nullptr)
        return;
    const std::atomic_ref word(handle.slot->word);
    std::uint32_t seen = word.load(std::memory_order_relaxed);
    std::uint32_t next = 0;
    do
    {
        if (!IsCurrent(handle, seen))
            return;
        next = handle.generation + kGenerationStep;
        if constexpr (kIndexBits < 32)
            next &= (std::uint32_t{1} << (33 - kIndexBits)) - 1;
    } while (!word.compare_exchange_weak(seen, next));
    FutexWake(&handle.slot->word, INT_MAX);
    Slots().Free(handle.index);
}
