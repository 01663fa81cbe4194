#include <halyon/thread/HynEventChunks.h>

#include <utility>

namespace Halyon
{
HynEventChunkPool::~HynEventChunkPool()
{
    for (std::atomic<Chunk*>& spare : m_spares)
        delete spare.load(std::memory_order_relaxed);
}

// A chunk to be filled, or null without memory.
HynEventChunkPool::Chunk* HynEventChunkPool::Take() noexcept
{
    for (std::atomic<Chunk*>& spare : m_spares)
    {
        if (spare.load(std::memory_order_relaxed) == nullptr)
            continue;
        if (Chunk* chunk = spare.exchange(nullptr, std::memory_order_acquire))
            return chunk;
    }
    // Default-initialised: the records' room is left as it is.
    return new (std::nothrow) Chunk;
}

void HynEventChunkPool::Give(Chunk* pChunk) noexcept
{
    for (std::atomic<Chunk*>& spare : m_spares)
    {
        Chunk* none = nullptr;
        if (spare.load(std::memory_order_relaxed) == nullptr &&
            spare.compare_exchange_strong(none, pChunk, std::memory_order_release, std::memory_order_relaxed))
            return;
    }
    delete pChunk;
}

HynEventChunks::~HynEventChunks()
{
    Truncate({m_pHead, m_uHeadIndex}, 0);
}

bool HynEventChunks::PushBack(HynEventInfo&& info) noexcept
{
    if (m_pTail == nullptr || m_uTailEnd == kRecords)
    {
        Chunk* chunk = m_pool.Take();
        if (chunk == nullptr)
            return false;
        chunk->pNext = nullptr;
        chunk->pPrevious = m_pTail;
        if (m_pTail != nullptr)
            m_pTail->pNext = chunk;
        else
            m_pHead = chunk, m_uHeadIndex = 0;
        m_pTail = chunk;
        m_uTailEnd = 0;
    }
    new (m_pTail->At(m_uTailEnd)) HynEventInfo(std::move(info));
    ++m_uTailEnd;
    ++m_nSize;
    return true;
}

bool HynEventChunks::PushFront(HynEventInfo&& info) noexcept
{
    if (m_pHead == nullptr || m_uHeadIndex == 0)
    {
        Chunk* chunk = m_pool.Take();
        if (chunk == nullptr)
            return false;
        chunk->pNext = m_pHead;
        chunk->pPrevious = nullptr;
        if (m_pHead != nullptr)
            m_pHead->pPrevious = chunk;
        else
            m_pTail = chunk, m_uTailEnd = kRecords;
        m_pHead = chunk;
        m_uHeadIndex = kRecords;
    }
    --m_uHeadIndex;
    new (m_pHead->At(m_uHeadIndex)) HynEventInfo(std::move(info));
    ++m_nSize;
    return true;
}

HynEventInfo HynEventChunks::PopFront() noexcept
{
    HynEventInfo* front = m_pHead->At(m_uHeadIndex);
    HynEventInfo info(std::move(*front));
    front->~HynEventInfo();
    ++m_uHeadIndex;
    --m_nSize;
    if (m_nSize == 0)
    {
        m_pool.Give(std::exchange(m_pHead, nullptr));
        m_pTail = nullptr;
    }
    else if (m_uHeadIndex == kRecords)
    {
        Chunk* drained = m_pHead;
        m_pHead = drained->pNext;
        m_pHead->pPrevious = nullptr;
        m_uHeadIndex = 0;
        m_pool.Give(drained);
    }
    return info;
}

void HynEventChunks::Swap(HynEventChunks& other) noexcept
{
    std::swap(m_pHead, other.m_pHead);
    std::swap(m_pTail, other.m_pTail);
    std::swap(m_uHeadIndex, other.m_uHeadIndex);
    std::swap(m_uTailEnd, other.m_uTailEnd);
    std::swap(m_nSize, other.m_nSize);
}

// Destroys the records from `end` on, so that `nSize` are left, and gives their chunks back.
void HynEventChunks::Truncate(Position end, std::int32_t nSize) noexcept
{
    Position record = end;
    for (std::int32_t i = nSize; i < m_nSize; ++i, record.Advance())
        record.Record().~HynEventInfo();
    m_nSize = nSize;

    // A position at the start of a chunk has no record in it; the list then ends with the chunk before.
    Chunk* last = end.uIndex == 0 && end.pChunk != nullptr ? end.pChunk->pPrevious : end.pChunk;
    if (end.pChunk == nullptr)
        last = m_pTail;
    if (nSize == 0)
        last = nullptr;
    while (m_pTail != last)
    {
        Chunk* drained = m_pTail;
        m_pTail = drained->pPrevious;
        m_pool.Give(drained);
    }
    if (last == nullptr)
    {
        m_pHead = nullptr;
        return;
    }
    if (last == end.pChunk)
        m_uTailEnd = end.uIndex;
    else if (end.pChunk != nullptr)
        m_uTailEnd = kRecords;
    last->pNext = nullptr;
}
} // namespace Halyon
