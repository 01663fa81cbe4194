// Tells when a thread has gone to sleep, for tests that must find it waiting.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

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

// Threads that each wait for something once; made when all of them sleep in it.
class Sleepers
{
public:
    // `wait(index)` is run on each.
    template <class Wait>
    Sleepers(std::size_t count, Wait wait) : m_ids(count)
    {
        for (std::size_t index = 0; index < count; ++index)
            m_threads.emplace_back(
                [this, wait, index]
                {
                    m_ids[index] = GetCurrentTovThreadID();
                    wait(index);
                });
        UntilAllAsleep();
    }

    void UntilAllAsleep() const
    {
        for (const std::atomic<std::uint32_t>& id : m_ids)
            UntilAsleep(id);
    }
    void Join() { m_threads.clear(); }

private:
    std::vector<std::atomic<std::uint32_t>> m_ids;
    std::vector<std::jthread> m_threads;
};
} // namespace HalyonTest
