// Threads, their identity, and sleep.

#include <algorithm>
#include <array>
#include <chrono>
#include <latch>
#include <thread>

#include <gtest/gtest.h>

#include <halyon/platform/TovPCMac.h>

#include "tests/support/Asleep.h"
#include "tests/support/InChild.h"

#include <pthread.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

namespace
{
// A thread that runs until the gate is opened.
struct Gated
{
    std::latch gate{1};
    std::atomic<std::uint32_t> threadID{0};
    TovThreadRef thread = TovCreateThread(
        [](void* argument) -> std::uint32_t
        {
            auto& self = *static_cast<Gated*>(argument);
            EXPECT_EQ(GetCurrentTovThreadID(), static_cast<std::uint32_t>(gettid()));
            self.threadID = GetCurrentTovThreadID();
            self.gate.wait();
            return 0;
        },
        this, 0, 0);

    void UntilRunning() const
    {
        while (threadID == 0)
            std::this_thread::yield();
    }

    void Finish()
    {
        gate.count_down();
        EXPECT_EQ(TovWaitThread(thread, kTovForever), 0);
        TovCloseThreadRef(thread);
    }
};

int g_localObjects = 0; // ordered by the wait

struct LocalObject
{
    LocalObject() { ++g_localObjects; }
    ~LocalObject() { --g_localObjects; }
};

TEST(Thread, AWaitSeesAllThatTheThreadDid)
{
    for (const bool leavesEarly : {false, true})
    {
        int value = leavesEarly ? 1 : 0; // ordered by the start and the wait
        const auto body = [](void* argument) -> std::uint32_t
        {
            static thread_local LocalObject object;
            const LocalObject* used = &object;
            int& number = *static_cast<int*>(argument);
            const bool leaves = number != 0;
            number = used != nullptr ? g_localObjects + 41 : 0;
            if (leaves)
                pthread_exit(nullptr);
            return 0;
        };
        const TovThreadRef thread = TovCreateThread(body, &value, 0, 0);
        ASSERT_NE(thread, 0u);
        EXPECT_EQ(TovWaitThread(thread, 60'000), 0);
        EXPECT_EQ(value, 42);
        // Nothing of it runs any more, so the code it ran may be unloaded.
        EXPECT_EQ(g_localObjects, 0);
        EXPECT_EQ(TovWaitThread(thread, kTovForever), 0) << "it has still ended";
        TovCloseThreadRef(thread);
        EXPECT_NE(TovWaitThread(thread, kTovForever), 0);
    }
}

TEST(Thread, WaitsEndWithTheirTimeAndOutliveTheReference)
{
    Gated gated;
    EXPECT_NE(TovWaitThread(gated.thread, 0), 0);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_NE(TovWaitThread(gated.thread, 2), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2));
    std::array<int, 3> results{1, 1, 1};
    HalyonTest::Sleepers waiters(3, [&](std::size_t i)
                                 { results[i] = TovWaitThread(gated.thread, i == 0 ? 60'000 : kTovForever); });
    TovCloseThreadRef(gated.thread);
    TovCloseThreadRef(gated.thread);
    EXPECT_NE(TovWaitThread(gated.thread, kTovForever), 0);
    gated.gate.count_down();
    waiters.Join();
    EXPECT_EQ(results, (std::array{0, 0, 0}));
}

TEST(Thread, RunsOnWithoutAReference)
{
    static std::atomic<int> ended;
    const TovThreadProc body = [](void*)
    {
        return static_cast<std::uint32_t>(++ended > 0);
    };
    for (int i = 0; i < 100; ++i)
        TovCloseThreadRef(TovCreateThread(body, nullptr, 0, 0));
    while (ended < 100)
        std::this_thread::yield();
}

TEST(Thread, IsRefusedWithoutABodyOrWithFlags)
{
    const TovThreadProc body = [](void*) -> std::uint32_t
    {
        return 0;
    };
    EXPECT_EQ(TovCreateThread(nullptr, nullptr, 0, 0), 0u);
    EXPECT_EQ(TovCreateThread(body, nullptr, 1, 0), 0u);
    for (const TovThreadRef none : {TovThreadRef{0}, ~TovThreadRef{0}})
    {
        EXPECT_NE(TovWaitThread(none, kTovForever), 0);
        EXPECT_NE(TovSetThreadPriority(none, 0), 0);
        TovCloseThreadRef(none);
    }
}

TEST(Thread, HasAtLeastTheStackThatWasAskedFor)
{
    // The second size is one that no thread can run on.
    for (const std::uint32_t asked : {32u << 20, 1u})
    {
        std::size_t stackSize = 0;
        const TovThreadRef thread = TovCreateThread(
            [](void* argument) -> std::uint32_t
            {
                pthread_attr_t attributes;
                pthread_getattr_np(pthread_self(), &attributes);
                pthread_attr_getstacksize(&attributes, static_cast<std::size_t*>(argument));
                pthread_attr_destroy(&attributes);
                return 0;
            },
            &stackSize, 0, asked);
        EXPECT_EQ(TovWaitThread(thread, kTovForever), 0);
        EXPECT_GE(stackSize, asked);
        TovCloseThreadRef(thread);
    }
}

TEST(Thread, PriorityIsRelativeToTheProcess)
{
    const int before = getpriority(PRIO_PROCESS, 0);
    const int usual = std::min(before + 3, 19);
    const int patient = std::min(usual + 2, 19); // there is nothing beyond
    ASSERT_EQ(setpriority(PRIO_PROCESS, 0, usual), 0);
    // Only a privileged process takes patience back; the administrator of a name space is none.
    const bool privileged = setpriority(PRIO_PROCESS, 0, before) == 0;
    ASSERT_EQ(setpriority(PRIO_PROCESS, 0, usual), 0);
    Gated gated;
    EXPECT_EQ(TovSetThreadPriority(gated.thread, -2), 0);
    gated.UntilRunning();
    EXPECT_EQ(getpriority(PRIO_PROCESS, gated.threadID), patient);
    const int restored = TovSetThreadPriority(gated.thread, 0);
    EXPECT_EQ(getpriority(PRIO_PROCESS, gated.threadID), restored == 0 ? usual : patient);
    EXPECT_EQ(restored == 0, privileged);
    gated.gate.count_down();
    EXPECT_EQ(TovWaitThread(gated.thread, kTovForever), 0);
    EXPECT_NE(TovSetThreadPriority(gated.thread, -2), 0) << "another thread may have its identifier by now";
    TovCloseThreadRef(gated.thread);
    setpriority(PRIO_PROCESS, 0, before);
}

TEST(ThreadID, IsTheKernelsAlsoInAForkedChild)
{
    Gated gated;
    const std::uint32_t parentID = GetCurrentTovThreadID();
    EXPECT_EQ(parentID, static_cast<std::uint32_t>(gettid()));
    const std::uint32_t forkCount = TovGetForkCount();
    const std::string seen = HalyonTest::InChild(
        [&]
        {
            TovCriticalSection section{};
            TovEnterCriticalSection(&section);
            TovEnterCriticalSection(&section);
            TovLeaveCriticalSection(&section);
            TovLeaveCriticalSection(&section);
            const TovEventRef event = TovCreateEvent(0, 1);
            const bool isKernels = GetCurrentTovThreadID() == static_cast<std::uint32_t>(gettid());
            return std::to_string(isKernels) + " " + std::to_string(TovGetForkCount() - forkCount) + " " +
                   std::to_string(TovWaitThread(gated.thread, kTovForever) != 0) + " " +
                   std::to_string(TovWaitEvent(event, kTovForever));
        });
    EXPECT_EQ(seen, "1 1 1 0") << "identifier, forks, the parent's thread has gone, a signalled event";
    EXPECT_EQ(GetCurrentTovThreadID(), parentID);
    EXPECT_EQ(TovGetForkCount(), forkCount);
    gated.Finish();
}

TEST(Sleep, SignalsDoNotShortenIt)
{
    struct sigaction ignore
    {
    };
    ignore.sa_handler = [](int) {
    };
    sigaction(SIGALRM, &ignore, nullptr);
    const itimerval often{{0, 500}, {0, 500}};
    setitimer(ITIMER_REAL, &often, nullptr);
    const auto begin = std::chrono::steady_clock::now();
    TovSleep(10);
    TovUSleep(500);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::microseconds(10'500));
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
}
} // namespace
