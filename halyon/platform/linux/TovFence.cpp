// The fence that one thread makes for all.

#include <halyon/platform/TovPCMac.h>

#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{
bool Register() noexcept
{
    return syscall(SYS_membarrier, MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED, 0, 0) == 0;
}

bool Fence() noexcept
{
    return syscall(SYS_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0) == 0;
}

// Registered while the program loads, when it has one thread most likely: later it takes milliseconds.
const bool g_canFence = Register();
} // namespace

bool TovCanFenceThreads() noexcept
{
    return g_canFence;
}

void TovFenceThreads() noexcept
{
    if (!g_canFence || Fence())
        return;
    // Refused in a process that is not registered, as a child may find itself after a fork. Or for good, by a filter
    // that the program has put on itself since: what a running thread has stored is seen long before the sleep is over,
    // and one that does not run has passed a fence.
    if (!Register() || !Fence())
        TovSleep(1);
}
