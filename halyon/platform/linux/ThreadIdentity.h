// The calling thread's identifier for code of this folder that asks on every call. Elsewhere GetCurrentTovThreadID is
// the way.
#pragma once

#include <cstdint>

#include <halyon/framework/HynUnit.h>

namespace Halyon::Linux
{
// 0 until the thread asks for the first time, and again right after a fork.
extern constinit thread_local std::uint32_t t_threadID;

// Asks the kernel and remembers the answer.
std::uint32_t AskThreadID() noexcept;

inline std::uint32_t ThreadID() noexcept
{
    const std::uint32_t threadID = t_threadID;
    return threadID != 0 ? threadID : AskThreadID();
}
} // namespace Halyon::Linux
