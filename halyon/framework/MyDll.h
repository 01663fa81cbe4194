// The entry points of a loadable component module: `HynSQ.so`, and every other that one writes (CHynComponent.h).
//
// A host loads the module with the dynamic linker, looks the entry points up under these plain names and never links
// them:
//
//     void* module = dlopen("HynSQ.so", RTLD_NOW | RTLD_LOCAL);
//     auto getClassObject = reinterpret_cast<HynGetClassObjectProc>(dlsym(module, "MyDllGetClassObject"));
#pragma once

#include <halyon/framework/HynGuid.h>
#include <halyon/framework/HynResult.h>

extern "C"
{
    // Makes a new object of the class `clsid` and asks it for the interface `iid`; there is no separate class factory.
    // On HYN_S_OK `*ppv` holds the only reference. `HynSQ.so` makes one class: `CLSID_HynSQConnection`.
    // HYN_E_NOINTERFACE: unknown class (whatever the other arguments are), or unknown interface.
    // HYN_E_POINTER: `ppv` is null. HYN_E_FAIL: no memory. After a failure no object is left. [any]
    [[gnu::visibility("default")]] Halyon::HynResult MyDllGetClassObject(const Halyon::HYN_GUID& clsid,
                                                                         const Halyon::HYN_GUID& iid, void** ppv);

    // Whether the module may be closed: HYN_S_OK, or HYN_S_FALSE while it has reasons against. `HynSQ.so` always says
    // HYN_S_OK, deliberately: it counts neither objects nor locks, so the host alone knows when its last object is
    // gone. [any]
    [[gnu::visibility("default")]] Halyon::HynResult MyDllCanUnloadNow();
}

namespace Halyon
{
using HynGetClassObjectProc = HynResult (*)(const HYN_GUID& clsid, const HYN_GUID& iid, void** ppv);
using HynCanUnloadNowProc = HynResult (*)();

inline constexpr char kHynGetClassObjectName[] = "MyDllGetClassObject";
inline constexpr char kHynCanUnloadNowName[] = "MyDllCanUnloadNow";
} // namespace Halyon
