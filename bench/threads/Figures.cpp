#include "Figures.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <thread>

#include <malloc.h>

#include <halyon/platform/EventLoop.h>
#include <halyon/thread/CHynEventHandler.h>
#include <halyon/thread/CHynMainThread.h>
#include <halyon/thread/CHynWorkerThread.h>

using namespace Halyon;

namespace Bench
{
namespace
{
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kEventID = 1;

double ProcessorNanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

class Counter : public CHynEventHandler
{
public:
    Counter() : CHynEventHandler(kEventID) {}
    HynResult HandleEvent(std::uint32_t uParam, std::int32_t, IHynEventParam*) override
    {
        m_uSum += uParam;
        return HYN_S_OK;
    }

private:
    std::uint64_t m_uSum = 0;
};

// Processor time of `call`, by call; the least of several tries, as anything else on the machine only adds.
template <class Call>
double LeastNanoseconds(int calls, Call call)
{
    double least = 1e18;
    for (int attempt = 0; attempt < 15; ++attempt)
    {
        const double begin = ProcessorNanoseconds();
        for (int i = 0; i < calls; ++i)
            call();
        least = std::min(least, (ProcessorNanoseconds() - begin) / calls);
    }
    return least;
}

Figure DispatchToObservers()
{
    constexpr std::size_t kObservers = 16;
    constexpr int kEvents = 100'000;
    CHynThreadEventQueue queue(1);
    queue.Adopt();
    std::vector<CHynAutoPtr<IHynEventHandler>> handlers;
    for (std::size_t i = 0; i < kObservers; ++i)
    {
        handlers.emplace_back(new Counter);
        queue.RegisterObserver(kEventID, handlers.back(), nullptr);
    }
    const double dispatched = LeastNanoseconds(kEvents, [&] { queue.Invoke(kEventID, 1, 0, nullptr, nullptr); });
    const double bare = LeastNanoseconds(kEvents,
                                         [&]
                                         {
                                             for (const CHynAutoPtr<IHynEventHandler>& handler : handlers)
                                                 handler->HandleEvent(1, 0, nullptr);
                                         });
    return {"an observer above a virtual call, 16 observers", "ns", (dispatched - bare) / kObservers, 4};
}

double HeapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

std::vector<Figure> PendingEvents()
{
    constexpr int kEvents = 1'000'000;
    CHynThreadEventQueue queue(kEvents);
    queue.Adopt();
    const double before = HeapBytes();
    for (int i = 0; i < kEvents; ++i)
        queue.InsertEvent(HynEventInfo{kEventID, nullptr, 0, 0, nullptr}, 0);
    const double full = HeapBytes();
    while (queue.ProcessNext() == 1)
    {
    }
    return {{"memory of a pending event, a million pending", "bytes", (full - before) / kEvents, 56},
            {"kept after these have drained", "KiB", (HeapBytes() - before) / 1024, 64}};
}

Figure IdleWorkers()
{
    constexpr std::size_t kWorkers = 8;
    std::vector<CHynAutoPtr<CHynWorkerThread>> workers;
    for (std::size_t i = 0; i < kWorkers; ++i)
    {
        workers.emplace_back(new CHynWorkerThread);
        int started = 0;
        workers.back()->Start(nullptr, &started);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const double before = ProcessorNanoseconds();
    std::this_thread::sleep_for(std::chrono::seconds(3));
    const double used = ProcessorNanoseconds() - before;
    for (const CHynAutoPtr<CHynWorkerThread>& worker : workers)
        worker->Stop();
    return {"processor time of 8 idle workers", "us a second", used / 3 / 1000, 100};
}

// Ends the loop after so many ticks of 10 ms, and remembers when they came.
struct Ticks
{
    static void Tick(EventLoopTimerRef, void* pTicks)
    {
        auto* ticks = static_cast<Ticks*>(pTicks);
        ticks->last = Clock::now();
        if (ticks->count == 0)
            ticks->first = ticks->last;
        if (++ticks->count > ticks->most)
            QuitApplicationEventLoop();
    }

    // The processor time of the loop, in nanoseconds a tick.
    double Run()
    {
        EventLoopTimerRef timer = nullptr;
        InstallEventLoopTimer(GetMainEventLoop(), 0.0, 0.01, Tick, this, &timer);
        const double before = ProcessorNanoseconds();
        RunApplicationEventLoop();
        RemoveEventLoopTimer(timer);
        return (ProcessorNanoseconds() - before) / most;
    }

    int most;
    int count = 0;
    Clock::time_point first{};
    Clock::time_point last{};
};

Figure TickPrecision()
{
    Ticks ticks{1000};
    ticks.Run();
    const std::chrono::duration<double, std::milli> length = ticks.last - ticks.first;
    return {"a tick of 10 ms is off by, on average over 10 s", "ms", std::abs(length.count() / ticks.most - 10), 1};
}

// What the main thread adds to a loop that wakes every 10 ms anyhow: the wake-up itself is the system's.
Figure IdleTick()
{
    constexpr int kTicks = 200;
    std::vector<double> added;
    for (int round = 0; round < 5; ++round)
    {
        const double bare = Ticks{kTicks}.Run();
        const CHynAutoPtr<CHynMainThread> mainThread = new CHynMainThread(GetCurrentTovThreadID());
        mainThread->Start(nullptr, nullptr);
        added.push_back(Ticks{kTicks}.Run() - bare);
    }
    std::sort(added.begin(), added.end());
    return {"a tick of the main thread with nothing to do", "us", added[added.size() / 2] / 1000, 5};
}
} // namespace

std::vector<Figure> ThreadFigures()
{
    std::vector<Figure> figures{DispatchToObservers()};
    for (const Figure& figure : PendingEvents())
        figures.push_back(figure);
    figures.push_back(IdleWorkers());
    figures.push_back(TickPrecision());
    figures.push_back(IdleTick());
    return figures;
}

std::string Table(const std::vector<Figure>& figures)
{
    std::string table = "| figure | unit | at most | measured |\n|---|---|---:|---:|\n";
    for (const Figure& figure : figures)
    {
        char line[160];
        std::snprintf(line, sizeof line, "| %s | %s | %g | %.2f |\n", figure.name.c_str(), figure.unit.c_str(),
                      figure.most, figure.value);
        table += line;
    }
    return table;
}
} // namespace Bench
