// Every slot of the thread interfaces, called through the raw tables of the objects, by numbers that are frozen.

#include <gtest/gtest.h>

#include <halyon/thread/CHynMainThread.h>
#include <halyon/thread/CHynThreadManager.h>
#include <halyon/thread/CHynWorkerThread.h>

#include "tests/framework/ForeignHost.h"
#include "tests/thread/Doubles.h"

using ForeignHost::Call;
using ForeignHost::FromText;
using ForeignHost::Identifier;
using HalyonTest::Gate;
using HalyonTest::HandlerPtr;
using HalyonTest::MakeHandler;
using HalyonTest::Param;
using HalyonTest::ParamPtr;

namespace
{
const Identifier kThread = FromText("A6579EB2-C30D-4D3B-9A15-B5C90EC5DFC8");
const Identifier kThread2 = FromText("3EB79737-B7D0-40D4-A259-2533B1CCEE8E");
const Identifier kThread3 = FromText("09786068-0268-418A-9A29-5E49E34A6CBD");
const Identifier kManager = FromText("96A82544-F2A1-4C3F-9484-D3C6F64474A9");
const Identifier kManager2 = FromText("87213518-225D-468B-AE2A-130F03F1D4C8");
const Identifier kHandler = FromText("BAC9D121-0E23-438F-86B4-8E748DB2F462");
const Identifier kParam = FromText("D0042D30-B7F7-432A-B242-83B2AB47F63F");

constexpr std::uint32_t kEvent = 7;
constexpr auto kNotRunning = static_cast<std::int32_t>(0x81010001u);

enum ThreadSlot
{
    kGetThreadID = 3,
    kStart,
    kStop,
    kRun,
    kSetPriority,
    kRegisterHandler,
    kUnRegisterHandler,
    kPostEvent,
    kSendEvent,
    kClearAllEvents,
    kRemoveEvents,
    kThreadEnd // the destructor pair begins here
};

enum ManagerSlot
{
    kInitMainThread = 3,
    kRegisterThread,
    kUnRegisterThread,
    kGetThread,
    kGetCurrentThread,
    kGetMainThread,
    kManagerPost,
    kManagerSend,
    kManagerRegisterHandler,
    kManagerUnRegisterHandler,
    kManagerRemoveEvents
};

enum HandlerSlot
{
    kGetEventID = 3,
    kGetOwner,
    kSetOwner,
    kHandleEvent,
    kIsSameHandler
};

std::int32_t Post(void* thread, std::uint32_t event, void* param)
{
    return Call<std::int32_t>(thread, kPostEvent, event, 3u, -4, param, static_cast<void*>(nullptr));
}

// The whole object behind every identifier, one reference each.
void ExpectSelf(void* object, std::initializer_list<const Identifier*> identifiers)
{
    for (const Identifier* id : identifiers)
    {
        void* found = nullptr;
        EXPECT_EQ(ForeignHost::Query(object, *id, &found), 0);
        EXPECT_EQ(found, object);
        EXPECT_EQ(ForeignHost::Release(object), 1u);
    }
}
} // namespace

TEST(ThreadSlots, OfAWorker)
{
    void* worker = new Halyon::CHynWorkerThread(10);
    ForeignHost::AddRef(worker);
    ExpectSelf(worker, {&kThread, &kThread2, &kThread3, &ForeignHost::kUnknown});
    EXPECT_EQ(Post(worker, kEvent, nullptr), kNotRunning);

    int started = 0;
    ASSERT_EQ(Call<std::int32_t>(worker, kStart, static_cast<void*>(nullptr), &started), 0);
    EXPECT_NE(Call<std::uint32_t>(worker, kGetThreadID), 0u);
    EXPECT_EQ(Call<std::int32_t>(worker, kSetPriority, 50), 0);
    Gate gate;
    Gate inside;
    const HandlerPtr handler = MakeHandler(kEvent,
                                           [&](std::uint32_t, std::int32_t, Halyon::IHynEventParam*)
                                           {
                                               inside.Open();
                                               gate.Pass();
                                           });
    void* rawHandler = handler.operator->();
    void* none = nullptr;
    EXPECT_EQ(Call<std::int32_t>(worker, kRegisterHandler, rawHandler, none), 0);
    EXPECT_EQ(Post(worker, kEvent, nullptr), 0);
    inside.Pass();
    EXPECT_EQ(Call<std::int32_t>(worker, kSendEvent, kEvent, 0u, 0, none, none), ForeignHost::kNoInterface);

    const ParamPtr param = new Param;
    void* rawParam = param.operator->();
    std::uint32_t ids[] = {kEvent};
    Post(worker, kEvent, rawParam);
    EXPECT_EQ(HalyonTest::References(param.operator->()), 2u);
    EXPECT_EQ(Call<std::int32_t>(worker, kRemoveEvents, ids, 1u), 0);
    EXPECT_EQ(HalyonTest::References(param.operator->()), 1u);
    Post(worker, kEvent, rawParam);
    EXPECT_EQ(Call<std::int32_t>(worker, kClearAllEvents), 0);
    EXPECT_EQ(HalyonTest::References(param.operator->()), 1u);
    gate.Open();
    EXPECT_EQ(Call<std::int32_t>(worker, kUnRegisterHandler, rawHandler, none), 0);
    EXPECT_EQ(Call<std::int32_t>(worker, kStop), 0);
    EXPECT_EQ(Call<std::int32_t>(worker, kRun), 0) << "a stopped body returns at once";
    ASSERT_EQ(handler->calls.size(), 1u);
    EXPECT_EQ(handler->calls[0], (HalyonTest::Call{3, -4, nullptr}));
    EXPECT_EQ(ForeignHost::Release(worker), 0u);
}

