// The list of records behind an event queue: first in, first out, with insertion in front.
//
// Records lie in chunks, 32 bytes each, so a pending event costs next to nothing more than itself. Chunks that have
// drained go to a pool, from where the lists of the same queue take them again: in steady state nothing is allocated.
// The lists are not protected, the queue's locks do that; the pool may be used by any thread.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <new>

#include <halyon/thread/HynEventInfo.h>

namespace Halyon
{
// A few empty chunks; what does not fit is given back to the heap.
class HynEventChunkPool
{
public:
    HynEventChunkPool() noexcept = default;
    HynEventChunkPool(const HynEventChunkPool&) = delete;
    HynEventChunkPool& operator=(const HynEventChunkPool&) = delete;
    ~HynEventChunkPool();

private:
    friend class HynEventChunks;

    // Below 1000 bytes the heap serves a chunk from its small blocks; above, each one makes it tidy up first.
    static constexpr std::uint32_t kRecords = 30;

    struct Chunk
    {
        Chunk* pNext;
        Chunk* pPrevious;
        alignas(HynEventInfo) std::byte records[kRecords * sizeof(HynEventInfo)];

        HynEventInfo* At(std::uint32_t index) noexcept
        {
            return std::launder(reinterpret_cast<HynEventInfo*>(records) + index);
        }
    };

    Chunk* Take() noexcept;
    void Give(Chunk* pChunk) noexcept;

    std::array<std::atomic<Chunk*>, 8> m_spares{};
};

class HynEventChunks
{
public:
    // The pool outlives the list.
    explicit HynEventChunks(HynEventChunkPool& pool) noexcept : m_pool(pool) {}
    HynEventChunks(const HynEventChunks&) = delete;
    HynEventChunks& operator=(const HynEventChunks&) = delete;
    ~HynEventChunks();

    [[nodiscard]] std::int32_t GetSize() const noexcept { return m_nSize; }

    // Take the record over; false, and the record untouched, when there is no memory.
    bool PushBack(HynEventInfo&& info) noexcept;
    bool PushFront(HynEventInfo&& info) noexcept;

    // Moves the front record out. Requires: not empty.
    HynEventInfo PopFront() noexcept;

    // Moves every record that `predicate` holds for to the back of `removed`; the others keep their order. Without
    // memory for that the records are destroyed on the spot.
    template <class Predicate>
    void Remove(Predicate predicate, HynEventChunks& removed) noexcept;

    // Requires: both use the same pool.
    void Swap(HynEventChunks& other) noexcept;

private:
    static constexpr std::uint32_t kRecords = HynEventChunkPool::kRecords;
    using Chunk = HynEventChunkPool::Chunk;

    struct Position
    {
        Chunk* pChunk;
        std::uint32_t uIndex;

        HynEventInfo& Record() const noexcept { return *pChunk->At(uIndex); }
        void Advance() noexcept
        {
            if (++uIndex == kRecords)
                *this = {pChunk->pNext, 0};
        }
    };

    void Truncate(Position end, std::int32_t nSize) noexcept;

    HynEventChunkPool& m_pool;
    Chunk* m_pHead = nullptr;
    Chunk* m_pTail = nullptr;
    std::uint32_t m_uHeadIndex = 0; // of the first record in the head
    std::uint32_t m_uTailEnd = 0;   // one past the last record in the tail
    std::int32_t m_nSize = 0;
};

template <class Predicate>
void HynEventChunks::Remove(Predicate predicate, HynEventChunks& removed) noexcept
{
    Position read{m_pHead, m_uHeadIndex};
    Position write = read;
    std::int32_t kept = 0;
    for (std::int32_t i = 0; i < m_nSize; ++i, read.Advance())
    {
        HynEventInfo& record = read.Record();
        if (predicate(record))
        {
            // Refused, the record keeps its parameter, which is let go here.
            removed.PushBack(std::move(record));
            record.spParam = nullptr; // NOLINT(bugprone-use-after-move)
            continue;
        }
        if (kept != i)
            write.Record() = std::move(record);
        write.Advance();
        ++kept;
    }
    Truncate(write, kept);
}
} // namespace Halyon
