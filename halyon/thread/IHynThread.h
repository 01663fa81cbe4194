// A thread that handles events.
//
// IHynThread2 and IHynThread3 add one operation each; every thread object answers all three.
#pragma once

#include <halyon/thread/IHynEventHandler.h>

namespace Halyon
{
class IHynThreadManager;

class IHynThread : public IHynUnknown
{
public:
    // The thread's identifier, as HynGetCurrentThreadID gives it there; 0 while a worker is stopped. [any]
    virtual std::uint32_t GetThreadID() = 0;

    // A worker: makes the thread, waits until its identifier is known and registers it with `pManager`, which may be
    // null; `*pStarted` becomes 1, or 0 on failure. HYN_E_POINTER: `pStarted` is null. HYN_E_THREADRUNNING: it runs
    // already, and the call has closed its wake-up event and its thread reference, deliberately: the thread handles no
    // further event and can only be stopped. HYN_E_THREADNOEVENT, HYN_E_THREADNOTHREAD: the system gives no event, no
    // thread; after the latter a further Start answers HYN_E_THREADRUNNING. HYN_E_FAIL: the manager has no memory for
    // the thread, which has ended before its first step.
    // The main thread: begins to pump events; both arguments are ignored. [owner]
    virtual HynResult Start(IHynThreadManager* pManager, int* pStarted) = 0;

    // A worker: waits until its body has returned; the event being handled is finished, pending ones are dropped.
    // HYN_S_OK, also when it does not run. HYN_E_NOINTERFACE: called on the thread itself, or on the main thread.
    // [owner]
    virtual HynResult Stop() = 0;

    // The body of a worker, for ThreadProc to call. Always HYN_S_OK. [that thread]
    virtual HynResult Run() = 0;

    // A worker: above 100 the usual priority, below 10 a patient one, else no change. HYN_E_FAIL: it does not run.
    // HYN_E_NOINTERFACE: the main thread. [any]
    virtual HynResult SetPriority(int nPriority) = 0;

    // Registers a handler on this thread for the event it names and for the receiver `pUser`; the thread takes a
    // reference. The same handler with the same receiver again is not an error and changes nothing. Requires:
    // `pHandler` is not null. HYN_E_FAIL: no memory; it is not registered. [any]
    virtual HynResult RegisterHandler(IHynEventHandler* pHandler, void* pUser) = 0;

    // Takes it back. An unknown handler is not an error. When it was the last one for its event, pending events of that
    // identifier are dropped. Always HYN_S_OK. [any]
    virtual HynResult UnRegisterHandler(IHynEventHandler* pHandler, void* pUser) = 0;

    // Queues an event for this thread, which takes a reference on `pParam` (may be null) until it has been handled. A
    // full queue loses the event, deliberately without a word: HYN_S_OK. HYN_E_THREADNOTRUNNING: a stopped worker.
    // HYN_E_FAIL: no memory for it. Identifier 0 posted to the main thread ends the application's event loop. [any]
    virtual HynResult PostEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam,
                                IHynEventParam* pParam, void* pReceiver) = 0;

    // Handles an event at once, past the queue, and returns the last handler's result. HYN_E_NOHANDLER: none for the
    // identifier; HYN_E_FAIL: none for the receiver. HYN_E_NOINTERFACE: called from another thread, where one posts.
    // HYN_E_THREADNOTRUNNING: a stopped worker. [the thread itself]
    virtual HynResult SendEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam,
                                IHynEventParam* pParam, void* pReceiver) = 0;
};

// A thread whose pending events can be dropped.
class IHynThread2 : public IHynThread
{
public:
    // Drops all pending events; handlers stay. Always HYN_S_OK. [any]
    virtual HynResult ClearAllEvents() = 0;
};

// A thread whose pending events can be dropped by their identifiers.
class IHynThread3 : public IHynThread2
{
public:
    // Drops the pending events with any of `nCount` identifiers; the others keep their order. HYN_E_FAIL: null or 0.
    // [any]
    virtual HynResult RemoveEvents(std::uint32_t* pIDs, std::uint32_t nCount) = 0;
};
} // namespace Halyon
