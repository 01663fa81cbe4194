// The screen: what the machine's windows, menus, icons, pictures and regions must be able to do for the tools.
//
// Nothing here waits for a display that is not there, and nothing ends the process for want of one.
#pragma once

#include <halyon/platform/PlatformTypes.h>

namespace Halyon
{
// Sixtieths of a second since the machine started, modulo 2^32. [any]
std::uint32_t TickCount() noexcept;
} // namespace Halyon
