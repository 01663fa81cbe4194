// Slots behind event and thread handles. Not for objects that have an owner: those live where their owner puts them.
//
// A handle is a slot's number and the generation of its use. The slots are static memory that is never constructed,
// destroyed or given back, so a stale handle finds another generation, never freed memory; that holds while static
// objects are destroyed and threads still run, and a module that is unloaded takes its slots with it. Pages that no
// slot in use lies on cost nothing. No operation waits for another thread, so a child of `fork` can use them all.
#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>

#include <halyon/framework/HynUnit.h>

namespace Halyon::Linux
{
// What the word of a slot holds, from the lowest bit: signals (20 bits), generation (24), threads that use the slot
// (20, more than a process can have). The generation is odd while the handle is open. Signals and the low part of the
// generation share the half on which the kernel waits, so a signal and the closing both wake it.
namespace SlotState
{
inline constexpr std::uint64_t kSignal = 1;
inline constexpr std::uint64_t kGeneration = std::uint64_t{1} << 20;
inline constexpr std::uint64_t kUse = std::uint64_t{1} << 44;

constexpr std::uint32_t Signals(std::uint64_t state) noexcept
{
    return static_cast<std::uint32_t>(state & (kGeneration - 1));
}

constexpr std::uint32_t Generation(std::uint64_t state) noexcept
{
    return static_cast<std::uint32_t>(state % kUse / kGeneration);
}

constexpr std::uint32_t Uses(std::uint64_t state) noexcept
{
    return static_cast<std::uint32_t>(state / kUse);
}

constexpr bool IsOpen(std::uint64_t state) noexcept
{
    return Generation(state) % 2 != 0;
}
} // namespace SlotState

// What every slot begins with. A cache line of its own keeps the waits on one slot from slowing another.
struct alignas(64) HandleSlot
{
    std::atomic<std::uint64_t> state{0};
    std::atomic<std::uint32_t> nextFree{0};

    // The half of `state` that changes with a signal and with the closing.
    [[nodiscard]] const std::uint32_t* FutexWord() const noexcept
    {
        const auto* halves = reinterpret_cast<const std::uint32_t*>(&state);
        return std::endian::native == std::endian::little ? halves : halves + 1;
    }
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free && sizeof(std::atomic<std::uint64_t>) == 8);

// `Slot` derives from HandleSlot and has only fields that may stay as a former use left them.
template <class Slot, std::uint32_t kSlots = 65'535, unsigned kGenerationBits = sizeof(std::uintptr_t) == 8 ? 24 : 16>
class HandleTable
{
public:
    using Handle = std::uintptr_t;

    enum class Closing
    {
        NotOpen, // by this handle, or no longer
        InUse,   // closed; whoever gives back the last use frees the slot
        Unused   // closed; the caller frees the slot
    };

    // A slot for the caller alone, null when none is left. [any]
    Slot* Acquire() noexcept
    {
        std::uint64_t head = m_free.load(std::memory_order_acquire);
        while (static_cast<std::uint32_t>(head) != 0)
        {
            Slot& slot = m_slots[static_cast<std::uint32_t>(head) - 1];
            if (m_free.compare_exchange_weak(head, After(head, slot.nextFree.load(std::memory_order_relaxed)),
                                             std::memory_order_acquire))
                return &slot;
        }
        std::uint32_t touched = m_touched.load(std::memory_order_relaxed);
        while (touched < kSlots)
        {
            if (m_touched.compare_exchange_weak(touched, touched + 1, std::memory_order_relaxed))
                return &m_slots[touched];
        }
        return nullptr;
    }

    // Opens a slot that Acquire gave, with so many signals and uses to begin with; returns its handle. [any]
    Handle Open(Slot& slot, std::uint32_t signals, std::uint32_t uses) noexcept
    {
        const std::uint32_t generation = SlotState::Generation(slot.state.load(std::memory_order_relaxed)) + 1;
        slot.state.store(signals * SlotState::kSignal + generation * SlotState::kGeneration + uses * SlotState::kUse,
                         std::memory_order_release);
        return (Handle{generation} << kIndexBits) | NumberOf(slot);
    }

