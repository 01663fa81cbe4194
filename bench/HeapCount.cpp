// The program's own malloc family in front of the C library's, so that calls out of any shared object are counted too.
#include "HeapCount.h"

#include <cstddef>

// The C library's own entry points, which it keeps under these names for this purpose.
extern "C"
{
    void* __libc_malloc(std::size_t size);
    void* __libc_calloc(std::size_t count, std::size_t size);
    void* __libc_realloc(void* block, std::size_t size);
}

namespace
{
thread_local std::uint64_t t_calls = 0;
}

std::uint64_t Bench::HeapCalls() noexcept
{
    return t_calls;
}

extern "C"
{
    __attribute__((visibility("default"))) void* malloc(std::size_t size)
    {
        ++t_calls;
        return __libc_malloc(size);
    }

    __attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size)
    {
        ++t_calls;
        return __libc_calloc(count, size);
    }

    __attribute__((visibility("default"))) void* realloc(void* block, std::size_t size)
    {
        ++t_calls;
        return __libc_realloc(block, size);
    }
}
