// The registry of a process's event threads, and the way to reach one by its identifier.
//
// Workers enter it when they start and leave it when they stop. Code that knows an identifier, or one of the two
// reserved ones, posts through it without holding a thread.
#pragma once

#include <halyon/platform/CoreFoundation.h>
#include <halyon/thread/IHynThread.h>

namespace Halyon
{
// Identifiers that name a thread by its part instead.
inline constexpr std::uint32_t kHynMainThreadID = 0xFFFFFFFFu;
inline constexpr std::uint32_t kHynCurrentThreadID = 0xFFFFFFFEu;

class IHynThreadManager : public IHynUnknown
{
public:
    // Makes, starts and registers the main thread's object, on the calling thread. `bundle` is not used. Call it once,
    // before anything else uses the manager. HYN_E_FAIL: no memory. [main]
    virtual HynResult InitMainThread(CFBundleRef bundle) = 0;

    // Enters a thread under its identifier, with a reference. The first one under an identifier stays, and then the new
    // one is not recorded: not an error. HYN_E_FAIL: null. [any]
    virtual HynResult RegisterThread(IHynThread* pThread) = 0;

    // Removes whatever stands under the thread's identifier. HYN_E_FAIL: null. [any]
    virtual HynResult UnRegisterThread(IHynThread* pThread) = 0;

    // Hand over a thread with a reference: by identifier, the calling one, the main one. HYN_E_FAIL: a null output, or
    // no such thread; the output is then untouched. [any]
    virtual HynResult GetThread(IHynThread** ppThread, std::uint32_t dwThreadID) = 0;
    virtual HynResult GetCurrentThread(IHynThread** ppThread) = 0;
    virtual HynResult GetMainThread(IHynThread** ppThread) = 0;

    // Post to, or send on, the thread `dwThreadID` or a reserved one; the thread's own result. HYN_E_FAIL: no such
    // thread. [any]
    virtual HynResult PostEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam,
                                IHynEventParam* pParam, std::uint32_t dwThreadID, void* pReceiver) = 0;
    virtual HynResult SendEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam,
                                IHynEventParam* pParam, std::uint32_t dwThreadID, void* pReceiver) = 0;

    // Register a handler on the calling thread, and take it back. HYN_E_FAIL: the thread is not registered. [any]
    virtual HynResult RegisterHandler(IHynEventHandler* pHandler, void* pUser) = 0;
    virtual HynResult UnRegisterHandler(IHynEventHandler* pHandler, void* pUser) = 0;
};

// A manager that also drops pending events.
class IHynThreadManager2 : public IHynThreadManager
{
public:
    // Drops pending events of a thread by identifier, as IHynThread3 does. HYN_E_FAIL: no such thread, or one that does
    // not answer IHynThread3. [any]
    virtual HynResult RemoveEvents(std::uint32_t* pIDs, std::uint32_t nCount, std::uint32_t dwThreadID) = 0;
};
} // namespace Halyon
