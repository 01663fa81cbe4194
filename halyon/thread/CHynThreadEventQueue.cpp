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
    return InsertEventUnless(kNeverClosed, std::move(info), bFront) == 1 ? 1 : 0;
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
    if (!HasRoom())
        return 0;
    if (!m_incoming.list.PushBack(std::move(info)))
        return -2;
    --m_incoming.nRoom;
    return 1;
}

// Requires: both locks of the list.
int CHynThreadEventQueue::InsertFront(HynEventInfo&& info)
{
    if (!HasRoom())
        return 0;
    if (!m_taken.list.PushFront(std::move(info)))
        return -2;
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

    // The pairs that stand now are walked; a handler may append to them, and what it removes is only marked.
    ObserverList& list = found->second;
    auto observer = list.pairs.begin();
    HynResult result = HYN_E_FAIL;
    ++m_nDispatchDepth;
    for (std::size_t left = list.pairs.size(); left != 0 && result != HYN_S_EVENT_HANDLED; --left, ++observer)
    {
        if (!observer->bRemoved && observer->pUser == pReceiver)
            result = observer->spHandler->HandleEvent(uParam, lParam, pParam);
    }
    if (--m_nDispatchDepth == 0 && m_bSweep)
        EndDispatch();
    return result;
}

// Requires: the observer lock, and no dispatch runs. Sweeps what handlers removed; it is released when the table is in
// order, for a handler's end may come back here.
void CHynThreadEventQueue::EndDispatch()
{
    Observers removed;
    for (auto entry = m_observers.begin(); entry != m_observers.end();)
    {
        ObserverList& list = entry->second;
        for (auto observer = list.pairs.begin(); list.uLive != list.pairs.size();)
        {
            const auto current = observer++;
            if (current->bRemoved)
                removed.splice(removed.end(), list.pairs, current);
        }
        entry = list.uLive == 0 ? m_observers.erase(entry) : std::next(entry);
    }
    m_bSweep = false;
}

// The first live pair with `pUser` whose handler is the same as `pHandler`, or the end.
CHynThreadEventQueue::Observers::iterator CHynThreadEventQueue::FindObserver(ObserverList& list,
                                                                             IHynEventHandler* pHandler, void* pUser)
{
    return std::ranges::find_if(list.pairs,
                                [=](const Observer& observer)
                                {
                                    int same = 0;
                                    return !observer.bRemoved && observer.pUser == pUser &&
                                           HynSucceeded(observer.spHandler->IsSameHandler(pHandler, &same)) &&
                                           same != 0;
                                });
}

void CHynThreadEventQueue::RegisterObserver(std::uint32_t dwEventID, IHynEventHandler* pHandler, void* pUser)
{
    AddObserver(dwEventID, pHandler, pUser);
}

HynResult CHynThreadEventQueue::AddObserver(std::uint32_t dwEventID, IHynEventHandler* pHandler, void* pUser)
try
{
    if (pHandler == nullptr)
        return HYN_S_OK;
    void* owner = nullptr;
    pHandler->GetOwner(&owner);
    Observers added; // made first: nothing has changed yet when there is no memory
    added.push_back({pUser, pHandler});
    const CHynAutoLock lock(m_observerLock);
    ObserverList& list = m_observers[dwEventID];
    if (FindObserver(list, pHandler, pUser) != list.pairs.end())
        return HYN_S_OK;
    list.pairs.splice(list.pairs.end(), added);
    ++list.uLive;
    return HYN_S_OK;
}
catch (const std::bad_alloc&)
{
    return HYN_E_FAIL;
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

// Removes the pair; true when the identifier has no handler left.
bool CHynThreadEventQueue::RemoveObserver(std::uint32_t dwEventID, IHynEventHandler* pHandler, void* pUser)
{
    Observers removed; // given back after the lock
    const CHynAutoLock lock(m_observerLock);
    const auto found = m_observers.find(dwEventID);
    if (found == m_observers.end())
        return false;
    ObserverList& list = found->second;
    if (const auto observer = FindObserver(list, pHandler, pUser); observer != list.pairs.end())
    {
        --list.uLive;
        if (m_nDispatchDepth == 0)
            removed.splice(removed.end(), list.pairs, observer);
        else
            observer->bRemoved = m_bSweep = true; // it may be the one that is running
    }
    const bool isLast = list.uLive == 0;
    if (isLast && m_nDispatchDepth == 0)
        m_observers.erase(found);
    return isLast;
}
} // namespace Halyon
