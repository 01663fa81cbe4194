// What a component module is written with: the base of a class that answers one interface, and the making of its
// objects.
//
// For classes of any module. Not for a class that answers several interfaces: that one derives from CHynUnknown and
// writes DefaultQueryInterface itself.
//
//     class CClock : public Halyon::CHynComponent<IClock, &IID_IClock>
//     {
//     public:
//         HynResult GetHour(std::uint32_t* pHour) override;
//     };
//
//     HynResult MyDllGetClassObject(const HYN_GUID& clsid, const HYN_GUID& iid, void** ppv)
//     {
//         if (clsid == CLSID_Clock)
//             return Halyon::HynMakeObject<CClock>(iid, ppv);
//         return Halyon::HYN_E_NOINTERFACE;
//     }
//
// Header-only, so that components of any library can use it.
#pragma once

#include <new>

#include <halyon/framework/CHynUnknown.h>
#include <halyon/framework/HynIdentifiers.h>

namespace Halyon
{
// A counted object that answers `TInterface` under `identifier`, and the root interface. The interface comes first, so
// that the object's address is its interface pointer. New objects have the count 0.
template <class TInterface, const HYN_GUID* identifier>
class CHynComponent : public TInterface, public CHynUnknown
{
public:
    std::uint32_t AddRef() override { return DefaultAddRef(); }
    std::uint32_t Release() override { return DefaultRelease(); }
    HynResult QueryInterface(const HYN_GUID& iid, void** ppv) override { return DefaultQueryInterface(iid, ppv); }
    HynResult DefaultQueryInterface(const HYN_GUID& iid, void** ppv) override
    {
        return HynAnswerInterface<identifier, &IID_IHynUnknown>(static_cast<TInterface*>(this), iid, ppv);
    }
};

// A new object with the count 0, or null: no memory, or its constructor threw. [any]
template <class TComponent>
TComponent* HynNewObject() noexcept
{
#if defined(__cpp_exceptions)
    try
    {
        return new (std::nothrow) TComponent;
    }
    catch (...) // the caller may come from another compiler and could not catch it
    {
        return nullptr;
    }
#else
    return new (std::nothrow) TComponent;
#endif
}

// Makes an object of a component class and asks it for the interface `iid`. On HYN_S_OK `*ppv` holds the only
// reference; after a failure no object is left.
// HYN_E_NOINTERFACE, HYN_E_POINTER: as the object answers. HYN_E_FAIL: no object could be made. [any]
template <class TComponent>
HynResult HynMakeObject(const HYN_GUID& iid, void** ppv) noexcept
{
    auto* object = HynNewObject<TComponent>();
    if (object == nullptr)
        return HYN_E_FAIL;
    object->AddRef();
    const HynResult result = object->QueryInterface(iid, ppv);
    object->Release();
    return result;
}
} // namespace Halyon
