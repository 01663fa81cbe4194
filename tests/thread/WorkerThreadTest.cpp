#include <gtest/gtest.h>

#include <thread>

#include <sys/resource.h>

#include <halyon/framework/HynThreadID.h>
#include <halyon/thread/CHynThreadManager.h>
#include <halyon/thread/CHynWorkerThread.h>

#include "Doubles.h"
#include "tests/support/Threads.h"

using namespace Halyon;
using namespace HalyonTest;

namespace
{
constexpr std::uint32_t kEvent = 7;
int g_receiver;

using ManagerPtr = CHynAutoPtr<CHynThreadManager>;

// Records where its ends are run.
class Recorder : public CHynThread
{
public:
    explicit Recorder(ManagerPtr manager)
        : CHynThread(10, "a name of more than 15 bytes"), spManager(std::move(manager))
    {
    }
    ~Recorder() override { CHynThread::Stop(); }
    void InitThread() override
    {
        initThread = HynGetCurrentThreadID();
        idAtInit = GetThreadID();
        CHynAutoPtr<IHynThread> spSelf;
        foundAtInit = spManager->GetCurrentThread(spSelf.Receive());
    }
    void ExitThread() override { exitThread = HynGetCurrentThreadID(); }

    ManagerPtr spManager;
    std::uint32_t initThread = 0;
    std::uint32_t idAtInit = 0;
    std::uint32_t exitThread = 0;
    HynResult foundAtInit = HYN_E_FAIL;
};

using Worker = ThreadTest;

// Posts an event that is told by its number, with a parameter of its own.
HynResult Post(CHynWorkerThread* worker, std::uint32_t number = 0)
{
    return worker->PostEvent(kEvent, number, 0, ParamPtr(new Param(number)), nullptr);
}
} // namespace

TEST_F(Worker, AnswersEachFailureWithItsCode)
{
    const WorkerPtr worker = new CHynWorkerThread;
    const HandlerPtr handler = MakeHandler(kEvent);
    EXPECT_EQ(worker->Start(nullptr, nullptr), HYN_E_POINTER);
    EXPECT_EQ(worker->PostEvent(kEvent, 0, 0, nullptr, nullptr), HYN_E_THREADNOTRUNNING);
    EXPECT_EQ(worker->PostEventEx(kEvent, 0, 0, nullptr, nullptr, 1), HYN_E_THREADNOTRUNNING);
    EXPECT_EQ(worker->SendEvent(kEvent, 0, 0, nullptr, nullptr), HYN_E_THREADNOTRUNNING);
    EXPECT_EQ(worker->SetPriority(50), HYN_E_FAIL);
    EXPECT_EQ(worker->Stop(), HYN_S_OK);
    EXPECT_EQ(worker->GetThreadID(), 0u);
    EXPECT_NE(worker->CheckExitFlag(), 0);

    int started = 0;
    ASSERT_EQ(worker->Start(nullptr, &started), HYN_S_OK);
    EXPECT_NE(worker->GetThreadID(), 0u);
    EXPECT_EQ(worker->CheckExitFlag(), 0);
    const auto niceness = [&]
    {
        return getpriority(PRIO_PROCESS, worker->GetThreadID());
    };
    const int patient = niceness();
    EXPECT_EQ(worker->SetPriority(101), HYN_S_OK);
    const int usual = niceness(); // as before, where raising the priority is not allowed
    const std::pair<int, int> steps[] = {{10, usual},  {9, patient}, {10, patient}, {100, patient},
                                         {101, usual}, {100, usual}, {-5, patient}};
    for (const auto& [priority, expected] : steps)
    {
        EXPECT_EQ(worker->SetPriority(priority), HYN_S_OK);
        EXPECT_EQ(niceness(), expected) << priority;
    }
    EXPECT_EQ(worker->SendEvent(kEvent, 0, 0, nullptr, nullptr), HYN_E_NOINTERFACE) << "from another thread";
    EXPECT_EQ(worker->RemoveEvents(nullptr, 1), HYN_E_FAIL);
    EXPECT_EQ(worker->Stop(), HYN_S_OK);
    EXPECT_EQ(worker->Stop(), HYN_S_OK);
    EXPECT_EQ(worker->GetThreadID(), 0u);
    EXPECT_EQ(worker->PostEvent(kEvent, 0, 0, nullptr, nullptr), HYN_E_THREADNOTRUNNING);

    void* other = &g_receiver;
    EXPECT_EQ(worker->QueryInterface(IID_IHynSQCommand, &other), HYN_E_NOINTERFACE);
    EXPECT_EQ(worker->QueryInterface(IID_IHynThread, nullptr), HYN_E_POINTER);
    EXPECT_EQ(other, &g_receiver);
}

