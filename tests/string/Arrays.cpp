#include "Arrays.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

#include <sys/mman.h>

namespace
{
constexpr std::size_t kPage = 4096;
constexpr std::size_t kGuardedPages = 4096;

std::atomic<int> g_live{0};
thread_local std::size_t t_lastBytes = 0;
thread_local int t_failIn = 0;
thread_local bool t_failed = false;

// Address space without access; pages of it are opened for guarded arrays, every second one at most, and never twice.
char* g_guarded = nullptr;
std::size_t g_guardedNext = 0;
thread_local bool t_guard = false;

void* AllocateGuarded(std::size_t size) noexcept
{
    const std::size_t bytes = (size + kPage - 1) / kPage * kPage;
    char* first = g_guarded + g_guardedNext;
    g_guardedNext += bytes + kPage;
    if (g_guardedNext > kGuardedPages * kPage || mprotect(first, bytes, PROT_READ | PROT_WRITE) != 0)
        std::abort();
    return first + (bytes - size) / 4 * 4;
}

void* Allocate(std::size_t size) noexcept
{
    t_lastBytes = size;
    if (t_failIn > 0 && --t_failIn == 0)
    {
        t_failed = true;
        return nullptr;
    }
    void* array = t_guard ? AllocateGuarded(size) : std::malloc(size != 0 ? size : 1);
    if (array == nullptr)
        return nullptr;
    g_live.fetch_add(1, std::memory_order_relaxed);
    return array;
}

void Free(void* array) noexcept
{
    if (array == nullptr)
        return;
    g_live.fetch_sub(1, std::memory_order_relaxed);
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(array) - reinterpret_cast<std::uintptr_t>(g_guarded);
    if (g_guarded != nullptr && offset < kGuardedPages * kPage)
        mprotect(g_guarded + offset / kPage * kPage, kPage, PROT_NONE);
    else
        std::free(array);
}
} // namespace

void* operator new[](std::size_t size)
{
    void* array = Allocate(size);
    if (array == nullptr)
        throw std::bad_alloc();
    return array;
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(size);
}

void operator delete[](void* array) noexcept
{
    Free(array);
}

void operator delete[](void* array, std::size_t /*size*/) noexcept
{
    Free(array);
}

int HalyonTest::LiveArrays() noexcept
{
    return g_live.load(std::memory_order_relaxed);
}

std::size_t HalyonTest::LastArrayBytes() noexcept
{
    return t_lastBytes;
}

void HalyonTest::FailArray(int nth) noexcept
{
    t_failIn = nth;
    t_failed = false;
}

bool HalyonTest::ArrayHasFailed() noexcept
{
    return t_failed;
}

HalyonTest::GuardedArrays::GuardedArrays() noexcept
{
    if (g_guarded == nullptr)
    {
        void* area =
            mmap(nullptr, kGuardedPages * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (area == MAP_FAILED)
            std::abort();
        g_guarded = static_cast<char*>(area);
    }
    t_guard = true;
}

HalyonTest::GuardedArrays::~GuardedArrays()
{
    t_guard = false;
}