TEST(ThreadSlots, OfTheWorkersOwnOperationsBehindTheDestructor)
{
    struct Derived : Halyon::CHynWorkerThread
    {
        void InitThread() override { order += 'I'; }
        void ExitThread() override { order += 'E'; }
        std::string order;
    };
    Derived worker;
    Call<void>(static_cast<Halyon::IHynThread3*>(&worker), kThreadEnd + 3);
    Call<void>(static_cast<Halyon::IHynThread3*>(&worker), kThreadEnd + 4);
    EXPECT_EQ(worker.order, "IE");
    void* out = nullptr;
    EXPECT_EQ(
        Call<std::int32_t>(static_cast<Halyon::IHynThread3*>(&worker), kThreadEnd + 2, &ForeignHost::kCommand, &out),
        ForeignHost::kNoInterface);
}

TEST(ThreadSlots, OfTheManagerAndTheMainThread)
{
    void* manager = new Halyon::CHynThreadManager;
    ForeignHost::AddRef(manager);
    ExpectSelf(manager, {&kManager, &kManager2, &ForeignHost::kUnknown});
    void* none = nullptr;
    void* thread = nullptr;
    EXPECT_EQ(Call<std::int32_t>(manager, kGetMainThread, &thread), ForeignHost::kFail);
    ASSERT_EQ(Call<std::int32_t>(manager, kInitMainThread, none), 0);
    ASSERT_EQ(Call<std::int32_t>(manager, kGetMainThread, &thread), 0);
    const auto id = Call<std::uint32_t>(thread, kGetThreadID);
    EXPECT_EQ(id, GetCurrentTovThreadID());
    EXPECT_EQ(Call<std::int32_t>(thread, kStop), ForeignHost::kNoInterface);
    EXPECT_EQ(Call<std::int32_t>(thread, kSetPriority, 50), ForeignHost::kNoInterface);
    EXPECT_EQ(Call<std::int32_t>(thread, kThreadEnd + 2), 0) << "ProcessEvent, with nothing pending";
    EXPECT_NE(Call<void*>(thread, kThreadEnd + 3), nullptr) << "GetQueueID";

    const HandlerPtr handler = MakeHandler(kEvent);
    void* rawHandler = handler.operator->();
    EXPECT_EQ(Call<std::int32_t>(manager, kManagerRegisterHandler, rawHandler, none), 0);
    EXPECT_EQ(Call<std::int32_t>(manager, kManagerSend, kEvent, 1u, 2, none, id, none), 0);
    EXPECT_EQ(Call<std::int32_t>(manager, kManagerPost, kEvent, 3u, 4, none, id, none), 0);
    EXPECT_EQ(Call<std::int32_t>(thread, kThreadEnd + 2), 0);
    EXPECT_EQ(handler->calls.size(), 2u);
    std::uint32_t ids[] = {kEvent};
    EXPECT_EQ(Call<std::int32_t>(manager, kManagerRemoveEvents, ids, 1u, id), 0);
    EXPECT_EQ(Call<std::int32_t>(manager, kManagerUnRegisterHandler, rawHandler, none), 0);

    EXPECT_EQ(Call<std::int32_t>(manager, kUnRegisterThread, thread), 0);
    void* again = nullptr;
    EXPECT_EQ(Call<std::int32_t>(manager, kGetThread, &again, id), ForeignHost::kFail);
    EXPECT_EQ(Call<std::int32_t>(manager, kRegisterThread, thread), 0);
    EXPECT_EQ(Call<std::int32_t>(manager, kGetCurrentThread, &again), 0);
    EXPECT_EQ(again, thread);
    ForeignHost::Release(again);
    ForeignHost::Release(thread);
    EXPECT_EQ(ForeignHost::Release(manager), 0u);
}

TEST(ThreadSlots, OfAHandlerAndAParameter)
{
    const HandlerPtr handler = MakeHandler(kEvent);
    void* raw = handler.operator->();
    ExpectSelf(raw, {&kHandler, &ForeignHost::kUnknown});
    std::uint32_t id = 0;
    int same = 0;
    void* owner = nullptr;
    Call<std::int32_t>(raw, kGetEventID, &id);
    Call<std::int32_t>(raw, kSetOwner, static_cast<void*>(&id));
    Call<std::int32_t>(raw, kGetOwner, &owner);
    Call<std::int32_t>(raw, kHandleEvent, 5u, -6, static_cast<void*>(nullptr));
    Call<std::int32_t>(raw, kIsSameHandler, raw, &same);
    EXPECT_EQ(id, kEvent);
    EXPECT_EQ(owner, &id);
    EXPECT_EQ(same, 1);
    EXPECT_EQ(handler->calls.front(), (HalyonTest::Call{5, -6, nullptr}));
    const ParamPtr param = new Param;
    ExpectSelf(param.operator->(), {&kParam, &ForeignHost::kUnknown});
}
