// The list of records behind an event queue: first in, first out, with insertion in front.
//
// Records lie in chunks of a page, 32 bytes each, so a pending event costs next to nothing more than itself; one empty
// chunk is kept for the next record, the others are given back. Not protected: the queue's locks do that.
#pragma once

#include <cstddef>
#include <memory>

#include <halyon/thread/HynEventInfo.h>

namespace Halyon
{
class HynEventChunks
{
public:
    HynEventChunks() noexcept = default;
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

    void Swap(HynEventChunks& other) noexcept;

private:
    static constexpr std::uint32_t kRecords = (4096 - 2 * sizeof(void*)) / sizeof(HynEventInfo);

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

    Chunk* TakeChunk() noexcept;
    void GiveChunk(Chunk* pChunk) noexcept;
    void Truncate(Position end, std::int32_t nSize) noexcept;

    Chunk* m_pHead = nullptr;
    Chunk* m_pTail = nullptr;
    std::uint32_t m_uHeadIndex = 0; // of the first record in the head
    std::uint32_t m_uTailEnd = 0;   // one past the last record in the tail
    std::int32_t m_nSize = 0;
    std::unique_ptr<Chunk> m_spSpare;
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
