// The machine's ticks, from the clock that nobody sets.

#include <halyon/platform/Interface.h>

#include <chrono>

namespace Halyon
{
std::uint32_t TickCount() noexcept
{
    using Ticks = std::chrono::duration<std::uint64_t, std::ratio<1, 60>>;
    return static_cast<std::uint32_t>(
        std::chrono::duration_cast<Ticks>(std::chrono::steady_clock::now().time_since_epoch()).count());
}
} // namespace Halyon
