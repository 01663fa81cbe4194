#include "tests/support/Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{
std::atomic<long long> g_live{0};

// The allocations of this thread up to the one that fails; 0: it has failed, or none is to.
thread_local long long t_untilFailure = 0;
thread_local bool t_forGood = false;
thread_local std::size_t t_lastArrayBytes = 0;

void* Allocate(std::size_t size) noexcept
{
    if (HalyonTest::AllocationFails())
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
    if (block == nullptr)
        return;
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
    t_lastArrayBytes = size;
    return AllocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    t_lastArrayBytes = size;
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

// For what was made without exceptions and did not get through its constructor.
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept
{
    Free(block);
}

void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept
{
    Free(block);
}

namespace HalyonTest
{
long long LiveAllocations() noexcept
{
    return g_live.load(std::memory_order_relaxed);
}

std::size_t LastArrayBytes() noexcept
{
    return t_lastArrayBytes;
}

bool AllocationFails() noexcept
{
    if (t_untilFailure == 0)
        return t_forGood;
    return --t_untilFailure == 0;
}

FailAllocation::FailAllocation(long long nth, bool forGood) noexcept
{
    t_untilFailure = nth;
    t_forGood = forGood;
}

FailAllocation::~FailAllocation()
{
    t_untilFailure = 0;
    t_forGood = false;
}

bool FailAllocation::HasFailed() noexcept
{
    return t_untilFailure == 0;
}
} // namespace HalyonTest
