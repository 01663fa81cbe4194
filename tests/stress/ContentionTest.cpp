// Many programs on one database file: nothing is counted twice or lost, nobody starves, waiting costs nothing.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <halyon/client/HynSQ.h>

#include "tests/stress/Scale.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Threads.h"

using namespace Halyon;
using namespace HalyonTest;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace
{
constexpr int kProcesses = 8;
constexpr int kWriters = 2; // of each process; the other threads read
constexpr int kReaders = 2;
// Between two transactions of a thread. Without one, readers hold the file nearly always, and a writer waits for
// chance.
constexpr auto kPause = 2ms;
constexpr double kDocumentedWait = 100; // seconds, of one call

// What one process has seen, given to its parent through a pipe.
struct Seen
{
    long long committed = 0;
    long long views = 0;
    long long failures = 0;
    long long torn = 0; // views in which the two tables disagree
    double longestWait = 0;

    void Add(const Seen& other)
    {
        committed += other.committed;
        views += other.views;
        failures += other.failures;
        torn += other.torn;
        longestWait = std::max(longestWait, other.longestWait);
    }
};

double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

class Contention : public testing::Test
{
protected:
    Contention()
    {
        const Client::Connection database = Open();
        database.execute("CREATE TABLE counter (n INTEGER)");
        database.execute("INSERT INTO counter VALUES (0)");
        database.execute("CREATE TABLE entry (process INTEGER, number INTEGER)");
    }

    Client::Connection Open() const { return {Client::Module(HYNSQ_MODULE), (m_folder.Path() / "shared.db").native()}; }

    // Two changes that must never be seen apart.
    static HynResult Write(const Client::Connection& database, int process)
    {
        Client::Transaction transaction;
        HynResult result = transaction.try_begin(database);
        if (HynSucceeded(result))
            result = database.try_execute("UPDATE counter SET n = n + 1");
        if (HynSucceeded(result))
            result = database.try_execute("INSERT INTO entry SELECT ?, n FROM counter", process);
        return HynSucceeded(result) ? transaction.try_commit() : result;
    }

    static HynResult Look(const Client::Connection& database, Seen& seen)
    {
        Client::Rows rows;
        const HynResult result =
            database.try_query(rows, "SELECT (SELECT n FROM counter), (SELECT count(*) FROM entry)");
        long long counter = 0;
        long long entries = -1;
        if (HynSucceeded(result) && HynSucceeded(rows.begin()->try_as(counter, entries)) && counter != entries)
            ++seen.torn;
        return result;
    }

    // One thread's share: until the time is over at full scale, else a few rounds.
    static Seen Work(const Client::Connection& database, int process, bool writes)
    {
        Seen seen;
        const auto begin = Clock::now();
        auto goesOn = [&, rounds = 0]() mutable
        {
            return IsFullScale() ? Clock::now() - begin < 60s : rounds++ < 4;
        };
        while (goesOn())
        {
            const auto start = Clock::now();
            const HynResult result = writes ? Write(database, process) : Look(database, seen);
            seen.longestWait = std::max(seen.longestWait, SecondsSince(start));
            if (HynFailed(result))
                ++seen.failures;
            else
                ++(writes ? seen.committed : seen.views);
            std::this_thread::sleep_for(kPause);
        }
        return seen;
    }

    Seen RunProcess(int process) const
    {
        const Client::Connection database = Open();
        std::vector<Seen> seen(kWriters + kReaders);
        OnThreads(seen.size(), [&](std::size_t i) { seen[i] = Work(database, process, i < kWriters); });
        Seen all;
        for (const Seen& one : seen)
            all.Add(one);
        return all;
    }

    TempFolder m_folder;
};

TEST_F(Contention, EveryCommitOfManyProcessesIsCountedOnceAndNobodyStarves)
{
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    for (int process = 0; process < kProcesses; ++process)
    {
        if (fork() != 0)
            continue;
        const Seen seen = RunProcess(process);
        _exit(write(ends[1], &seen, sizeof seen) == sizeof seen ? 0 : 1);
    }
    close(ends[1]);
    Seen all;
    Seen one;
    int reports = 0;
    for (; read(ends[0], &one, sizeof one) == sizeof one; ++reports)
        all.Add(one);
    close(ends[0]);
    while (wait(nullptr) > 0)
    {
    }

    const Client::Connection database = Open();
    auto rows = database.query("SELECT n, (SELECT count(*) FROM entry), (SELECT count(DISTINCT number) FROM entry)"
                               " FROM counter");
    const auto [counter, entries, numbers] = rows.begin()->as<long long, long long, long long>();
    std::printf("%lld commits, %lld views, longest wait %.1f s\n", all.committed, all.views, all.longestWait);
    EXPECT_EQ(reports, kProcesses);
    EXPECT_EQ(all.failures, 0);
    EXPECT_EQ(all.torn, 0);
    EXPECT_EQ(counter, all.committed);
    EXPECT_EQ(entries, all.committed);
    EXPECT_EQ(numbers, all.committed);
    EXPECT_GT(all.committed, 0);
    EXPECT_LT(all.longestWait, kDocumentedWait);
}

TEST_F(Contention, WaitingForALockTakesHardlyAnyProcessorTime)
{
    // The other process is made first: one that is forked off an open database takes its lock for its own.
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    const pid_t waiting = fork();
    if (waiting == 0)
    {
        char byte = 0;
        _exit(read(ends[0], &byte, 1) == 1 && HynSucceeded(Write(Open(), 1)) ? 0 : 1);
    }
    const Client::Connection database = Open();
    Client::Transaction transaction(database);
    const auto heldFor = Scaled(500ms, 5000ms);
    ASSERT_EQ(write(ends[1], "!", 1), 1);
    std::this_thread::sleep_for(heldFor);
    transaction.try_rollback();
    int status = -1;
    rusage used{};
    ASSERT_EQ(wait4(waiting, &status, 0, &used), waiting);
    close(ends[0]);
    close(ends[1]);
    EXPECT_EQ(status, 0);
    const auto time = std::chrono::seconds(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
                      std::chrono::microseconds(used.ru_utime.tv_usec + used.ru_stime.tv_usec);
    std::printf("%.1f ms of processor time for a wait of %.1f s\n",
                std::chrono::duration<double, std::milli>(time).count(),
                std::chrono::duration<double>(heldFor).count());
    EXPECT_LT(time, heldFor / 10) << "the start of the process included";
}

// The writer has changed pages and is killed before it commits: whoever comes next rolls its changes back.
TEST_F(Contention, AWriterThatDiesWithTheLockLeavesNothingBehind)
{
    for (int round = 0; round < Scaled(2, 50); ++round)
    {
        int ends[2] = {};
        ASSERT_EQ(pipe(ends), 0);
        const pid_t writer = fork();
        if (writer == 0)
        {
            const Client::Connection database = Open();
            database.execute("PRAGMA cache_size = 1"); // so that the changes reach the file
            const Client::Transaction transaction(database);
            database.execute("UPDATE counter SET n = n + 1000");
            database.execute("WITH RECURSIVE i(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM i LIMIT 20000)"
                             " INSERT INTO entry SELECT -1, n FROM i");
            static_cast<void>(write(ends[1], "!", 1));
            pause();
        }
        char byte = 0;
        ASSERT_EQ(read(ends[0], &byte, 1), 1);
        const Client::Connection database = Open();
        std::thread next([&] { EXPECT_EQ(Write(database, round), HYN_S_OK); });
        kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
        next.join();
        close(ends[0]);
        close(ends[1]);
        auto rows = database.query("SELECT n, (SELECT count(*) FROM entry) FROM counter");
        EXPECT_EQ((rows.begin()->as<int, int>()), std::tuple(round + 1, round + 1));
    }
    const Client::Connection database = Open();
    EXPECT_EQ(database.query("PRAGMA integrity_check").begin()->get<std::string>(0), "ok");
}
} // namespace
