// Events: signals, waiters and generation in one word, so that no step can come between looking and changing.
//
// The signals of an open event are those that were given to a waiter that has not woken yet, and at most one that is
// kept for the next wait. So each signal that finds a waiter lets exactly one wait end, also when several signals
// follow each other before any waiter runs.

#include <halyon/platform/TovPCMac.h>

#include <climits>

#include "Futex.h"
#include "TovHandleTable.h"

using Halyon::Linux::Deadline;
using Halyon::Linux::FutexWait;
using Halyon::Linux::FutexWake;
using Halyon::Linux::HandleSlot;
using Halyon::Linux::HandleTable;
namespace SlotState = Halyon::Linux::SlotState;

namespace
{
using EventTable = HandleTable<HandleSlot>;

constinit EventTable g_events;

constexpr std::uint32_t kNoEventPauseMilliseconds = 10;

int FailNoEvent() noexcept
{
    TovSleep(kNoEventPauseMilliseconds);
    return 1;
}

// The wait of a thread that is counted among the slot's users: the slot stays this event's until it leaves.
int WaitCounted(HandleSlot& slot, TovEventRef event, const Deadline& deadline) noexcept
{
    bool hasTime = true;
    for (;;)
    {
        std::uint64_t seen = slot.state.load(std::memory_order_acquire);
        if (!EventTable::IsCurrent(event, seen))
        {
            if (g_events.Unpin(slot))
                g_events.Free(slot);
            return 1;
        }
        const bool signalled = SlotState::Signals(seen) != 0;
        if (!signalled && hasTime)
        {
            hasTime = FutexWait(slot.FutexWord(), static_cast<std::uint32_t>(seen), deadline);
            continue;
        }
        const std::uint64_t next = seen - SlotState::kUse - (signalled ? SlotState::kSignal : 0);
        if (slot.state.compare_exchange_weak(seen, next, std::memory_order_acq_rel))
            return signalled ? 0 : 1;
    }
}
} // namespace

TovEventRef TovCreateEvent(int bManualReset, int bInitialState) noexcept
{
    if (bManualReset != 0)
        return 0;
    HandleSlot* slot = g_events.Acquire();
    return slot != nullptr ? g_events.Open(*slot, bInitialState != 0 ? 1 : 0, 0) : 0;
}

int TovSetEvent(TovEventRef event) noexcept
{
    HandleSlot* slot = g_events.Find(event);
    if (slot == nullptr)
        return 1;
    std::uint64_t seen = slot->state.load(std::memory_order_relaxed);
    std::uint64_t next = 0;
    do
    {
        if (!EventTable::IsCurrent(event, seen))
            return 1;
        // A signal that is merged with one before it is written all the same: the thread that takes it must see what
        // its sender did first.
        next = SlotState::Signals(seen) <= SlotState::Uses(seen) ? seen + SlotState::kSignal : seen;
    } while (!slot->state.compare_exchange_weak(seen, next, std::memory_order_acq_rel, std::memory_order_relaxed));
    if (SlotState::Signals(seen) < SlotState::Uses(seen))
        FutexWake(slot->FutexWord(), 1);
    return 0;
}

int TovWaitEvent(TovEventRef event, std::int32_t nMilliseconds) noexcept
{
    HandleSlot* slot = g_events.Find(event);
    if (slot == nullptr)
        return FailNoEvent();
    std::uint64_t seen = slot->state.load(std::memory_order_relaxed);
    for (;;)
    {
        if (!EventTable::IsCurrent(event, seen))
            return FailNoEvent();
        const bool signalled = SlotState::Signals(seen) != 0;
        if (!signalled && nMilliseconds == 0)
            return 1;
        const std::uint64_t next = signalled ? seen - SlotState::kSignal : seen + SlotState::kUse;
        if (slot->state.compare_exchange_weak(seen, next, std::memory_order_acq_rel, std::memory_order_relaxed))
            return signalled ? 0 : WaitCounted(*slot, event, Deadline(nMilliseconds));
    }
}

void TovCloseEvent(TovEventRef event) noexcept
{
    HandleSlot* slot = g_events.Find(event);
    switch (g_events.Close(event))
    {
    case EventTable::Closing::NotOpen:
        break;
    case EventTable::Closing::InUse:
        FutexWake(slot->FutexWord(), INT_MAX);
        break;
    case EventTable::Closing::Unused:
        g_events.Free(*slot);
        break;
    }
}
