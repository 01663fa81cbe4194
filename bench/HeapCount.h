// How often this program has called the heap: every malloc, calloc and realloc of the process, whoever made it.
#pragma once

#include <cstdint>

namespace Bench
{
// The calls of the calling thread so far. [any]
std::uint64_t HeapCalls() noexcept;
} // namespace Bench
