// Counts and fails the allocations of the test program, the loaded module's included: the program's operator new
// replaces the library's everywhere in the process.
#pragma once

#include <cstddef>

namespace HalyonTest
{
// Blocks that are allocated and not yet given back, over all threads.
[[nodiscard]] long long LiveAllocations() noexcept;

// Size of the array that the calling thread asked for last, whether it got it or not.
[[nodiscard]] std::size_t LastArrayBytes() noexcept;

// Whether the allocation that the calling thread asks for now is to fail; counts it. For allocators beside this one.
[[nodiscard]] bool AllocationFails() noexcept;

// The first `nth` - 1 allocations of the calling thread succeed in this scope, the `nth` fails, and those after it
// succeed again or, when memory is gone for good, fail as well.
class FailAllocation
{
public:
    explicit FailAllocation(long long nth, bool forGood = false) noexcept;
    ~FailAllocation();
    FailAllocation(const FailAllocation&) = delete;
    FailAllocation& operator=(const FailAllocation&) = delete;

    [[nodiscard]] static bool HasFailed() noexcept;
};
} // namespace HalyonTest
