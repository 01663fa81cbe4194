// Counts and fails the allocations of the test program, the loaded module's included: the program's operator new
// replaces the library's everywhere in the process.
#pragma once

namespace HalyonTest
{
// Blocks that are allocated and not yet given back, over all threads.
[[nodiscard]] long long LiveAllocations() noexcept;

// The first `nth` - 1 allocations of the calling thread succeed in this scope, the `nth` fails, and those after it
// succeed again.
class FailAllocation
{
public:
    explicit FailAllocation(long long nth) noexcept;
    ~FailAllocation();
    FailAllocation(const FailAllocation&) = delete;
    FailAllocation& operator=(const FailAllocation&) = delete;

    [[nodiscard]] static bool HasFailed() noexcept;
};
} // namespace HalyonTest
