// Thread and process identity, cached so that asking costs a load.

#include <halyon/platform/TovPCMac.h>

#include <pthread.h>
#include <unistd.h>

namespace
{
std::atomic<std::uint32_t> g_forkCount{0};

// The kernel's identifier, and the fork count it was asked under; a forked child asks anew.
struct CachedIdentity
{
    std::uint32_t uThreadID;
    std::uint32_t uForkCount;
};
thread_local CachedIdentity t_identity{0, 0};

const int g_forkHandlerStatus =
    pthread_atfork(nullptr, nullptr, [] { g_forkCount.fetch_add(1, std::memory_order_relaxed); });
} // namespace

std::uint32_t GetCurrentTovThreadID() noexcept
{
    const std::uint32_t forkCount = TovGetForkCount();
    if (t_identity.uThreadID == 0 || t_identity.uForkCount != forkCount)
        t_identity = {static_cast<std::uint32_t>(gettid()), forkCount};
    return t_identity.uThreadID;
}

std::uint32_t TovGetForkCount() noexcept
{
    return g_forkCount.load(std::memory_order_relaxed);
}