TEST_F(Worker, RunsItsEndsOnItsOwnThreadKnownAndRegistered)
{
    const ManagerPtr manager = new CHynThreadManager;
    CHynAutoPtr<Recorder> worker = new Recorder(manager);
    for (int round = 0; round < 2; ++round)
    {
        int started = 0;
        ASSERT_EQ(worker->Start(manager, &started), HYN_S_OK);
        const std::uint32_t id = worker->GetThreadID();
        CHynAutoPtr<IHynThread> found;
        EXPECT_EQ(manager->GetThread(found.Receive(), id), HYN_S_OK);
        EXPECT_EQ(found, static_cast<IHynThread*>(worker));
        worker->Stop();
        EXPECT_EQ(worker->initThread, id);
        EXPECT_EQ(worker->idAtInit, id);
        EXPECT_EQ(worker->exitThread, id);
        EXPECT_EQ(worker->foundAtInit, HYN_S_OK);
        EXPECT_EQ(manager->GetThread(found.Receive(), id), HYN_E_FAIL);
    }
    EXPECT_EQ(References(worker.operator->()), 1u);
    EXPECT_EQ(References(manager.operator->()), 2u) << "the recorder's own";
}

TEST_F(Worker, HandlesEventsInOrderOnItsThreadAndSendsAtOnceOnlyThere)
{
    const WorkerPtr worker = StartedWorker();
    std::uint32_t handledOn = 0;
    HynResult sendResult = HYN_E_FAIL;
    HynResult stopResult = HYN_S_OK;
    const HandlerPtr sent = MakeHandler(kEvent + 1);
    sent->answer = 42;
    const HandlerPtr handler = MakeHandler(kEvent,
                                           [&](auto...)
                                           {
                                               handledOn = HynGetCurrentThreadID();
                                               sendResult = worker->SendEvent(kEvent + 1, 5, 6, nullptr, nullptr);
                                               stopResult = worker->Stop();
                                           });
    worker->RegisterHandler(handler, &g_receiver);
    worker->RegisterHandler(sent, nullptr);
    const ParamPtr param = new Param;
    EXPECT_EQ(worker->PostEvent(kEvent, 0xFFFFFFFFu, -3, param, &g_receiver), HYN_S_OK);
    handler->called.WaitFor(1);
    EXPECT_EQ(handledOn, worker->GetThreadID());
    EXPECT_EQ(handler->calls.front(), (Call{0xFFFFFFFFu, -3, param}));
    EXPECT_EQ(sendResult, 42);
    EXPECT_EQ(sent->calls.size(), 1u);
    EXPECT_EQ(stopResult, HYN_E_NOINTERFACE) << "a thread cannot wait for itself";
    EXPECT_EQ(worker->CheckExitFlag(), 0);
    worker->Stop();
    EXPECT_EQ(References(param.operator->()), 1u);
}

TEST_F(Worker, DrainsABurstPerWakeUpAndTheFrontFlagOvertakes)
{
    const WorkerPtr worker = StartedWorker();
    Blocker blocker(kEvent);
    worker->RegisterHandler(blocker.handler, nullptr);
    worker->PostEvent(kEvent, 0, 0, nullptr, nullptr);
    // Event 0 may be handled before the others come or wait with them; 100 overtakes 1 and 2 in any case.
    while (worker->IsBusy() == 0)
        std::this_thread::yield();
    worker->PostEventEx(kEvent, 1, 0, nullptr, nullptr, 0);
    worker->PostEventEx(kEvent, 2, 0, nullptr, nullptr, 0);
    worker->PostEventEx(kEvent, 100, 0, nullptr, nullptr, 1);
    blocker.gate.Open();
    blocker.handler->called.WaitFor(4);
    worker->Stop();
    EXPECT_EQ(Numbers(*blocker.handler), (std::vector<std::uint32_t>{0, 100, 1, 2}));
    EXPECT_EQ(worker->IsBusy(), 0);
}

TEST_F(Worker, AFullQueueLosesEventsWithoutAWord)
{
    const WorkerPtr worker = StartedWorker(3);
    Blocker blocker(kEvent);
    worker->RegisterHandler(blocker.handler, nullptr);
    worker->PostEvent(kEvent, 0, 0, nullptr, nullptr);
    blocker.inside.Pass();
    for (std::uint32_t number = 1; number <= 10; ++number)
        EXPECT_EQ(Post(worker, number), HYN_S_OK);
    EXPECT_EQ(Param::Alive(), 3);
    blocker.gate.Open();
    blocker.handler->called.WaitFor(4);
    worker->Stop();
    EXPECT_EQ(blocker.handler->calls.size(), 4u);
}

