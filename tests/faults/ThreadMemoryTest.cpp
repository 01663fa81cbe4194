// Queue, worker, main thread and manager without memory.
#include <tests/faults/Operations.h>

#include <halyon/platform/EventLoop.h>
#include <halyon/thread/CHynMainThread.h>
#include <halyon/thread/CHynThreadManager.h>
#include <halyon/thread/CHynWorkerThread.h>

#include <tests/thread/Doubles.h>

using namespace Halyon;
using namespace HalyonTest;

namespace
{
constexpr std::uint32_t kEvent = 7;
constexpr std::uint32_t kWait = 99;
constexpr int kCapacity = 300; // more than a block of the queue holds

// Counts what it handles, without memory.
class CountingHandler : public CHynEventHandler
{
public:
    using CHynEventHandler::CHynEventHandler;
    ~CountingHandler() override { EXPECT_FALSE(m_isCalled) << "destroyed under its own feet"; }

    HynResult HandleEvent(std::uint32_t, std::int32_t, IHynEventParam*) override
    {
        ++calls;
        m_isCalled = true;
        if (queue != nullptr)
            queue->UnRegisterObserver(kEvent, this, nullptr);
        m_isCalled = false;
        return HYN_S_OK;
    }

    int calls = 0;
    CHynThreadEventQueue* queue = nullptr; // to unregister from while it is called

private:
    bool m_isCalled = false;
};

// A queue with an event for its handler, and a worker that a gate keeps from handling what is posted to it.
struct ThreadWorld
{
    ThreadWorld()
    {
        queue.RegisterObserver(kEvent, handler, nullptr);
        queue.InsertEvent(Event(), 0);
        int started = 0;
        EXPECT_EQ(worker->Start(manager, &started), HYN_S_OK);
        worker->RegisterHandler(wait.handler, nullptr);
        worker->RegisterHandler(counter, nullptr);
        worker->PostEvent(kWait, 0, 0, nullptr, nullptr);
        wait.inside.Pass();
    }
    // What the worker said that it took must have been handled.
    ~ThreadWorld()
    {
        wait.gate.Open();
        worker->PostEvent(kWait, 0, 0, nullptr, nullptr);
        wait.handler->called.WaitFor(2);
        EXPECT_EQ(counter->calls, posted);
        worker->Stop();
        idle->Stop();
        manager->UnRegisterAll();
    }
    ThreadWorld(const ThreadWorld&) = delete;
    ThreadWorld& operator=(const ThreadWorld&) = delete;

    HynEventInfo Event() { return {kEvent, nullptr, 0, 0, CHynAutoPtr<IHynEventParam>(param)}; }

    // How many events of the queue reach its handler.
    int Handled()
    {
        const int before = handler->calls;
        while (queue.ProcessNext() != 0)
        {
        }
        return handler->calls - before;
    }

