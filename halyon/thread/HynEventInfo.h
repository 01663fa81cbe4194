// An event as a queue keeps it.
#pragma once

#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/thread/IHynEventParam.h>

namespace Halyon
{
// A plain value; a copy holds a reference of its own on the parameter. A new record has no parameter, and the other
// fields are unset: whoever posts fills all of them.
struct HynEventInfo
{
    std::uint32_t dwEventID; // which handlers
    void* pReceiver;         // and of these, the ones registered with this user pointer
    std::uint32_t uParam;    // handed to the handler as they are; 32 bits: pointers travel in spParam
    std::int32_t lParam;
    CHynAutoPtr<IHynEventParam> spParam; // may be empty
};
static_assert(sizeof(void*) != 8 || sizeof(HynEventInfo) == 32);
} // namespace Halyon
