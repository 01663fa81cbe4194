// The lock of the consumer's end must keep everybody out, whoever the owner is.

#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <halyon/thread/HynBiasedLock.h>

using Halyon::CHynAutoLock;
using Halyon::HynBiasedLock;

namespace
{
// Two plain counters that differ only while somebody is inside; the second lock is taken inside the first.
struct Guarded
{
    HynBiasedLock lock;
    long long first = 0;
    long long second = 0;
    int torn = 0;

    void Step()
    {
        const CHynAutoLock outer(lock);
        torn += first != second ? 1 : 0;
        ++first;
        const CHynAutoLock again(lock);
        ++second;
    }
};

TEST(BiasedLock, KeepsEachOwnerAndOthersApart)
{
    constexpr int kOwners = 3; // one after the other
    constexpr int kOwnerSteps = 400'000;
    constexpr int kOthers = 3;
    constexpr int kOtherSteps = 20'000;
    const auto repeat = [](Guarded& guarded, int steps)
    {
        for (int step = 0; step < steps; ++step)
            guarded.Step();
    };
    Guarded guarded;
    {
        std::vector<std::jthread> others;
        others.reserve(kOthers);
        for (int other = 0; other < kOthers; ++other)
            others.emplace_back([&] { repeat(guarded, kOtherSteps); });
        for (int owner = 0; owner < kOwners; ++owner)
            std::jthread(
                [&]
                {
                    guarded.lock.Adopt();
                    repeat(guarded, kOwnerSteps);
                })
                .join();
    }
    EXPECT_EQ(guarded.torn, 0);
    EXPECT_EQ(guarded.first, kOwners * kOwnerSteps + kOthers * kOtherSteps);
    EXPECT_EQ(guarded.second, guarded.first);
}
} // namespace
