#include <halyon/framework/MyDll.h>

#include <halyon/database/CHynSQConnection.h>
#include <halyon/framework/CHynComponent.h>

using Halyon::HYN_GUID;
using Halyon::HynResult;

HynResult MyDllGetClassObject(const HYN_GUID& clsid, const HYN_GUID& iid, void** ppv)
{
    if (clsid == Halyon::CLSID_HynSQConnection)
        return Halyon::HynMakeObject<CHynSQConnection>(iid, ppv);
    return Halyon::HYN_E_NOINTERFACE;
}

HynResult MyDllCanUnloadNow()
{
    return Halyon::HYN_S_OK;
}
