// Sleep, and the seam through which a program replaces it.

#include <halyon/platform/TovPCMac.h>

#include <cerrno>
#include <ctime>

#include "Futex.h"

namespace
{
std::atomic<TovSleepProc> g_sleepProc{nullptr};

void SleepMicroseconds(std::uint64_t microseconds) noexcept
{
    if (const TovSleepProc proc = g_sleepProc.load(std::memory_order_acquire))
    {
        proc(microseconds);
        return;
    }
    // Until a moment, not for a time: signals that interrupt it neither shorten nor lengthen it.
    const timespec end = Halyon::Linux::MomentFromNow(CLOCK_MONOTONIC, static_cast<std::int64_t>(microseconds * 1'000));
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR)
    {
    }
}
} // namespace

void TovSleep(std::uint32_t uMilliseconds) noexcept
{
    SleepMicroseconds(std::uint64_t{uMilliseconds} * 1'000);
}

void TovUSleep(std::uint32_t uMicroseconds) noexcept
{
    SleepMicroseconds(uMicroseconds);
}

TovSleepProc TovSetSleepProc(TovSleepProc proc) noexcept
{
    return g_sleepProc.exchange(proc, std::memory_order_acq_rel);
}
