#include "tests/support/Allocations.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

#include <sys/mman.h>

namespace
{
std::atomic<long long> g_live{0};

// The allocations of this thread up to the one that fails; 0: it has failed, or none is to.
thread_local long long t_untilFailure = 0;
thread_local bool t_forGood = false;
thread_local std::size_t t_lastArrayBytes = 0;

// Address space without access; pages of it are opened for guarded blocks, every second one at most, and never twice.
constexpr std::size_t kPage = 4096;
constexpr std::size_t kGuarded = 4096 * kPage;
constexpr std::size_t kAlignment = alignof(std::max_align_t);
char* g_guarded = nullptr;
std::size_t g_guardedNext = 0;
thread_local bool t_guard = false;

void* AllocateGuarded(std::size_t size) noexcept
{
    const std::size_t bytes = (size + kPage - 1) / kPage * kPage;
    char* first = g_guarded + g_guardedNext;
    g_guardedNext += bytes + kPage;
    if (g_guardedNext > kGuarded || mprotect(first, bytes, PROT_READ | PROT_WRITE) != 0)
        std::abort();
    return first + (bytes - size) / kAlignment * kAlignment;
}

void* Allocate(std::size_t size) noexcept
{
    if (HalyonTest::AllocationFails())
        return nullptr;
    void* block = t_guard ? AllocateGuarded(size) : std::malloc(size != 0 ? size : 1);
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
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(g_guarded);
    if (g_guarded != nullptr && offset < kGuarded)
        mprotect(g_guarded + offset / kPage * kPage, kPage, PROT_NONE);
    else
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

GuardedAllocations::GuardedAllocations() noexcept
{
    if (g_guarded == nullptr)
    {
        void* area = mmap(nullptr, kGuarded, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (area == MAP_FAILED)
            std::abort();
        g_guarded = static_cast<char*>(area);
    }
    t_guard = true;
}

GuardedAllocations::~GuardedAllocations()
{
    t_guard = false;
}
} // namespace HalyonTest
