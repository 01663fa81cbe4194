#include <halyon/framework/MyDll.h>

#include <new>

#include <halyon/database/CHynSQConnection.h>
#include <halyon/framework/HynIdentifiers.h>

using Halyon::HYN_GUID;
using Halyon::HynResult;

HynResult MyDllGetClassObject(const HYN_GUID& clsid, const HYN_GUID& iid, void** ppv)
{
    if (clsid != Halyon::CLSID_HynSQConnection)
        return Halyon::HYN_E_NOINTERFACE;
    auto* connection = new (std::nothrow) CHynSQConnection;
    if (connection == nullptr)
        return Halyon::HYN_E_FAIL;
    connection->AddRef();
    const HynResult result = connection->QueryInterface(iid, ppv);
    connection->Release();
    return result;
}

HynResult MyDllCanUnloadNow()
{
    return Halyon::HYN_S_OK;
}
