// Events: one wait a signal, nothing lost, and handles that are safe after their event is gone. Sleeps that are
// counted.

#include <array>
#include <cerrno>
#include <chrono>
#include <memory>
#include <set>
#include <thread>

#include <gtest/gtest.h>

#include <halyon/platform/TovPCMac.h>
#include <halyon/platform/linux/TovHandleTable.h>

#include "tests/support/Asleep.h"
#include "tests/support/Threads.h"

#include <sched.h>

using namespace HalyonTest;

namespace
{
std::atomic<std::uint64_t> g_sleptMicroseconds{0};

// Sleeps are counted, not slept.
class CountedSleep
{
public:
    CountedSleep() : m_before(TovSetSleepProc([](std::uint64_t microseconds) { g_sleptMicroseconds += microseconds; }))
    {
        g_sleptMicroseconds = 0;
    }
    ~CountedSleep() { TovSetSleepProc(m_before); }
    CountedSleep(const CountedSleep&) = delete;
    CountedSleep& operator=(const CountedSleep&) = delete;

private:
    TovSleepProc m_before;
};

TEST(Event, EachSignalEndsOneWaitAndClosingTheOthers)
{
    // This thread and those it makes take turns on one processor.
    cpu_set_t before{};
    sched_getaffinity(0, sizeof before, &before);
    cpu_set_t one{};
    CPU_SET(static_cast<std::size_t>(sched_getcpu()), &one);
    sched_setaffinity(0, sizeof one, &one);
    const TovEventRef event = TovCreateEvent(0, 0);
    std::atomic<int> signalled{0};
    std::atomic<int> failed{0};
    Sleepers waiters(8,
                     [&](std::size_t)
                     {
                         // One that is woken does not push the thread that woke it off the processor.
                         const sched_param none{};
                         sched_setscheduler(0, SCHED_BATCH, &none);
                         ++(TovWaitEvent(event, kTovForever) == 0 ? signalled : failed);
                     });
    // One after the other, without giving a waiter the time to run.
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(TovSetEvent(event), 0);
    sched_setaffinity(0, sizeof before, &before);
    while (signalled < 3)
        std::this_thread::yield();
    TovCloseEvent(event);
    waiters.Join();
    EXPECT_EQ(signalled, 3);
    EXPECT_EQ(failed, 5);
}

TEST(Event, ASignalWithoutAWaiterIsKeptOnce)
{
    const TovEventRef event = TovCreateEvent(0, 1);
    EXPECT_EQ(TovWaitEvent(event, 0), 0);
    EXPECT_NE(TovWaitEvent(event, 0), 0);
    // A wait that has given up is no waiter any more.
    const auto begin = std::chrono::steady_clock::now();
    errno = EDOM;
    EXPECT_NE(TovWaitEvent(event, 2), 0);
    EXPECT_EQ(errno, EDOM) << "a guard in a destructor would hide what a call before it said";
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(TovSetEvent(event), 0);
    EXPECT_EQ(TovWaitEvent(event, kTovForever), 0);
    EXPECT_NE(TovWaitEvent(event, 0), 0);
    TovCloseEvent(event);
    EXPECT_EQ(TovCreateEvent(1, 0), 0u);
}

TEST(Event, HandlesOfNoEventFailAndLeaveOtherEventsAlone)
{
    const CountedSleep sleep;
    const TovEventRef stale = TovCreateEvent(0, 1);
    TovCloseEvent(stale);
    // The place of the closed event is in use again, by an event that is signalled.
    const TovEventRef event = TovCreateEvent(0, 1);
    EXPECT_NE(event, stale);
    for (const TovEventRef none : {TovEventRef{0}, stale, ~TovEventRef{0}})
    {
        const std::uint64_t slept = g_sleptMicroseconds;
        EXPECT_NE(TovWaitEvent(none, kTovForever), 0) << none;
        EXPECT_GT(g_sleptMicroseconds, slept) << "a loop around the wait would spin";
        EXPECT_NE(TovSetEvent(none), 0) << none;
        TovCloseEvent(none);
    }
    EXPECT_EQ(TovWaitEvent(event, 0), 0);
    TovSetEvent(stale);
    EXPECT_NE(TovWaitEvent(event, 0), 0);
    TovCloseEvent(event);
}

TEST(Event, NoSignalIsLostBetweenThreads)
{
    constexpr int kRounds = 10'000;
    const std::array<TovEventRef, 2> events{TovCreateEvent(0, 1), TovCreateEvent(0, 0)};
    int ball = 0; // handed over by the events alone
    OnThreads(2,
              [&](std::size_t side)
              {
                  for (int round = 0; round < kRounds; ++round)
                  {
                      ASSERT_EQ(TovWaitEvent(events[side], kTovForever), 0);
                      ++ball;
                      TovSetEvent(events[1 - side]);
                  }
              });
    EXPECT_EQ(ball, 2 * kRounds);
    for (const TovEventRef event : events)
        TovCloseEvent(event);
}

// Senders put work down and signal only afterwards; the one receiver takes all there is at each signal.
TEST(Event, AMergedSignalShowsItsWorkToo)
{
    constexpr std::size_t kSenders = 3;
    constexpr int kRounds = 20'000;
    const TovEventRef event = TovCreateEvent(0, 0);
    std::array<std::atomic<int>, kSenders> work{};
    int taken = 0;
    const auto receive = [&]
    {
        while (taken < static_cast<int>(kSenders) * kRounds && TovWaitEvent(event, kTovForever) == 0)
        {
            for (std::atomic<int>& place : work)
                taken += place.exchange(0, std::memory_order_relaxed);
        }
    };
    OnThreads(kSenders + 1,
              [&](std::size_t index)
              {
                  if (index == kSenders)
                      return receive();
                  for (int round = 0; round < kRounds; ++round)
                  {
                      work[index].fetch_add(1, std::memory_order_relaxed);
                      TovSetEvent(event);
                  }
              });
    EXPECT_EQ(taken, static_cast<int>(kSenders) * kRounds);
    TovCloseEvent(event);
}

TEST(Event, WaitsAndSignalsMayRaceWithTheClosing)
{
    constexpr int kRounds = 300;
    std::atomic<TovEventRef> shared{TovCreateEvent(0, 0)};
    std::atomic<bool> done{false};
    std::atomic<int> sent{0};
    std::atomic<int> received{0};
    const CountedSleep sleep;
    const auto closeAgainAndAgain = [&]
    {
        for (int round = 0; round < kRounds; ++round)
        {
            const int before = received;
            while (received == before)
                std::this_thread::yield();
            TovCloseEvent(shared.exchange(TovCreateEvent(0, 0)));
        }
        done = true;
        TovCloseEvent(shared);
    };
    OnThreads(5,
              [&](std::size_t index)
              {
                  if (index == 0)
                      return closeAgainAndAgain();
                  while (!done && index % 2 == 0)
                      sent += TovSetEvent(shared) == 0 ? 1 : 0;
                  while (!done && index % 2 != 0)
                      received += TovWaitEvent(shared, kTovForever) == 0 ? 1 : 0;
              });
    EXPECT_LE(received, sent);
}

TEST(Sleep, GoesWhereTheProgramSendsIt)
{
    const CountedSleep sleep;
    TovSleep(0xFFFFFFFFu);
    TovUSleep(7);
    EXPECT_EQ(g_sleptMicroseconds, 0xFFFFFFFFull * 1'000 + 7);
}

TEST(HandleTable, NoHandleComesTwice)
{
    using Table = Halyon::Linux::HandleTable<Halyon::Linux::HandleSlot, 2, 4>;
    const auto spTable = std::make_unique<Table>();
    Table& table = *spTable;
    std::set<Table::Handle> handles;
    while (Halyon::Linux::HandleSlot* slot = table.Acquire())
    {
        const Table::Handle handle = table.Open(*slot, 0, 0);
        EXPECT_TRUE(handles.insert(handle).second);
        ASSERT_EQ(table.Pin(handle), slot);
        ASSERT_EQ(table.Close(handle), Table::Closing::InUse);
        EXPECT_EQ(table.Pin(handle), nullptr);
        EXPECT_EQ(table.Close(handle), Table::Closing::NotOpen);
        ASSERT_TRUE(table.Unpin(*slot));
        table.Free(*slot);
    }
    // Two slots with the odd generations that four bits hold, less the last.
    EXPECT_EQ(handles.size(), 14u);
}
} // namespace
