// The registry and router of event threads.
//
// A host makes one (`new CHynThreadManager`, which starts at the count 0) and hands it to its components. It must
// outlive the threads that are registered with it: stop them first.
//
// Locks: `m_lock` guards the table alone. It is held while a thread is asked for its identifier and, in ClearAllEvents,
// while its queue is cleared; never while an event is posted or handled, nor while a reference is given back.
#pragma once

#include <atomic>
#include <map>

#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/CHynUnknown.h>
#include <halyon/thread/IHynThreadManager.h>

namespace Halyon
{
class CHynThreadManager : public IHynThreadManager2, public CHynUnknown
{
public:
    CHynThreadManager() = default;

    std::uint32_t AddRef() override { return DefaultAddRef(); }
    std::uint32_t Release() override { return DefaultRelease(); }
    HynResult QueryInterface(const HYN_GUID& iid, void** ppv) override { return DefaultQueryInterface(iid, ppv); }

    HynResult InitMainThread(CFBundleRef bundle) override;
    HynResult RegisterThread(IHynThread* pThread) override;
    HynResult UnRegisterThread(IHynThread* pThread) override;
    HynResult GetThread(IHynThread** ppThread, std::uint32_t dwThreadID) override;
    HynResult GetCurrentThread(IHynThread** ppThread) override;
    HynResult GetMainThread(IHynThread** ppThread) override;
    HynResult PostEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam, IHynEventParam* pParam,
                        std::uint32_t dwThreadID, void* pReceiver) override;
    HynResult SendEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam, IHynEventParam* pParam,
                        std::uint32_t dwThreadID, void* pReceiver) override;
    HynResult RegisterHandler(IHynEventHandler* pHandler, void* pUser) override;
    HynResult UnRegisterHandler(IHynEventHandler* pHandler, void* pUser) override;
    HynResult RemoveEvents(std::uint32_t* pIDs, std::uint32_t nCount, std::uint32_t dwThreadID) override;

    ~CHynThreadManager() override;
    HynResult DefaultQueryInterface(const HYN_GUID& iid, void** ppv) override;

    // Forgets all threads, the main one too. [any]
    void UnRegisterAll();

    // Drops the pending events of every registered thread; handlers stay. [any]
    void ClearAllEvents();

private:
    using ThreadTable = std::map<std::uint32_t, CHynAutoPtr<IHynThread>>;

    CHynAutoPtr<IHynThread> Resolve(std::uint32_t dwThreadID);

    ThreadTable m_threads HYN_GUARDED_BY(m_lock);
    std::atomic<std::uint32_t> m_uMainThreadID{0};
    CHynLock m_lock;
};
} // namespace Halyon
