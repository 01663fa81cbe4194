// Critical sections: exclusion, re-entrance, waiting asleep, and a life that ends right after the last leave.

#include <array>
#include <cerrno>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include <halyon/framework/HynLock.h>

#include "tests/support/Asleep.h"

using Halyon::CHynAutoLock;
using Halyon::CHynLock;
using HalyonTest::UntilAsleep;

namespace
{
TEST(CriticalSection, LetsOneThreadInAtATime)
{
    constexpr int kThreads = 8;
    constexpr int kRounds = 20'000;
    CHynLock lock;
    int count = 0; // guarded by lock
    std::array<std::jthread, kThreads> threads;
    for (std::jthread& thread : threads)
    {
        thread = std::jthread(
            [&]
            {
                for (int round = 0; round < kRounds; ++round)
                {
                    const CHynAutoLock outer(lock);
                    const CHynAutoLock inner(lock);
                    ++count;
                }
            });
    }
    for (std::jthread& thread : threads)
        thread.join();
    EXPECT_EQ(count, kThreads * kRounds);
}

TEST(CriticalSection, OthersSleepUntilTheOwnerHasLeftAsOftenAsItEntered)
{
    CHynLock lock;
    // Entered before there is another thread: the one that comes later must find it closed all the same.
    lock.Lock();
    lock.Lock();
    lock.Lock();
    std::atomic<std::uint32_t> waiter{0};
    std::atomic<bool> inside{false};
    int waiterErrno = 0;
    std::jthread thread(
        [&]
        {
            errno = ENOTTY;
            waiter = GetCurrentTovThreadID();
            const CHynAutoLock guard(lock);
            waiterErrno = errno;
            inside = true;
        });
    for (int left = 0; left < 2; ++left)
    {
        UntilAsleep(waiter);
        EXPECT_FALSE(inside);
        lock.Unlock();
    }
    UntilAsleep(waiter);
    EXPECT_FALSE(inside);
    errno = EDOM;
    lock.Unlock();
    EXPECT_EQ(errno, EDOM);
    thread.join();
    EXPECT_TRUE(inside);
    EXPECT_EQ(waiterErrno, ENOTTY);
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
