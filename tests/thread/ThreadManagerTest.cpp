#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include <halyon/framework/HynThreadID.h>
#include <halyon/platform/EventLoop.h>
#include <halyon/thread/CHynMainThread.h>
#include <halyon/thread/CHynThreadManager.h>
#include <halyon/thread/CHynWorkerThread.h>

#include "Doubles.h"

using namespace Halyon;
using namespace HalyonTest;

namespace
{
constexpr std::uint32_t kEvent = 7;

class ThreadManager : public ThreadTest
{
protected:
    WorkerPtr ManagedWorker() { return StartedWorker(65535, manager); }
    HynResult Post(std::uint32_t eventID, std::uint32_t threadID, std::uint32_t number = 0)
    {
        return manager->PostEvent(eventID, number, 0, nullptr, threadID, nullptr);
    }
    void TearDown() override
    {
        EXPECT_EQ(References(manager.operator->()), 1u);
        manager->UnRegisterAll();
        manager = nullptr;
        ThreadTest::TearDown();
    }

    CHynAutoPtr<CHynThreadManager> manager = new CHynThreadManager;
};

// Answers no interface beyond the first: an older component's thread.
class OldThread : public CHynWorkerThread
{
public:
    HynResult DefaultQueryInterface(const HYN_GUID&, void**) override { return HYN_E_NOINTERFACE; }
    std::uint32_t GetThreadID() override { return 12345; }
};
} // namespace

TEST_F(ThreadManager, AnswersEachFailureWithItsCode)
{
    IHynThread* thread = nullptr;
    std::uint32_t id = kEvent;
    const HandlerPtr handler = MakeHandler(kEvent);
    EXPECT_EQ(manager->RegisterThread(nullptr), HYN_E_FAIL);
    EXPECT_EQ(manager->UnRegisterThread(nullptr), HYN_E_FAIL);
    EXPECT_EQ(manager->GetThread(nullptr, 1), HYN_E_FAIL);
    EXPECT_EQ(manager->GetThread(&thread, 1), HYN_E_FAIL);
    EXPECT_EQ(manager->GetCurrentThread(&thread), HYN_E_FAIL);
    EXPECT_EQ(manager->GetMainThread(&thread), HYN_E_FAIL);
    EXPECT_EQ(thread, nullptr);
    for (const std::uint32_t target : {kHynMainThreadID, kHynCurrentThreadID, 1u})
    {
        EXPECT_EQ(Post(kEvent, target), HYN_E_FAIL);
        EXPECT_EQ(manager->SendEvent(kEvent, 0, 0, nullptr, target, nullptr), HYN_E_FAIL);
        EXPECT_EQ(manager->RemoveEvents(&id, 1, target), HYN_E_FAIL);
    }
    EXPECT_EQ(manager->RegisterHandler(handler, nullptr), HYN_E_FAIL);
    EXPECT_EQ(manager->UnRegisterHandler(handler, nullptr), HYN_E_FAIL);

    const CHynAutoPtr<OldThread> old = new OldThread;
    manager->RegisterThread(old);
    EXPECT_EQ(manager->RemoveEvents(&id, 1, 12345), HYN_E_FAIL) << "no IHynThread3";
    manager->ClearAllEvents();
    EXPECT_EQ(manager->UnRegisterThread(old), HYN_S_OK);
    EXPECT_EQ(References(old.operator->()), 1u);
}

TEST_F(ThreadManager, TheFirstThreadUnderAnIdentifierStays)
{
    const CHynAutoPtr<OldThread> first = new OldThread;
    const CHynAutoPtr<OldThread> second = new OldThread;
    EXPECT_EQ(manager->RegisterThread(first), HYN_S_OK);
    EXPECT_EQ(manager->RegisterThread(second), HYN_S_OK);
    CHynAutoPtr<IHynThread> found;
    EXPECT_EQ(manager->GetThread(found.Receive(), 12345), HYN_S_OK);
    EXPECT_EQ(found, static_cast<IHynThread*>(first));
    EXPECT_EQ(manager->UnRegisterThread(second), HYN_S_OK) << "removes whatever stands there";
    EXPECT_EQ(manager->GetThread(found.Receive(), 12345), HYN_E_FAIL);
    EXPECT_EQ(References(first.operator->()), 1u);
}

