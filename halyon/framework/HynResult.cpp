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
    case HYN_S_EVENT_HANDLED:
        return "HYN_S_EVENT_HANDLED";
    case HYN_E_THREADNOTRUNNING:
        return "HYN_E_THREADNOTRUNNING";
    case HYN_E_THREADNOEVENT:
        return "HYN_E_THREADNOEVENT";
    case HYN_E_THREADNOTHREAD:
        return "HYN_E_THREADNOTHREAD";
    case HYN_E_THREADRUNNING:
        return "HYN_E_THREADRUNNING";
    case HYN_E_NOHANDLER:
        return "HYN_E_NOHANDLER";
    case HYN_E_SQSTEP:
        return "HYN_E_SQSTEP";
    case HYN_E_SQNULLVALUE:
        return "HYN_E_SQNULLVALUE";
    default:
        return "unknown result";
    }
}
} // namespace Halyon
