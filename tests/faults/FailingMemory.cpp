#include <tests/faults/FailingMemory.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>

#include <sqlite3.h>
#include <unicode/uclean.h>

#include <tests/support/Allocations.h>

using HalyonTest::AllocationFails;

namespace
{
std::atomic<long long> g_blocks{0};

void* Counted(void* block) noexcept
{
    if (block != nullptr)
        g_blocks.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void Uncount(const void* block) noexcept
{
    if (block != nullptr)
        g_blocks.fetch_sub(1, std::memory_order_relaxed);
}
} // namespace

long long HalyonTest::LiveBlocks() noexcept
{
    return g_blocks.load(std::memory_order_relaxed);
}

#ifdef HALYON_SANITIZED

namespace
{
// Must be in place before the libraries are first used.
const int g_hooks = []
{
    static sqlite3_mem_methods s_engine;
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &s_engine);
    sqlite3_mem_methods failing = s_engine;
    failing.xMalloc = [](int size)
    {
        return AllocationFails() ? nullptr : Counted(s_engine.xMalloc(size));
    };
    failing.xRealloc = [](void* block, int size)
    {
        return AllocationFails() ? nullptr : s_engine.xRealloc(block, size);
    };
    failing.xFree = [](void* block)
    {
        Uncount(block);
        s_engine.xFree(block);
    };
    sqlite3_config(SQLITE_CONFIG_MALLOC, &failing);

    UErrorCode status = U_ZERO_ERROR;
    u_setMemoryFunctions(
        nullptr, [](const void*, size_t size) { return AllocationFails() ? nullptr : Counted(std::malloc(size)); },
        [](const void*, void* block, size_t size)
        {
            void* moved = AllocationFails() ? nullptr : std::realloc(block, size);
            if (block == nullptr)
                Counted(moved);
            return moved;
        },
        [](const void*, void* block)
        {
            Uncount(block);
            std::free(block);
        },
        &status);
    return static_cast<int>(status);
}();
} // namespace

#else

// The C library's allocator under the names that do not change, for this program's own under the usual ones.
extern "C"
{
    void* __libc_malloc(size_t size);
    void* __libc_calloc(size_t count, size_t size);
    void* __libc_realloc(void* block, size_t size);
    void* __libc_memalign(size_t alignment, size_t size);
    void __libc_free(void* block);

    void* malloc(size_t size)
    {
        return AllocationFails() ? (errno = ENOMEM, nullptr) : Counted(__libc_malloc(size));
    }
    void* calloc(size_t count, size_t size)
    {
        return AllocationFails() ? (errno = ENOMEM, nullptr) : Counted(__libc_calloc(count, size));
    }
    void* realloc(void* block, size_t size)
    {
        if (size != 0 && AllocationFails())
            return errno = ENOMEM, nullptr;
        Uncount(block);
        void* moved = Counted(__libc_realloc(block, size));
        if (moved == nullptr && size != 0)
            Counted(block);
        return moved;
    }
    void* aligned_alloc(size_t alignment, size_t size)
    {
        return AllocationFails() ? (errno = ENOMEM, nullptr) : Counted(__libc_memalign(alignment, size));
    }
    int posix_memalign(void** block, size_t alignment, size_t size)
    {
        *block = AllocationFails() ? nullptr : Counted(__libc_memalign(alignment, size));
        return *block != nullptr ? 0 : ENOMEM;
    }
    void free(void* block)
    {
        Uncount(block);
        __libc_free(block);
    }
}

#endif

namespace
{
// The engine's small blocks come from the heap too instead of a store of each connection.
const int g_noLookaside = sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 0, 0);
} // namespace
