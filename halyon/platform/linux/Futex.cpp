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

std::int64_t MonotonicNanoseconds() noexcept
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * kNanosecondsPerSecond + now.tv_nsec;
}
} // namespace

bool FutexWait(const std::uint32_t* word, std::uint32_t expected, const timespec* timeout) noexcept
{
    return syscall(SYS_futex, word, FUTEX_WAIT_PRIVATE, expected, timeout, nullptr, 0) == 0 || errno != ETIMEDOUT;
}

void FutexWake(const std::uint32_t* word, int count) noexcept
{
    syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, count, nullptr, nullptr, 0);
}

Deadline::Deadline(std::int32_t milliseconds) noexcept
    : m_limited(milliseconds >= 0),
      m_endNanoseconds(m_limited ? MonotonicNanoseconds() + std::int64_t{milliseconds} * 1'000'000 : 0)
{
}

const timespec* Deadline::Left() noexcept
{
    if (!m_limited)
        return nullptr;
    const std::int64_t left = std::max<std::int64_t>(0, m_endNanoseconds - MonotonicNanoseconds());
    m_left.tv_sec = static_cast<std::time_t>(left / kNanosecondsPerSecond);
    m_left.tv_nsec = static_cast<decltype(m_left.tv_nsec)>(left % kNanosecondsPerSecond);
    return &m_left;
}

bool Deadline::HasPassed() noexcept
{
    return m_limited && MonotonicNanoseconds() >= m_endNanoseconds;
}
} // namespace Halyon::Linux
