#include "tests/support/Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{
std::atomic<long long> g_live{0};

// How many allocations of this thread succeed before one fails; negative: none fails.
thread_local long long t_untilFailure = -1;

void* Allocate(std::size_t size) noexcept
{
    if (t_untilFailure >= 0 && t_untilFailure-- == 0)
        return nullptr;
    void* block = std::malloc(size != 0 ? size : 1);
    if (block != nullptr)
        g_live.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void* AllocateOrThrow(std::size_t size)
{
    void* block = Allocate(size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void Free(void* block) noexcept
{
    if (block != nullptr)
        g_live.fetch_sub(1, std::memory_order_relaxed);
    std::free(block);
}
} // namespace

void* operator new(std::size_t size)
{
    return AllocateOrThrow(size);
}

void* operator new[](std::size_t size)
{
    return AllocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(size);
}

void operator delete(void* block) noexcept
{
    Free(block);
}

void operator delete[](void* block) noexcept
{
    Free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    Free(block);
}

void operator delete[](void* block, std::size_t /*size*/) noexcept
{
    Free(block);
}

namespace HalyonTest
{
long long LiveAllocations() noexcept
{
    return g_live.load(std::memory_order_relaxed);
}

FailAllocation::FailAllocation(long long nth) noexcept
{
    t_untilFailure = nth - 1;
}

FailAllocation::~FailAllocation()
{
    t_untilFailure = -1;
}

bool FailAllocation::HasFailed() noexcept
{
    return t_untilFailure < 0;
}
} // namespace HalyonTest
