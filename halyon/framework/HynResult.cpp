#include <halyon/framework/HynResult.h>

namespace Halyon
{
const char* HynResultName(HynResult result) noexcept
{
    switch (result)
    {
    case HYN_S_OK:
        return "HYN_S_OK";
    case HYN_S_FALSE:
        return "HYN_S_FALSE";
    case HYN_E_BUFFERTOOSMALL:
        return "HYN_E_BUFFERTOOSMALL";
    case HYN_E_FAIL:
        return "HYN_E_FAIL";
    case HYN_E_NOINTERFACE:
        return "HYN_E_NOINTERFACE";
    case HYN_E_POINTER:
        return "HYN_E_POINTER";
    case HYN_E_SQSTEP:
        return "HYN_E_SQSTEP";
    case HYN_E_SQNULLVALUE:
        return "HYN_E_SQNULLVALUE";
    default:
        return "unknown result";
    }
}
} // namespace Halyon
