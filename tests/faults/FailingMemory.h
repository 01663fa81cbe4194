// Everything that the process takes from the heap, not the C++ allocations alone: the engine's, ICU's and the C
// library's own fail like those, at the same count (FailAllocation of tests/support/Allocations.h).
//
// Under a sanitizer, which has the heap to itself, the C library's own are left out.
#pragma once

namespace HalyonTest
{
// Blocks of the heap that are not given back, over all threads and all libraries.
[[nodiscard]] long long LiveBlocks() noexcept;
} // namespace HalyonTest