    Blocker wait{kWait};
    CHynAutoPtr<CountingHandler> handler = new CountingHandler(kEvent);
    CHynAutoPtr<CountingHandler> counter = new CountingHandler(kEvent);
    int posted = 0;
    ParamPtr param = new Param;
    CHynThreadEventQueue queue{kCapacity};
    CHynAutoPtr<CHynThreadManager> manager = new CHynThreadManager;
    CHynAutoPtr<CHynWorkerThread> worker = new CHynWorkerThread;
    CHynAutoPtr<CHynWorkerThread> idle = new CHynWorkerThread; // not started
};

// What the queue took in is handled, what it refused is not.
HynResult Insert(ThreadWorld& world, int front)
{
    world.Handled();
    int taken = 0;
    for (int i = 0; i < kCapacity; ++i)
        taken += world.queue.InsertEvent(world.Event(), front);
    if (world.Handled() != taken)
        return kWrong;
    return taken == kCapacity ? HYN_S_OK : HYN_E_FAIL;
}

// Posts several blocks full of events.
HynResult Post(ThreadWorld& world, int front)
{
    for (int i = 0; i < kCapacity; ++i)
    {
        const HynResult result = world.worker->PostEventEx(kEvent, 0, 0, world.param, nullptr, front);
        if (HynFailed(result))
            return result;
        ++world.posted;
    }
    return HYN_S_OK;
}

HynResult RegisterObserver(ThreadWorld& world)
{
    const int before = world.handler->calls;
    world.queue.RegisterObserver(kEvent + 1, world.handler, nullptr);
    const HynResult result = world.queue.Invoke(kEvent + 1, 0, 0, nullptr, nullptr);
    return IsEither(result == HYN_S_OK && world.handler->calls == before + 1, result == HYN_E_NOHANDLER);
}

HynResult HandleOnceAndUnRegister(ThreadWorld& world)
{
    world.handler->queue = &world.queue;
    world.handler = nullptr;
    const bool isHandled = world.queue.ProcessNext() == 1;
    return IsDone(isHandled && world.queue.Invoke(kEvent, 0, 0, nullptr, nullptr) == HYN_E_NOHANDLER);
}

HynResult Clear(ThreadWorld& world)
{
    std::uint32_t id = kEvent;
    world.queue.RemoveEvents(&id, 1);
    world.queue.ClearQueue();
    return IsDone(world.Handled() == 0);
}

HynResult Start(ThreadWorld& world)
{
    int started = 0;
    const HynResult result = world.idle->Start(world.manager, &started);
    CHynAutoPtr<IHynThread> found;
    const HynResult get = world.manager->GetThread(found.Receive(), world.idle->GetThreadID());
    const bool ended = result != HYN_E_FAIL || (world.idle->CheckExitFlag() != 0 && world.idle->GetThreadID() == 0);
    return ended && HynFailed(get) == HynFailed(result) && started == (HynFailed(result) ? 0 : 1) ? result : kWrong;
}

HynResult RegisterThread(ThreadWorld& world)
{
    const HynResult result = world.manager->RegisterThread(world.idle);
    CHynAutoPtr<IHynThread> found;
    return world.manager->GetThread(found.Receive(), world.idle->GetThreadID()) == result ? result : kWrong;
}

HynResult PostByManager(ThreadWorld& world)
{
    const HynResult result = world.manager->PostEvent(kEvent, 0, 0, world.param, world.worker->GetThreadID(), nullptr);
    world.posted += HynSucceeded(result) ? 1 : 0;
    return result;
}

// The manager has the handler, so the thread sends it an event and handles one that is posted.
HynResult UseMainThread(ThreadWorld& world)
{
    HynResult result = world.manager->InitMainThread(nullptr);
    CHynAutoPtr<IHynThread> main;
    if (HynFailed(result) || HynFailed(world.manager->GetMainThread(main.Receive())))
        return HynFailed(result) ? result : kWrong;
    CountingHandler* handler = world.handler;
    result = world.manager->RegisterHandler(handler, nullptr);
    if (HynFailed(result))
        return result;
    const int before = handler->calls;
    main->SendEvent(kEvent, 0, 0, nullptr, nullptr);
    result = main->PostEvent(kEvent, 0, 0, world.param, nullptr);
    TimerProc(nullptr, static_cast<CHynMainThread*>(main.operator Halyon::IHynThread*()));
    return handler->calls == before + (HynFailed(result) ? 1 : 2) ? result : kWrong;
}

HynResult InstallTimer(ThreadWorld& /*world*/)
{
    EventLoopTimerRef timer = nullptr;
    const OSStatus status = InstallEventLoopTimer(
        GetMainEventLoop(), 0.0, 1.0, [](EventLoopTimerRef, void*) {}, nullptr, &timer);
    RemoveEventLoopTimer(timer);
    return IsEither(status == noErr && timer != nullptr, status == memFullErr && timer == nullptr);
}

using World = ThreadWorld;
using Op = Operation<ThreadWorld>;
constexpr Op::Failing kStarting = {{HYN_E_THREADNOEVENT, HYN_E_THREADNOTHREAD, HYN_E_FAIL},
                                   [](World& world)
                                   {
                                       world.idle->Stop();
                                   }};

const Op kOperations[] = {
    Op("InsertEvent", [](World& world) { return Insert(world, 0); }),
    Op("InsertEvent in front", [](World& world) { return Insert(world, 1); }),
    Op("RegisterObserver", RegisterObserver),
    Op("a handler that unregisters itself and is nobody else's", HandleOnceAndUnRegister),
    Op("RemoveEvents and ClearQueue", Clear),
    Op("PostEvent of a worker", [](World& world) { return Post(world, 0); }),
    Op("PostEvent of a worker in front", [](World& world) { return Post(world, 1); }),
    Op("Start", kStarting, Start),
    Op("Stop", [](World& world) { return world.idle->Stop(); }),
    Op("SetPriority", [](World& world) { return world.worker->SetPriority(5); }),
    Op("RegisterThread", RegisterThread),
    Op("PostEvent of the manager", PostByManager),
    Op("InitMainThread, its handlers and its events", UseMainThread),
    Op("InstallEventLoopTimer", InstallTimer),
};

TEST(ThreadMemory, IsMissedWithTheStatedCodeAndNothingIsLost)
{
    FailEachAllocation("threads", kOperations);
    EXPECT_EQ(Param::Alive(), 0);
}

TEST(ThreadMemory, IsNotNeededToEndTheLoop)
{
    constexpr int kMostTicks = 500;
    int ticks = 0;
    EventLoopTimerRef timer = nullptr;
    const auto tick = [](EventLoopTimerRef, void* pTicks)
    {
        const int number = ++*static_cast<int*>(pTicks);
        const FailAllocation fail(number == 1 ? 1 : 1 << 30, true);
        if (number == 1 || number == kMostTicks)
            QuitApplicationEventLoop();
    };
    ASSERT_EQ(InstallEventLoopTimer(GetMainEventLoop(), 0.0, 0.001, tick, &ticks, &timer), noErr);
    RunApplicationEventLoop();
    RemoveEventLoopTimer(timer);
    EXPECT_LT(ticks, kMostTicks);
}
} // namespace
