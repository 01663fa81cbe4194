// The same thing very often: neither memory nor descriptors nor threads grow.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <semaphore>
#include <string>

#include <malloc.h>

#include <halyon/client/HynSQ.h>
#include <halyon/thread/CHynEventHandler.h>
#include <halyon/thread/CHynThreadManager.h>
#include <halyon/thread/CHynWorkerThread.h>

#include "tests/stress/Scale.h"
#include "tests/support/TempFolder.h"

using namespace Halyon;
using namespace HalyonTest;

namespace
{
std::ptrdiff_t EntriesOf(const char* folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

// What the process holds. Where an allocator of another kind counts for itself, the heap reads as empty.
struct Holdings
{
    double heap = static_cast<double>(mallinfo2().uordblks) + static_cast<double>(mallinfo2().hblkhd);
    std::ptrdiff_t descriptors = EntriesOf("/proc/self/fd");
    std::ptrdiff_t threads = EntriesOf("/proc/self/task");
};

// `round` is run a tenth of the times first, so that caches fill; then the rest, which must add nothing.
template <class Round>
void ExpectFlat(int rounds, Round round)
{
    for (int i = 0; i < rounds / 10; ++i)
        round();
    const Holdings before;
    for (int i = rounds / 10; i < rounds; ++i)
        round();
    // A thread that was joined is listed a moment longer.
    Holdings after;
    for (int look = 0; look < 10'000 && after.threads > before.threads; ++look)
        after = Holdings();
    std::printf("%d rounds: heap %+.0f bytes, %td descriptors, %td threads\n", rounds, after.heap - before.heap,
                after.descriptors, after.threads);
    EXPECT_LT(after.heap - before.heap, 256 * 1024);
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_LE(after.threads, before.threads);
}

class Summing : public CHynEventHandler
{
public:
    Summing() : CHynEventHandler(1) {}
    HynResult HandleEvent(std::uint32_t uParam, std::int32_t, IHynEventParam*) override
    {
        sum += uParam;
        if (uParam == 0)
            ended.release();
        return HYN_S_EVENT_HANDLED;
    }

    std::uint64_t sum = 0;
    std::binary_semaphore ended{0};
};

TEST(Flood, EventsLeaveNothingBehind)
{
    const CHynAutoPtr<CHynWorkerThread> worker = new CHynWorkerThread(INT32_MAX);
    const CHynAutoPtr<Summing> handler = new Summing;
    worker->RegisterHandler(handler, nullptr);
    int started = 0;
    ASSERT_EQ(worker->Start(nullptr, &started), HYN_S_OK);
    constexpr std::uint32_t kBatch = 50'000;
    const int batches = Scaled(20, 2000); // 10^8 events at full scale
    ExpectFlat(batches,
               [&]
               {
                   for (std::uint32_t number = 1; number <= kBatch; ++number)
                       worker->PostEvent(1, number, 0, nullptr, nullptr);
                   worker->PostEvent(1, 0, 0, nullptr, nullptr);
                   handler->ended.acquire();
               });
    worker->Stop();
    EXPECT_EQ(handler->sum, std::uint64_t{kBatch} * (kBatch + 1) / 2 * static_cast<std::uint64_t>(batches));
}

TEST(Flood, ConnectionsLeaveNothingBehind)
{
    const TempFolder folder;
    const Client::Module module(HYNSQ_MODULE);
    const std::string path = (folder.Path() / "often.db").native();
    Client::Connection(module, path).execute("CREATE TABLE often (n INTEGER)");
    ExpectFlat(Scaled(500, 100'000),
               [&]
               {
                   const Client::Connection database(module, path);
                   ASSERT_EQ(database.query("SELECT count(*) FROM often").begin()->get<int>(0), 0);
               });
}

TEST(Flood, WorkersLeaveNothingBehind)
{
    const CHynAutoPtr<CHynThreadManager> manager = new CHynThreadManager;
    ExpectFlat(Scaled(200, 10'000),
               [&]
               {
                   const CHynAutoPtr<CHynWorkerThread> worker = new CHynWorkerThread;
                   const CHynAutoPtr<Summing> handler = new Summing;
                   worker->RegisterHandler(handler, nullptr);
                   int started = 0;
                   ASSERT_EQ(worker->Start(manager, &started), HYN_S_OK);
                   worker->PostEvent(1, 0, 0, nullptr, nullptr);
                   handler->ended.acquire();
                   ASSERT_EQ(worker->Stop(), HYN_S_OK);
               });
}
} // namespace
