// The same work on several threads.
#pragma once

#include <cstddef>
#include <thread>
#include <vector>

namespace HalyonTest
{
// Runs `work(index)` on as many threads at once and waits for their ends.
template <class Work>
void OnThreads(std::size_t count, Work work)
{
    std::vector<std::jthread> threads;
    threads.reserve(count);
    for (std::size_t index = 0; index < count; ++index)
        threads.emplace_back([&work, index] { work(index); });
}
} // namespace HalyonTest