    // The slot that a handle names, open or not; null for 0 and for a number that no slot has. [any]
    Slot* Find(Handle handle) noexcept
    {
        const Handle number = handle & ((Handle{1} << kIndexBits) - 1);
        return number - 1 < kSlots ? &m_slots[number - 1] : nullptr;
    }

    // Whether a slot in this state is open under this handle. [any]
    static bool IsCurrent(Handle handle, std::uint64_t state) noexcept
    {
        return SlotState::IsOpen(state) && handle >> kIndexBits == SlotState::Generation(state);
    }

    // Keeps the slot of an open handle from being freed until Unpin; null when the handle is not open. [any]
    Slot* Pin(Handle handle) noexcept
    {
        Slot* slot = Find(handle);
        if (slot == nullptr)
            return nullptr;
        std::uint64_t seen = slot->state.load(std::memory_order_relaxed);
        while (IsCurrent(handle, seen))
        {
            if (slot->state.compare_exchange_weak(seen, seen + SlotState::kUse, std::memory_order_acq_rel))
                return slot;
        }
        return nullptr;
    }

    // Gives one use back. True when it was the last of a closed slot: the caller frees it. [any]
    bool Unpin(Slot& slot) noexcept
    {
        const std::uint64_t left = slot.state.fetch_sub(SlotState::kUse, std::memory_order_acq_rel) - SlotState::kUse;
        return SlotState::Uses(left) == 0 && !SlotState::IsOpen(left);
    }

    // Ends the handle and drops its signals. [any]
    Closing Close(Handle handle) noexcept
    {
        Slot* slot = Find(handle);
        if (slot == nullptr)
            return Closing::NotOpen;
        std::uint64_t seen = slot->state.load(std::memory_order_relaxed);
        while (IsCurrent(handle, seen))
        {
            const std::uint64_t closed = seen - SlotState::Signals(seen) * SlotState::kSignal + SlotState::kGeneration;
            if (slot->state.compare_exchange_weak(seen, closed, std::memory_order_acq_rel))
                return SlotState::Uses(closed) == 0 ? Closing::Unused : Closing::InUse;
        }
        return Closing::NotOpen;
    }

    // Gives a closed slot back for another use. Requires: nobody uses it. [any]
    void Free(Slot& slot) noexcept
    {
        // A slot whose generations are used up is retired, so that no handle ever comes twice.
        if (SlotState::Generation(slot.state.load(std::memory_order_relaxed)) == kLastGeneration)
            return;
        std::uint64_t head = m_free.load(std::memory_order_relaxed);
        do
        {
            slot.nextFree.store(static_cast<std::uint32_t>(head), std::memory_order_relaxed);
        } while (!m_free.compare_exchange_weak(head, After(head, NumberOf(slot)), std::memory_order_release,
                                               std::memory_order_relaxed));
    }

private:
    static constexpr unsigned kIndexBits = sizeof(Handle) * 4;
    static constexpr std::uint32_t kLastGeneration = (std::uint32_t{1} << kGenerationBits) - 2;
    static_assert(kSlots < Handle{1} << kIndexBits && kGenerationBits <= kIndexBits && kGenerationBits <= 24);

    std::uint32_t NumberOf(const Slot& slot) const noexcept
    {
        return static_cast<std::uint32_t>(&slot - m_slots.data()) + 1;
    }

    // The next head of the free list: the number of its first slot, 0 for none, below a count of changes. The count
    // keeps a thread that stopped between reading the head and changing it from taking it for unchanged.
    static constexpr std::uint64_t After(std::uint64_t head, std::uint32_t number) noexcept
    {
        return (((head >> 32) + 1) << 32) | number;
    }

    std::atomic<std::uint64_t> m_free{0};
    std::atomic<std::uint32_t> m_touched{0}; // slots that have ever been in use
    std::array<Slot, kSlots> m_slots{};
};
} // namespace Halyon::Linux
