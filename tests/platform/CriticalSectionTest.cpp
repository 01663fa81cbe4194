// Critical sections: exclusion, re-entrance, waiting asleep, and a life that ends right after the last leave.

#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include <halyon/framework/HynLock.h>

#include "tests/support/Asleep.h"
#include "tests/support/Threads.h"

using Halyon::CHynAutoLock;
using Halyon::CHynLock;
using namespace HalyonTest;

namespace
{
TEST(CriticalSection, LetsOneThreadInAtATime)
{
    constexpr int kThreads = 8;
    constexpr int kRounds = 20'000;
    CHynLock lock;
    int count = 0; // guarded by lock
    HalyonTest::OnThreads(kThreads,
                          [&](std::size_t)
                          {
                              for (int round = 0; round < kRounds; ++round)
                              {
                                  const CHynAutoLock outer(lock);
                                  const CHynAutoLock inner(lock);
                                  ++count;
                              }
                          });
    EXPECT_EQ(count, kThreads * kRounds);
}

TEST(CriticalSection, OthersSleepUntilTheOwnerHasLeftAsOftenAsItEntered)
{
    CHynLock lock;
    // Entered before there is another thread: those that come later must find it closed all the same.
    lock.Lock();
    lock.Lock();
    lock.Lock();
    int entered = 0; // guarded by lock
    Sleepers others(3,
                    [&](std::size_t)
                    {
                        const CHynAutoLock guard(lock);
                        ++entered;
                    });
    for (int left = 0; left < 3; ++left)
    {
        others.UntilAllAsleep();
        EXPECT_EQ(entered, 0);
        lock.Unlock();
    }
    // Each that leaves lets the next in.
    others.Join();
    EXPECT_EQ(entered, 3);
}

TEST(CriticalSection, MayBeDestroyedByItsNextOwner)
{
    for (int round = 0; round < 300; ++round)
    {
        auto spLock = std::make_unique<CHynLock>();
        CHynLock& lock = *spLock;
        lock.Lock();
        std::atomic<std::uint32_t> waiter{0};
        std::jthread next(
            [&waiter, &lock, spOwned = std::move(spLock)]() mutable
            {
                waiter = GetCurrentTovThreadID();
                lock.Lock();
                lock.Unlock();
                spOwned.reset();
            });
        // Every second time the next owner has to be woken.
        if (round % 2 != 0)
            UntilAsleep(waiter);
        lock.Unlock();
    }
}
} // namespace
