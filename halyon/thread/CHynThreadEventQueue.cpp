#include <halyon/thread/CHynThreadEventQueue.h>

#include <algorithm>
#include <new>
#include <span>
#include <utility>

namespace Halyon
{
CHynThreadEventQueue::CHynThreadEventQueue(std::int32_t nCapacity) : m_nCapacity(nCapacity) {}

CHynThreadEventQueue::~CHynThreadEventQueue() = default;

// Requires: the producers' lock. Room is counted down and measured only when it has run out: until then producers need
// not look at what the consumer is writing. The consumer's list only shrinks meanwhile, so no insertion is let in
// wrongly.
bool CHynThreadEventQueue::HasRoom() noexcept
{
    if (m_incoming.nRoom <= 0)
        m_incoming.nRoom = m_nCapacity - m_incoming.list.GetSize() - m_taken.nSize.load(std::memory_order_relaxed);
    return m_incoming.nRoom > 0;
}

int CHynThreadEventQueue::InsertEvent(const HynEventInfo& info, int bFront)
{
    return InsertEvent(HynEventInfo(info), bFront);
}

int CHynThreadEventQueue::InsertEvent(HynEventInfo&& info, int bFront)
{
    static constexpr std::atomic<std::int32_t> kNeverClosed{0};
    return InsertEventUnless(kNeverClosed, std::move(info), bFront);
}

int CHynThreadEventQueue::InsertEventUnless(const std::atomic<std::int32_t>& nClosed, HynEventInfo&& info, int bFront)
{
    if (bFront != 0)
    {
        const CHynAutoLock consumer(m_taken.lock);
        const CHynAutoLock producers(m_incoming.lock);
        return nClosed.load(std::memory_order_acquire) != 0 ? -1 : InsertFront(std::move(info));
    }
    const CHynAutoLock producers(m_incoming.lock);
    if (nClosed.load(std::memory_order_acquire) != 0)
        return -1;
    if (!HasRoom() || !m_incoming.list.PushBack(std::move(info)))
        return 0;
    --m_incoming.nRoom;
    return 1;
}

// Requires: both locks of the list.
int CHynThreadEventQueue::InsertFront(HynEventInfo&& info)
{
    if (!HasRoom() || !m_taken.list.PushFront(std::move(info)))
        return 0;
    --m_incoming.nRoom;
    m_taken.nSize.store(m_taken.list.GetSize(), std::memory_order_relaxed);
    return 1;
}

template <class Predicate>
void CHynThreadEventQueue::Drop(Predicate predicate)
{
    HynEventChunks dropped(m_pool); // destroyed after the locks are given back
    const CHynAutoLock consumer(m_taken.lock);
    const CHynAutoLock producers(m_incoming.lock);
    m_taken.list.Remove(predicate, dropped);
    m_taken.nSize.store(m_taken.list.GetSize(), std::memory_order_relaxed);
    m_incoming.list.Remove(predicate, dropped);
}

void CHynThreadEventQueue::ClearQueue()
{
    HynEventChunks taken(m_pool); // destroyed after the locks are given back
    HynEventChunks incoming(m_pool);
    const CHynAutoLock consumer(m_taken.lock);
    const CHynAutoLock producers(m_incoming.lock);
    taken.Swap(m_taken.list);
    incoming.Swap(m_incoming.list);
    m_taken.nSize.store(0, std::memory_order_relaxed);
}

std::uint32_t CHynThreadEventQueue::RemoveEvents(const std::uint32_t* pIDs, std::uint32_t uCount)
{
    if (pIDs == nullptr || uCount == 0)
        return static_cast<std::uint32_t>(HYN_E_FAIL);
    const std::span<const std::uint32_t> ids(pIDs, uCount);
    Drop([ids](const HynEventInfo& info) { return std::find(ids.begin(), ids.end(), info.dwEventID) != ids.end(); });
    return static_cast<std::uint32_t>(HYN_S_OK);
}

void CHynThreadEventQueue::Adopt() noexcept
{
    m_observerLock.Adopt();
    m_taken.lock.Adopt();
}

void CHynThreadEventQueue::Disown() noexcept
{
    m_taken.lock.Disown();
    m_observerLock.Disown();
}

bool CHynThreadEventQueue::IsEmpty() noexcept
{
    const CHynAutoLock consumer(m_taken.lock);
    const CHynAutoLock producers(m_incoming.lock);
    return m_taken.list.GetSize() == 0 && m_incoming.list.GetSize() == 0;
}

int CHynThreadEventQueue::ProcessNext()
{
    HynEventInfo info;
    {
        const CHynAutoLock consumer(m_taken.lock);
        if (m_taken.list.GetSize() == 0)
        {
            const CHynAutoLock producers(m_incoming.lock);
            m_taken.list.Swap(m_incoming.list);
        }
        if (m_taken.list.GetSize() == 0)
            return 0;
        info = m_taken.list.PopFront();
        m_taken.nSize.store(m_taken.list.GetSize(), std::memory_order_relaxed);
    }
    Invoke(info.dwEventID, info.uParam, info.lParam, info.spParam, info.pReceiver);
    return 1;
}

HynResult CHynThreadEventQueue::Invoke(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam,
                                       IHynEventParam* pParam, void* pReceiver)
{
    const CHynAutoLock lock(m_observerLock);
    const auto found = m_observers.find(dwEventID);
    if (found == m_observers.end() || found->second.uLive == 0)
        return HYN_E_NOHANDLER;

    // The pairs that stand now are walked; a handler may append to them, and what it removes is only emptied.
    const std::vector<Observer>& pairs = found->second.pairs;
    const std::size_t count = pairs.size();
    HynResult result = HYN_E_FAIL;
    ++m_nDispatchDepth;
    for (std::size_t i = 0; i < count && result != HYN_S_EVENT_HANDLED; ++i)
    {
        IHynEventHandler* handler = pairs[i].spHandler;
        if (handler != nullptr && pairs[i].pUser == pReceiver)
            result = handler->HandleEvent(uParam, lParam, pParam);
    }
    if (--m_nDispatchDepth == 0 && m_bSweep)
        EndDispatch();
    return result;
}

// Requires: the observer lock, and no dispatch runs. Sweeps what handlers removed.
void CHynThreadEventQueue::EndDispatch()
{
    for (auto entry = m_observers.begin(); entry != m_observers.end();)
    {
        ObserverList& list = entry->second;
        if (list.uLive != list.pairs.size())
            std::erase_if(list.pairs, [](const Observer& observer) { return observer.spHandler == nullptr; });
        entry = list.uLive == 0 ? m_observers.erase(entry) : std::next(entry);
    }
    m_bSweep = false;
    const auto removed = std::exchange(m_removed, {});
}

// Position of the first live pair with `pUser` whose handler is the same as `pHandler`, or -1.
std::ptrdiff_t CHynThreadEventQueue::FindObserver(const ObserverList& list, IHynEventHandler* pHandler, void* pUser)
{
    for (std::size_t i = 0; i < list.pairs.size(); ++i)
    {
        IHynEventHandler* stored = list.pairs[i].spHandler;
        if (stored == nullptr || list.pairs[i].pUser != pUser)
            continue;
        int same = 0;
        if (HynSucceeded(stored->IsSameHandler(pHandler, &same)) && same != 0)
            return static_cast<std::ptrdiff_t>(i);
    }
    return -1;
}

void CHynThreadEventQueue::RegisterObserver(std::uint32_t dwEventID, IHynEventHandler* pHandler, void* pUser)
try
{
    if (pHandler == nullptr)
        return;
    void* owner = nullptr;
    pHandler->GetOwner(&owner);
    const CHynAutoLock lock(m_observerLock);
    ObserverList& list = m_observers[dwEventID];
    if (FindObserver(list, pHandler, pUser) >= 0)
        return;
    list.pairs.push_back({pUser, pHandler});
    ++list.uLive;
}
catch (const std::bad_alloc&)
{
    // Not registered; an empty list that may have been made counts as none.
}

void CHynThreadEventQueue::UnRegisterObserver(std::uint32_t dwEventID, IHynEventHandler* pHandler, void* pUser)
{
    if (pHandler == nullptr)
        return;
    void* owner = nullptr;
    pHandler->GetOwner(&owner);
    if (RemoveObserver(dwEventID, pHandler, pUser))
        Drop([dwEventID](const HynEventInfo& info) { return info.dwEventID == dwEventID; });
}

// A removed handler may be the one that is running. Without memory to keep it, it is given back at once.
void CHynThreadEventQueue::KeepUntilDispatchEnds(CHynAutoPtr<IHynEventHandler> spHandler) noexcept
try
{
    m_removed.push_back(std::move(spHandler));
}
catch (const std::bad_alloc&)
{
    // Given back at the end of this call.
}

// Removes the pair; true when the identifier has no handler left.
bool CHynThreadEventQueue::RemoveObserver(std::uint32_t dwEventID, IHynEventHandler* pHandler, void* pUser)
{
    CHynAutoPtr<IHynEventHandler> spRemoved; // given back after the lock
    const CHynAutoLock lock(m_observerLock);
    const auto found = m_observers.find(dwEventID);
    if (found == m_observers.end())
        return false;
    ObserverList& list = found->second;
    const std::ptrdiff_t position = FindObserver(list, pHandler, pUser);
    if (position >= 0)
    {
        spRemoved = std::move(list.pairs[static_cast<std::size_t>(position)].spHandler);
        --list.uLive;
    }
    if (m_nDispatchDepth == 0)
    {
        if (position >= 0)
            list.pairs.erase(list.pairs.begin() + position);
        if (list.pairs.empty())
        {
            m_observers.erase(found);
            return true;
        }
        return false;
    }
    m_bSweep = true;
    if (position >= 0)
        KeepUntilDispatchEnds(std::move(spRemoved));
    return list.uLive == 0;
}
} // namespace Halyon
