// The kernel's wait on a 32-bit word, for the locks, events and threads of this folder. Not for waiting on anything
// that has a call in TovPCMac.h.
#pragma once

#include <cstdint>
#include <ctime>

#include <halyon/framework/HynUnit.h>

namespace Halyon::Linux
{
// The moment `nanoseconds` from now on `clock`.
[[nodiscard]] timespec MomentFromNow(clockid_t clock, std::int64_t nanoseconds) noexcept;

// The end of a wait, as a moment, so that a wait that is interrupted and begun again does not grow.
class Deadline
{
public:
    // A negative number is no limit.
    explicit Deadline(std::int32_t milliseconds) noexcept;

    // On the monotonic clock; null without a limit.
    [[nodiscard]] const timespec* End() const noexcept { return m_limited ? &m_end : nullptr; }

    // The same moment on the real-time clock, for calls that know no other. Requires: a limit.
    [[nodiscard]] timespec EndInRealTime() const noexcept;

private:
    bool m_limited;
    timespec m_end{};
};

// Sleeps while `*word` holds `expected`; returns on a wake, a change, a signal or at the deadline, and also for no
// reason at all: the memory may have had another use before. False only when the time ran out. Keeps errno.
bool FutexWait(const std::uint32_t* word, std::uint32_t expected, const Deadline& deadline) noexcept;

// Wakes up to `count` sleepers on `word`. The memory is not read, so it may be gone. Keeps errno.
void FutexWake(const std::uint32_t* word, int count) noexcept;
} // namespace Halyon::Linux
