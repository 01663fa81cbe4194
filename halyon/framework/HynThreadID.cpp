#include <halyon/framework/HynThreadID.h>

#include <halyon/platform/TovPCMac.h>

namespace Halyon
{
std::uint32_t HynGetCurrentThreadID() noexcept
{
    return GetCurrentTovThreadID();
}
} // namespace Halyon
