// The one thread identity of the system.
#pragma once

#include <halyon/framework/HynTypes.h>

namespace Halyon
{
// The calling thread's identifier: stable for the life of the thread, distinct between live threads, never 0. The
// database keys its handles on it, the thread manager finds threads by it. Right after a fork the child gets its own.
// [any]
[[nodiscard]] std::uint32_t HynGetCurrentThreadID() noexcept;
} // namespace Halyon
