// Thread and process identity, cached so that asking costs a load.

#include <halyon/platform/TovPCMac.h>

#include "ThreadIdentity.h"

#include <pthread.h>
#include <unistd.h>

using Halyon::Linux::t_threadID;

namespace
{
// No count of forks: the handler is missing and the kernel is asked.
constexpr std::uint32_t kAskKernel = 0xFFFFFFFFu;
constinit std::atomic<std::uint32_t> g_forkCount{0};

// The forking thread is the only one that lives on in the child, so forgetting its identifier is enough.
void ForgetParent() noexcept
{
    t_threadID = 0;
    g_forkCount.fetch_add(1, std::memory_order_relaxed);
}

// The C library drops the handler when the module that holds this code is unloaded. Registering fails when there is no
// memory; nothing is remembered then.
const bool g_noForkHandler = []
{
    const bool failed = pthread_atfork(nullptr, nullptr, ForgetParent) != 0;
    if (failed)
        g_forkCount.store(kAskKernel, std::memory_order_relaxed);
    return failed;
}();
} // namespace

namespace Halyon::Linux
{
constinit thread_local std::uint32_t t_threadID = 0;

std::uint32_t AskThreadID() noexcept
{
    const auto threadID = static_cast<std::uint32_t>(gettid());
    if (!g_noForkHandler)
        t_threadID = threadID;
    return threadID;
}
} // namespace Halyon::Linux

std::uint32_t GetCurrentTovThreadID() noexcept
{
    return Halyon::Linux::ThreadID();
}

std::uint32_t TovGetForkCount() noexcept
{
    const std::uint32_t count = g_forkCount.load(std::memory_order_relaxed);
    return count != kAskKernel ? count : static_cast<std::uint32_t>(getpid());
}
