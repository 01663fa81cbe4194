// A component module with one class.
#include "IWordCounter.h"

#include <halyon/framework/CHynComponent.h>
#include <halyon/framework/MyDll.h>
#include <halyon/platform/TovPCMac.h>

using namespace Halyon;

class CWordCounter : public CHynComponent<IWordCounter, &IID_IWordCounter>
{
public:
    HynResult AddText(const char16_t* text) override
    {
        if (text == nullptr)
            return HYN_E_FAIL;
        bool inWord = false;
        for (; *text != 0; ++text)
        {
            const bool space = tov_iswspace(*text) != 0;
            if (!space && !inWord)
                ++m_count;
            inWord = !space;
        }
        return HYN_S_OK;
    }

    HynResult GetCount(std::uint32_t* pCount) override
    {
        if (pCount == nullptr)
            return HYN_E_FAIL;
        *pCount = m_count;
        return HYN_S_OK;
    }

private:
    std::uint32_t m_count = 0;
};

HynResult MyDllGetClassObject(const HYN_GUID& clsid, const HYN_GUID& iid, void** ppv)
{
    if (clsid == CLSID_WordCounter)
        return HynMakeObject<CWordCounter>(iid, ppv);
    return HYN_E_NOINTERFACE;
}

HynResult MyDllCanUnloadNow()
{
    return HYN_S_OK;
}
