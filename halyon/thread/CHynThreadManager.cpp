#include <halyon/thread/CHynThreadManager.h>

#include <new>
#include <utility>

#include <halyon/framework/HynIdentifiers.h>
#include <halyon/thread/CHynMainThread.h>

namespace Halyon
{
CHynThreadManager::~CHynThreadManager() = default;

HynResult CHynThreadManager::DefaultQueryInterface(const HYN_GUID& iid, void** ppv)
{
    return HynAnswerInterface<&IID_IHynThreadManager, &IID_IHynThreadManager2, &IID_IHynUnknown>(
        static_cast<IHynThreadManager2*>(this), iid, ppv);
}

HynResult CHynThreadManager::InitMainThread(CFBundleRef /*bundle*/)
{
    m_uMainThreadID = GetCurrentTovThreadID();
    const CHynAutoPtr<CHynMainThread> spThread = new (std::nothrow) CHynMainThread(m_uMainThreadID);
    if (spThread == nullptr)
        return HYN_E_FAIL;
    const HynResult result = spThread->Start(this, nullptr);
    return HynFailed(result) ? result : RegisterThread(spThread);
}

HynResult CHynThreadManager::RegisterThread(IHynThread* pThread)
try
{
    if (pThread == nullptr)
        return HYN_E_FAIL;
    const CHynAutoLock lock(m_lock);
    m_threads.try_emplace(pThread->GetThreadID(), pThread);
    return HYN_S_OK;
}
catch (const std::bad_alloc&)
{
    return HYN_E_FAIL;
}

HynResult CHynThreadManager::UnRegisterThread(IHynThread* pThread)
{
    if (pThread == nullptr)
        return HYN_E_FAIL;
    ThreadTable::node_type removed; // its reference is given back after the lock
    const CHynAutoLock lock(m_lock);
    removed = m_threads.extract(pThread->GetThreadID());
    return HYN_S_OK;
}

void CHynThreadManager::UnRegisterAll()
{
    // A worker whose last reference this is stops on the way out, and its handlers may still use the manager.
    ThreadTable removed;
    const CHynAutoLock lock(m_lock);
    removed.swap(m_threads);
}

HynResult CHynThreadManager::GetThread(IHynThread** ppThread, std::uint32_t dwThreadID)
{
    if (ppThread == nullptr)
        return HYN_E_FAIL;
    const CHynAutoLock lock(m_lock);
    const auto found = m_threads.find(dwThreadID);
    if (found == m_threads.end() || found->second == nullptr)
        return HYN_E_FAIL;
    *ppThread = found->second;
    (*ppThread)->AddRef();
    return HYN_S_OK;
}

HynResult CHynThreadManager::GetCurrentThread(IHynThread** ppThread)
{
    return GetThread(ppThread, GetCurrentTovThreadID());
}

HynResult CHynThreadManager::GetMainThread(IHynThread** ppThread)
{
    const std::uint32_t mainThreadID = m_uMainThreadID;
    return mainThreadID != 0 ? GetThread(ppThread, mainThreadID) : HYN_E_FAIL;
}

CHynAutoPtr<IHynThread> CHynThreadManager::Resolve(std::uint32_t dwThreadID)
{
    CHynAutoPtr<IHynThread> spThread;
    if (dwThreadID == kHynMainThreadID)
        GetMainThread(spThread.Receive());
    else if (dwThreadID == kHynCurrentThreadID)
        GetCurrentThread(spThread.Receive());
    else
        GetThread(spThread.Receive(), dwThreadID);
    return spThread;
}

HynResult CHynThreadManager::PostEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam,
                                       IHynEventParam* pParam, std::uint32_t dwThreadID, void* pReceiver)
{
    const CHynAutoPtr<IHynThread> spThread = Resolve(dwThreadID);
    return spThread != nullptr ? spThread->PostEvent(dwEventID, uParam, lParam, pParam, pReceiver) : HYN_E_FAIL;
}

HynResult CHynThreadManager::SendEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam,
                                       IHynEventParam* pParam, std::uint32_t dwThreadID, void* pReceiver)
{
    const CHynAutoPtr<IHynThread> spThread = Resolve(dwThreadID);
    return spThread != nullptr ? spThread->SendEvent(dwEventID, uParam, lParam, pParam, pReceiver) : HYN_E_FAIL;
}

HynResult CHynThreadManager::RegisterHandler(IHynEventHandler* pHandler, void* pUser)
{
    CHynAutoPtr<IHynThread> spThread;
    const HynResult result = GetCurrentThread(spThread.Receive());
    return spThread != nullptr ? spThread->RegisterHandler(pHandler, pUser) : result;
}

HynResult CHynThreadManager::UnRegisterHandler(IHynEventHandler* pHandler, void* pUser)
{
    CHynAutoPtr<IHynThread> spThread;
    const HynResult result = GetCurrentThread(spThread.Receive());
    return spThread != nullptr ? spThread->UnRegisterHandler(pHandler, pUser) : result;
}

HynResult CHynThreadManager::RemoveEvents(std::uint32_t* pIDs, std::uint32_t nCount, std::uint32_t dwThreadID)
{
    const CHynAutoPtr<IHynThread> spThread = Resolve(dwThreadID);
    if (spThread == nullptr)
        return HYN_E_FAIL;
    CHynAutoPtr<IHynThread3> spThread3;
    spThread->QueryInterface(IID_IHynThread3, reinterpret_cast<void**>(spThread3.Receive()));
    return spThread3 != nullptr ? spThread3->RemoveEvents(pIDs, nCount) : HYN_E_FAIL;
}

void CHynThreadManager::ClearAllEvents()
{
    const CHynAutoLock lock(m_lock);
    for (const auto& [threadID, spThread] : m_threads)
    {
        CHynAutoPtr<IHynThread2> spThread2;
        spThread->QueryInterface(IID_IHynThread2, reinterpret_cast<void**>(spThread2.Receive()));
        if (spThread2 != nullptr)
            spThread2->ClearAllEvents();
    }
}
} // namespace Halyon
