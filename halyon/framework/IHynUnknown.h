// The root of every interface.
//
// Interfaces are abstract, hold no data and have no virtual destructor; the order of their operations is the binary
// interface, so an interface grows only by a new interface with a new identifier.
#pragma once

#include <halyon/framework/HynGuid.h>
#include <halyon/framework/HynResult.h>
#include <halyon/framework/HynTypes.h>

namespace Halyon
{
class IHynUnknown
{
public:
    // Takes one reference; returns the new count. [any]
    virtual std::uint32_t AddRef() = 0;

    // Gives one reference back; returns the new count. At 0 the object is gone. [any]
    virtual std::uint32_t Release() = 0;

    // Asks for another interface of the same object. On HYN_S_OK `*ppv` holds the interface with one reference for
    // the caller to release; on failure it is untouched.
    // HYN_E_NOINTERFACE: `iid` is not answered, whatever `ppv` is. HYN_E_POINTER: answered, but `ppv` is null. [any]
    virtual HynResult QueryInterface(const HYN_GUID& iid, void** ppv) = 0;

protected:
    // Not virtual, and not for callers: a reference is given back with Release.
    ~IHynUnknown() = default;
};

// A pointer to the table of operations and nothing else, in every interface.
static_assert(sizeof(IHynUnknown) == sizeof(void*));
} // namespace Halyon
