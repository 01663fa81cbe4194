// The kernel's wait on a 32-bit word, for the locks and events of this folder.
#pragma once

#include <cstdint>
#include <ctime>

#include <halyon/framework/HynUnit.h>

namespace Halyon::Linux
{
// Sleeps while `*word` holds `expected`; returns on a wake, a change, a signal or after `timeout` (null: no limit).
// False only when the time ran out.
bool FutexWait(const std::uint32_t* word, std::uint32_t expected, const timespec* timeout) noexcept;

// Wakes up to `count` sleepers on `word`.
void FutexWake(const std::uint32_t* word, int count) noexcept;

// The wait of a caller with a deadline: what is left of `milliseconds` after it began.
class Deadline
{
public:
    // A negative number is no limit.
    explicit Deadline(std::int32_t milliseconds) noexcept;

    // Null without a limit; else the time that is left, zero when it ran out.
    [[nodiscard]] const timespec* Left() noexcept;
    [[nodiscard]] bool HasPassed() noexcept;

private:
    bool m_limited;
    std::int64_t m_endNanoseconds;
    timespec m_left{};
};
} // namespace Halyon::Linux
