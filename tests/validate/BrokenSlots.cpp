// The module with two slots of the connection in the wrong order, as a compiler would have it whose header is another.

#include <algorithm>
#include <array>
#include <utility>

#include <halyon/database/CHynSQConnection.h>
#include <halyon/framework/HynIdentifiers.h>
#include <halyon/framework/MyDll.h>
#include <validate/Frozen.h>

namespace
{
// The table that the connection uses instead: its own with what stands before the first slot (where the object begins
// and what it is) and all that a component's table goes on with.
constexpr int kBefore = 2;
std::array<void*, kBefore + Frozen::kConnectionEnd + 3> g_table;
} // namespace

Halyon::HynResult MyDllGetClassObject(const Halyon::HYN_GUID& clsid, const Halyon::HYN_GUID& iid, void** ppv)
{
    if (clsid != Halyon::CLSID_HynSQConnection)
        return Halyon::HYN_E_NOINTERFACE;
    auto* connection = new CHynSQConnection;
    void** const object = reinterpret_cast<void**>(connection);
    std::copy_n(static_cast<void**>(*object) - kBefore, g_table.size(), g_table.begin());
    void** const slots = g_table.data() + kBefore;
    std::swap(slots[Frozen::kCommitTrans], slots[Frozen::kRollbackTrans]);
    *object = slots;
    Frozen::AddRef(object);
    const Halyon::HynResult result = connection->QueryInterface(iid, ppv);
    Frozen::Release(object);
    return result;
}

Halyon::HynResult MyDllCanUnloadNow()
{
    return Halyon::HYN_S_OK;
}
