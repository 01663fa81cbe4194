// Thread and process identity, cached so that asking costs a load.

#include <halyon/platform/TovPCMac.h>

#include "ThreadIdentity.h"

#include <pthread.h>
#include <unistd.h>

using Halyon::Linux::t_threadID;

namespace
{
constinit std::atomic<std::uint32_t> g_forkCount{0};

// The forking thread is the only one that lives on in the child, so forgetting its identifier is enough.
void ForgetParent() noexcept
{
    t_threadID = 0;
    g_forkCount.fetch_add(1, std::memory_order_relaxed);
}

// The C library drops the handler when the module that holds this code is unloaded. Registering fails when there is no
// memory: no identifier is remembered then and forks are not counted.
const bool g_noForkHandler = pthread_atfork(nullptr, nullptr, ForgetParent) != 0;
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
    return g_forkCount.load(std::memory_order_relaxed);
}