TEST_F(ThreadManager, ReservedIdentifiersMeanTheCallersThreadOnAWorker)
{
    manager->InitMainThread(nullptr);
    const WorkerPtr worker = ManagedWorker();
    HynResult sentHere = HYN_E_FAIL;
    HynResult sentToMain = HYN_S_OK;
    HynResult postedHere = HYN_E_FAIL;
    const HandlerPtr nested = MakeHandler(kEvent + 1);
    nested->answer = 77;
    const HandlerPtr handler =
        MakeHandler(kEvent,
                    [&](auto...)
                    {
                        manager->RegisterHandler(nested, nullptr);
                        sentHere = manager->SendEvent(kEvent + 1, 0, 0, nullptr, kHynCurrentThreadID, nullptr);
                        sentToMain = manager->SendEvent(kEvent + 1, 0, 0, nullptr, kHynMainThreadID, nullptr);
                        postedHere = Post(kEvent + 1, kHynCurrentThreadID, 2);
                    });
    worker->RegisterHandler(handler, nullptr);
    EXPECT_EQ(Post(kEvent, worker->GetThreadID()), HYN_S_OK);
    nested->called.WaitFor(2);
    EXPECT_EQ(sentHere, 77);
    EXPECT_EQ(sentToMain, HYN_E_NOINTERFACE);
    EXPECT_EQ(postedHere, HYN_S_OK);
    EXPECT_EQ(Post(0, worker->GetThreadID()), HYN_S_OK) << "0 is an ordinary event to a worker";
    worker->Stop();
    EXPECT_EQ(Post(kEvent, worker->GetThreadID()), HYN_E_FAIL);
}

