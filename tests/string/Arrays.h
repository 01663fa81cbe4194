// The arrays of this program, counted: string blocks are arrays, so a leaked or twice freed block shows in the count,
// and an allocation can be made to fail. Replaces the array forms of new and delete for the whole program.
#pragma once

#include <cstddef>

namespace HalyonTest
{
// Arrays allocated and not yet freed.
int LiveArrays() noexcept;

// Size of the array that the calling thread asked for last, whether it got it or not.
std::size_t LastArrayBytes() noexcept;

// Lets the calling thread's `nth` array from now on fail, once (1 is the next, 0 none); tells whether that has
// happened.
void FailArray(int nth) noexcept;
bool ArrayHasFailed() noexcept;

// While one lives, each array of the thread ends where a page ends (for sizes that 4 divides) and the next page cannot
// be touched; nor can a freed array.
class GuardedArrays
{
public:
    GuardedArrays() noexcept;
    ~GuardedArrays();
    GuardedArrays(const GuardedArrays&) = delete;
    GuardedArrays& operator=(const GuardedArrays&) = delete;
};
} // namespace HalyonTest
