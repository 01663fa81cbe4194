// Tells when a thread has gone to sleep, for tests that must find it waiting.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <thread>

#include <halyon/platform/TovPCMac.h>

namespace HalyonTest
{
// Returns once the thread of this process sleeps in the kernel. Its identifier may come later: 0 means not yet.
inline void UntilAsleep(const std::atomic<std::uint32_t>& threadID)
{
    for (;;)
    {
        std::string line;
        if (const std::uint32_t id = threadID.load(); id != 0)
            std::getline(std::ifstream("/proc/self/task/" + std::to_string(id) + "/stat"), line);
        // The state follows the name, which stands in brackets and may hold anything.
        const std::size_t name = line.rfind(')');
        if (name != std::string::npos && line.compare(name, 3, ") S") == 0)
            return;
        std::this_thread::yield();
    }
}
} // namespace HalyonTest