TEST_F(ThreadManager, TheMainThreadHandlesOneEventATickInOrder)
{
    using Clock = std::chrono::steady_clock;
    EXPECT_EQ(manager->InitMainThread(nullptr), HYN_S_OK);
    CHynAutoPtr<IHynThread> main;
    ASSERT_EQ(manager->GetMainThread(main.Receive()), HYN_S_OK);
    EXPECT_EQ(main->GetThreadID(), HynGetCurrentThreadID());
    EXPECT_EQ(main->Stop(), HYN_E_NOINTERFACE);
    EXPECT_EQ(main->SetPriority(50), HYN_E_NOINTERFACE);
    EXPECT_EQ(main->Run(), HYN_S_OK);

    // A tick takes what has been posted, at once, and has nothing to do otherwise.
    auto* mainThread = static_cast<CHynMainThread*>(main.operator IHynThread*());
    const HandlerPtr first = MakeHandler(kEvent);
    manager->RegisterHandler(first, nullptr);
    TimerProc(nullptr, mainThread);
    Post(kEvent, kHynMainThreadID);
    TimerProc(nullptr, mainThread);
    EXPECT_EQ(first->calls.size(), 1u);
    manager->UnRegisterHandler(first, nullptr);

    // The loop's own timer of the same length counts the ticks between the events.
    static int s_ticks;
    s_ticks = 0;
    EventLoopTimerRef counter = nullptr;
    InstallEventLoopTimer(
        GetMainEventLoop(), 0.0, 0.01, [](EventLoopTimerRef, void*) { ++s_ticks; }, nullptr, &counter);
    std::vector<int> ticks;
    std::vector<Clock::time_point> times;
    const HandlerPtr handler = MakeHandler(kEvent,
                                           [&](std::uint32_t number, auto...)
                                           {
                                               ticks.push_back(s_ticks);
                                               times.push_back(Clock::now());
                                               if (number == 9)
                                                   Post(0, kHynMainThreadID);
                                           });
    manager->RegisterHandler(handler, nullptr);
    std::thread(
        [&]
        {
            for (std::uint32_t number = 0; number < 10; ++number)
                Post(kEvent, kHynMainThreadID, number);
            EXPECT_EQ(manager->SendEvent(kEvent, 0, 0, nullptr, kHynMainThreadID, nullptr), HYN_E_NOINTERFACE);
        })
        .join();
    RunApplicationEventLoop();
    RemoveEventLoopTimer(counter);

    ASSERT_EQ(Numbers(*handler), (std::vector<std::uint32_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_GE(ticks.back() - ticks.front(), 8) << "ten events take ten ticks";
    EXPECT_GE(times.back() - times.front(), std::chrono::milliseconds(80));
    EXPECT_EQ(manager->SendEvent(kEvent, 99, 0, nullptr, kHynCurrentThreadID, nullptr), HYN_S_OK);
    EXPECT_EQ(handler->calls.size(), 11u) << "a send on the main thread itself runs at once";
    manager->UnRegisterHandler(handler, nullptr);
}

TEST_F(ThreadManager, AQuitBeforeTheLoopRunsEndsItAtOnceAndOnlyOnce)
{
    manager->InitMainThread(nullptr);
    EXPECT_EQ(Post(0, kHynMainThreadID), HYN_S_OK);
    RunApplicationEventLoop();

    // The next run goes on until its own quit, which a worker posts.
    const WorkerPtr worker = ManagedWorker();
    const HandlerPtr onMain = MakeHandler(kEvent, [&](auto...) { Post(kEvent + 1, worker->GetThreadID()); });
    const HandlerPtr onWorker = MakeHandler(kEvent + 1, [&](auto...) { Post(0, kHynMainThreadID); });
    manager->RegisterHandler(onMain, nullptr);
    worker->RegisterHandler(onWorker, nullptr);
    Post(kEvent, kHynMainThreadID);
    RunApplicationEventLoop();
    EXPECT_EQ(onMain->calls.size(), 1u);
    worker->Stop();
}

TEST_F(ThreadManager, ForgettingAllThreadsKeepsTheMainIdentifierButNoThread)
{
    manager->InitMainThread(nullptr);
    WorkerPtr worker = ManagedWorker();
    const HandlerPtr handler = MakeHandler(kEvent);
    worker->RegisterHandler(handler, nullptr);
    CHynWorkerThread* raw = worker;
    worker = nullptr; // the manager's reference is the last one
    manager->UnRegisterAll();
    EXPECT_EQ(References(handler.operator->()), 1u) << "the worker " << raw << " is gone";
    IHynThread* thread = nullptr;
    EXPECT_EQ(manager->GetMainThread(&thread), HYN_E_FAIL);
}

TEST_F(ThreadManager, ClearsAndRemovesPendingEventsOfItsThreads)
{
    const WorkerPtr worker = ManagedWorker();
    Blocker blocker(kEvent);
    worker->RegisterHandler(blocker.handler, nullptr);
    Post(kEvent, worker->GetThreadID());
    blocker.inside.Pass();
    for (const std::uint32_t id : {kEvent, kEvent + 1})
        manager->PostEvent(id, 1, 0, ParamPtr(new Param), worker->GetThreadID(), nullptr);
    std::uint32_t ids[] = {kEvent + 1};
    EXPECT_EQ(manager->RemoveEvents(ids, 1, worker->GetThreadID()), HYN_S_OK);
    EXPECT_EQ(Param::Alive(), 1);
    manager->ClearAllEvents();
    EXPECT_EQ(Param::Alive(), 0);
    blocker.gate.Open();
    worker->Stop();
    EXPECT_EQ(blocker.handler->calls.size(), 1u);
}
