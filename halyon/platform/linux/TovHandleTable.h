// Slots behind event and thread handles.
//
// A handle is a slot number and the generation of its use. Slots are never freed while the program runs, so a stale
// handle finds a newer generation instead of freed memory.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>

#include <halyon/framework/HynUnit.h>

namespace Halyon::Linux
{
// `Slot` has an atomic `next` (index of the next free slot) and is default constructible.
template <class Slot>
class HandleTable
{
public:
    static constexpr std::uint32_t kNone = 0xFFFFFFFFu;

    // Index of a slot for the caller alone, or kNone when there is no memory. [any]
    std::uint32_t Acquire() noexcept
    {
        const std::scoped_lock lock(m_mutex);
        if (m_firstFree != kNone)
        {
            const std::uint32_t index = m_firstFree;
            m_firstFree = Find(index)->nextFree;
            return index;
        }
        const std::uint32_t chunk = m_used / kChunkSize;
        if (chunk == kChunks)
            return kNone;
        if (m_used % kChunkSize == 0)
        {
            auto* slots = new (std::nothrow) Slot[kChunkSize];
            if (slots == nullptr)
                return kNone;
            m_owned[chunk].reset(slots);
            m_chunks[chunk].store(slots, std::memory_order_release);
        }
        return m_used++;
    }

    // Gives a slot back for another use. [any]
    void Free(std::uint32_t index) noexcept
    {
        const std::scoped_lock lock(m_mutex);
        Find(index)->nextFree = m_firstFree;
        m_firstFree = index;
    }

    // The slot, or null when the index was never handed out. [any]
    Slot* Find(std::uint32_t index) noexcept
    {
        if (index >= kChunks * kChunkSize)
            return nullptr;
        Slot* slots = m_chunks[index / kChunkSize].load(std::memory_order_acquire);
        return slots != nullptr ? slots + index % kChunkSize : nullptr;
    }

private:
    static constexpr std::uint32_t kChunkSize = 256;
    static constexpr std::uint32_t kChunks = 4096;

    std::mutex m_mutex;
    std::uint32_t m_firstFree = kNone; // guarded by m_mutex
    std::uint32_t m_used = 0;          // guarded by m_mutex
    std::array<std::atomic<Slot*>, kChunks> m_chunks{};
    std::array<std::unique_ptr<Slot[]>, kChunks> m_owned; // guarded by m_mutex
};
} // namespace Halyon::Linux
