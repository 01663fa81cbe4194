// What the worker and the main thread have in common: they are counted, and what reaches them passes their queue.
//
// Adds no slot to the interface's table: whatever the two classes append begins at the same position.
#pragma once

#include <halyon/framework/CHynUnknown.h>
#include <halyon/framework/HynIdentifiers.h>
#include <halyon/thread/CHynThreadEventQueue.h>
#include <halyon/thread/IHynThread.h>

namespace Halyon
{
class CHynEventThread : public IHynThread3, public CHynUnknown
{
public:
    std::uint32_t AddRef() override { return DefaultAddRef(); }
    std::uint32_t Release() override { return DefaultRelease(); }
    HynResult QueryInterface(const HYN_GUID& iid, void** ppv) override { return DefaultQueryInterface(iid, ppv); }

    HynResult RegisterHandler(IHynEventHandler* pHandler, void* pUser) override;
    HynResult UnRegisterHandler(IHynEventHandler* pHandler, void* pUser) override;
    HynResult ClearAllEvents() override;
    HynResult RemoveEvents(std::uint32_t* pIDs, std::uint32_t nCount) override;

protected:
    explicit CHynEventThread(std::int32_t nCapacity) : m_queue(nCapacity) {}

    // The answer of both classes' DefaultQueryInterface.
    HynResult AnswerThreadInterface(const HYN_GUID& iid, void** ppv)
    {
        return HynAnswerInterface<&IID_IHynThread, &IID_IHynThread2, &IID_IHynThread3, &IID_IHynUnknown>(
            static_cast<IHynThread3*>(this), iid, ppv);
    }

    CHynThreadEventQueue m_queue;
};
} // namespace Halyon
