#include "Futex.h"

#include <algorithm>
#include <cerrno>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Halyon::Linux
{
namespace
{
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::int64_t kNanosecondsPerMillisecond = 1'000'000;

// On 32-bit machines the call exists twice, one for each width of time_t.
#ifdef SYS_futex_time64
constexpr long kFutexCall = sizeof(std::time_t) == 8 ? SYS_futex_time64 : SYS_futex;
#else
constexpr long kFutexCall = SYS_futex;
#endif

std::int64_t Nanoseconds(const timespec& moment) noexcept
{
    return std::int64_t{moment.tv_sec} * kNanosecondsPerSecond + moment.tv_nsec;
}

std::int64_t Now(clockid_t clock) noexcept
{
    timespec now{};
    clock_gettime(clock, &now);
    return Nanoseconds(now);
}

// The calls of TovPCMac.h report through their results alone, so a caller's errno outlives a lock.
class ErrnoKeeper
{
public:
    ErrnoKeeper() = default;
    ~ErrnoKeeper() { errno = m_errno; }
    ErrnoKeeper(const ErrnoKeeper&) = delete;
    ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

private:
    int m_errno = errno;
};
} // namespace

timespec MomentFromNow(clockid_t clock, std::int64_t nanoseconds) noexcept
{
    const std::int64_t moment = Now(clock) + nanoseconds;
    timespec result{};
    result.tv_sec = static_cast<std::time_t>(moment / kNanosecondsPerSecond);
    result.tv_nsec = static_cast<decltype(result.tv_nsec)>(moment % kNanosecondsPerSecond);
    return result;
}

Deadline::Deadline(std::int32_t milliseconds) noexcept : m_limited(milliseconds >= 0)
{
    if (m_limited)
        m_end = MomentFromNow(CLOCK_MONOTONIC, milliseconds * kNanosecondsPerMillisecond);
}

timespec Deadline::EndInRealTime() const noexcept
{
    return MomentFromNow(CLOCK_REALTIME, std::max<std::int64_t>(0, Nanoseconds(m_end) - Now(CLOCK_MONOTONIC)));
}

bool FutexWait(const std::uint32_t* word, std::uint32_t expected, const Deadline& deadline) noexcept
{
    const ErrnoKeeper keeper;
    // This form of the call takes a moment; the plain one takes a duration.
    return syscall(kFutexCall, word, FUTEX_WAIT_BITSET_PRIVATE, expected, deadline.End(), nullptr,
                   FUTEX_BITSET_MATCH_ANY) == 0 ||
           errno != ETIMEDOUT;
}

void FutexWake(const std::uint32_t* word, int count) noexcept
{
    const ErrnoKeeper keeper;
    syscall(kFutexCall, word, FUTEX_WAKE_PRIVATE, count, nullptr, nullptr, 0);
}
} // namespace Halyon::Linux
