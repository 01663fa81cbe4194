// What a component implements to receive events.
//
// A handler is filed under one event identifier, with a user pointer that names the receiver: it sees the events that
// carry both. It runs on the thread it was registered with. Inside HandleEvent it may post, send, register and
// unregister handlers, itself included.
#pragma once

#include <halyon/thread/IHynEventParam.h>

namespace Halyon
{
class IHynEventHandler : public IHynUnknown
{
public:
    // Stores the identifier of the event that the handler is for. [any]
    virtual HynResult GetEventID(std::uint32_t* pEventID) = 0;

    // The object that the handler works for, borrowed. Queues ask before they register or unregister the handler and
    // use nothing of the answer. [any]
    virtual HynResult GetOwner(void** ppOwner) = 0;
    virtual HynResult SetOwner(void* pOwner) = 0;

    // Handles one event. HYN_S_EVENT_HANDLED keeps it from the handlers registered later; any other result, success or
    // failure, lets it go on. `pParam` is borrowed and may be null. [the thread it is registered with]
    virtual HynResult HandleEvent(std::uint32_t uParam, std::int32_t lParam, IHynEventParam* pParam) = 0;

    // Stores 1 when `pOther` is the same handler, else 0; two objects may well be the same handler. A failure counts as
    // another one. [any]
    virtual HynResult IsSameHandler(IHynEventHandler* pOther, int* pSame) = 0;
};
} // namespace Halyon
