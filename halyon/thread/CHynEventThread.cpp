#include <halyon/thread/CHynEventThread.h>

namespace Halyon
{
HynResult CHynEventThread::RegisterHandler(IHynEventHandler* pHandler, void* pUser)
{
    std::uint32_t eventID = 0;
    pHandler->GetEventID(&eventID);
    return m_queue.AddObserver(eventID, pHandler, pUser);
}

HynResult CHynEventThread::UnRegisterHandler(IHynEventHandler* pHandler, void* pUser)
{
    std::uint32_t eventID = 0;
    pHandler->GetEventID(&eventID);
    m_queue.UnRegisterObserver(eventID, pHandler, pUser);
    return HYN_S_OK;
}

HynResult CHynEventThread::ClearAllEvents()
{
    m_queue.ClearQueue();
    return HYN_S_OK;
}

HynResult CHynEventThread::RemoveEvents(std::uint32_t* pIDs, std::uint32_t nCount)
{
    return static_cast<HynResult>(m_queue.RemoveEvents(pIDs, nCount));
}
} // namespace Halyon