TEST_F(Worker, StopFinishesTheRunningEventAndDropsThePendingOnes)
{
    const WorkerPtr worker = StartedWorker();
    Blocker blocker(kEvent);
    worker->RegisterHandler(blocker.handler, nullptr);
    for (int i = 0; i < 5; ++i)
        Post(worker);
    blocker.inside.Pass();
    std::thread stopper([&] { worker->Stop(); });
    while (worker->CheckExitFlag() == 0)
        std::this_thread::yield();
    EXPECT_EQ(Post(worker), HYN_E_THREADNOTRUNNING);
    blocker.gate.Open();
    stopper.join();
    EXPECT_EQ(blocker.handler->calls.size(), 1u);
    EXPECT_EQ(Param::Alive(), 0);
}

TEST_F(Worker, ASecondStartLeavesItDeafAndStopStillWaits)
{
    WorkerPtr worker = StartedWorker();
    Blocker blocker(kEvent);
    worker->RegisterHandler(blocker.handler, nullptr);
    Post(worker);
    blocker.inside.Pass();
    int started = 1;
    EXPECT_EQ(worker->Start(nullptr, &started), HYN_E_THREADRUNNING);
    EXPECT_EQ(started, 0);
    EXPECT_EQ(worker->SetPriority(50), HYN_E_FAIL) << "the thread's reference is gone";
    EXPECT_EQ(Post(worker), HYN_S_OK);
    std::thread opener([&] { blocker.gate.Open(); });
    worker->Stop();
    EXPECT_GE(blocker.handler->called.Get(), 1);
    opener.join();

    ASSERT_EQ(worker->Start(nullptr, &started), HYN_S_OK) << "a stopped worker can be started anew";
    worker = nullptr; // and a running one may be let go
}

TEST_F(Worker, CountsEveryEventOfEightProducersInTheOrderOfEach)
{
    constexpr std::uint32_t kProducers = 8;
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    constexpr std::uint32_t kEach = 25'000; // an instrumented event takes ten times as long
#else
    constexpr std::uint32_t kEach = 250'000;
#endif
    // Never full: a producer waits while too many of its events are on the way.
    constexpr std::uint32_t kAhead = 8000;
    struct CountingHandler : Handler
    {
        CountingHandler() : Handler(kEvent) {}
        HynResult HandleEvent(std::uint32_t number, std::int32_t producer, IHynEventParam* param) override
        {
            const auto index = static_cast<std::size_t>(producer);
            if (number != handled[index].load() || static_cast<Param*>(param)->Number() != number)
                outOfOrder = true;
            handled[index].store(number + 1);
            handled[index].notify_one();
            return HYN_S_OK;
        }
        std::array<std::atomic<std::uint32_t>, kProducers> handled{};
        std::atomic<bool> outOfOrder{false};
    };
    const CHynAutoPtr<CountingHandler> handler = new CountingHandler;
    const WorkerPtr worker = StartedWorker();
    worker->RegisterHandler(handler, nullptr);
    const auto produce = [&](std::size_t producer)
    {
        std::atomic<std::uint32_t>& handled = handler->handled[producer];
        for (std::uint32_t number = 0; number < kEach; ++number)
        {
            for (std::uint32_t seen = handled; number - seen >= kAhead; seen = handled)
                handled.wait(seen);
            worker->PostEvent(kEvent, number, static_cast<std::int32_t>(producer), ParamPtr(new Param(number)),
                              nullptr);
        }
        for (std::uint32_t seen = handled; seen != kEach; seen = handled)
            handled.wait(seen);
    };
    OnThreads(kProducers, produce);
    worker->Stop();
    EXPECT_FALSE(handler->outOfOrder);
}

TEST_F(Worker, SurvivesAThousandStopsThatRaceWithPosts)
{
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    constexpr int kCycles = 200;
#else
    constexpr int kCycles = 1000;
#endif
    const ManagerPtr manager = new CHynThreadManager;
    const WorkerPtr worker = new CHynWorkerThread;
    const HandlerPtr handler = MakeHandler(kEvent);
    worker->RegisterHandler(handler, nullptr);
    std::atomic<bool> done{false};
    std::thread poster(
        [&]
        {
            while (!done)
            {
                const HynResult result = Post(worker);
                EXPECT_TRUE(result == HYN_S_OK || result == HYN_E_THREADNOTRUNNING);
            }
        });
    for (int cycle = 0; cycle < kCycles; ++cycle)
    {
        int started = 0;
        ASSERT_EQ(worker->Start(manager, &started), HYN_S_OK);
        ASSERT_EQ(worker->Stop(), HYN_S_OK);
    }
    done = true;
    poster.join();
    worker->UnRegisterHandler(handler, nullptr);
    handler->calls.clear();
    EXPECT_EQ(Param::Alive(), 0) << "what was posted while it stopped is dropped";
}
