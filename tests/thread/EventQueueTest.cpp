#include <gtest/gtest.h>

#include <deque>
#include <random>
#include <thread>

#include <halyon/thread/CHynThreadEventQueue.h>

#include "Doubles.h"

using namespace Halyon;
using namespace HalyonTest;

namespace
{
constexpr std::uint32_t kEvent = 7;
constexpr std::uint32_t kOther = 8;
int g_receiverA;
int g_receiverB;

HynEventInfo Info(std::uint32_t eventID, std::uint32_t number, IHynEventParam* param = nullptr,
                  void* receiver = nullptr)
{
    return {eventID, receiver, number, -1, param};
}

using List = std::vector<std::uint32_t>;

using EventQueue = ThreadTest;

void Drain(CHynThreadEventQueue& queue)
{
    while (queue.ProcessNext() == 1)
    {
    }
}

// Events go in at either end as long as there is room, come out at the front, and are removed by their identifiers.
void CompareWithModel(std::int32_t capacity, std::mt19937& random)
{
    SCOPED_TRACE(capacity);
    CHynThreadEventQueue queue(capacity);
    const HandlerPtr handler = MakeHandler(0);
    for (std::uint32_t id = 0; id < 5; ++id)
        queue.RegisterObserver(id, handler, nullptr);
    std::deque<std::pair<std::uint32_t, std::uint32_t>> model;
    for (std::uint32_t number = 0; number < 20000; ++number)
    {
        const auto choice = static_cast<std::uint32_t>(random() % 1000);
        const auto id = static_cast<std::uint32_t>(random() % 5);
        if (choice < 600)
        {
            const bool front = choice < 100;
            const bool fits = static_cast<std::int32_t>(model.size()) < capacity;
            ASSERT_EQ(queue.InsertEvent(Info(id, number, ParamPtr(new Param)), front ? 1 : 0), fits ? 1 : 0);
            if (fits)
                model.insert(front ? model.begin() : model.end(), {id, number});
        }
        else if (choice < 995)
        {
            const bool any = !model.empty();
            ASSERT_EQ(queue.ProcessNext(), any ? 1 : 0);
            if (any)
            {
                ASSERT_EQ(handler->calls.back().uParam, model.front().second) << "operation " << number;
                model.pop_front();
            }
        }
        else if (choice < 999)
        {
            const std::uint32_t ids[] = {id, static_cast<std::uint32_t>(random() % 5)};
            ASSERT_EQ(queue.RemoveEvents(ids, 2), 0u);
            std::erase_if(model, [&](const auto& entry) { return entry.first == ids[0] || entry.first == ids[1]; });
        }
        else
        {
            queue.ClearQueue();
            model.clear();
        }
        ASSERT_EQ(static_cast<std::size_t>(Param::Alive()), model.size());
        ASSERT_EQ(queue.IsEmpty(), model.empty());
    }
}
} // namespace

TEST_F(EventQueue, DispatchesInOrderOfRegistrationUntilOneHandles)
{
    CHynThreadEventQueue queue(10);
    const HandlerPtr first = MakeHandler(kEvent);
    const HandlerPtr second = MakeHandler(kEvent);
    queue.RegisterObserver(kEvent, first, &g_receiverA);
    queue.RegisterObserver(kEvent, second, &g_receiverA);
    second->answer = HYN_E_BUFFERTOOSMALL;
    EXPECT_EQ(queue.Invoke(kEvent, 1, 2, nullptr, &g_receiverA), HYN_E_BUFFERTOOSMALL);
    first->answer = HYN_E_FAIL;
    second->answer = 5;
    EXPECT_EQ(queue.Invoke(kEvent, 3, 4, nullptr, &g_receiverA), 5);
    first->answer = HYN_S_EVENT_HANDLED;
    EXPECT_EQ(queue.Invoke(kEvent, 5, 6, nullptr, &g_receiverA), HYN_S_EVENT_HANDLED);
    EXPECT_EQ(Numbers(*first), (List{1, 3, 5}));
    EXPECT_EQ(Numbers(*second), (List{1, 3}));
    EXPECT_EQ(queue.Invoke(kEvent, 7, 8, nullptr, &g_receiverB), HYN_E_FAIL);
    EXPECT_EQ(queue.Invoke(kEvent, 7, 8, nullptr, nullptr), HYN_E_FAIL);
    EXPECT_EQ(queue.Invoke(kOther, 7, 8, nullptr, &g_receiverA), HYN_E_NOHANDLER);
    EXPECT_EQ(first->calls.size(), 3u);
}

TEST_F(EventQueue, KeepsOnePairForAHandlerAndReceiver)
{
    const HandlerPtr handler = MakeHandler(kEvent);
    {
        CHynThreadEventQueue queue(10);
        queue.RegisterObserver(kEvent, nullptr, nullptr);
        queue.RegisterObserver(kEvent, handler, &g_receiverA);
        queue.RegisterObserver(kEvent, handler, &g_receiverA);
        EXPECT_EQ(References(handler.operator->()), 2u);
        queue.RegisterObserver(kEvent, handler, &g_receiverB);
        queue.RegisterObserver(kOther, handler, &g_receiverA);
        EXPECT_EQ(References(handler.operator->()), 4u);

        // A handler that cannot tell counts as another one.
        handler->sameAnswer = HYN_E_FAIL;
        queue.RegisterObserver(kEvent, handler, &g_receiverA);
        EXPECT_EQ(References(handler.operator->()), 5u);
        handler->sameAnswer = HYN_S_OK;

        queue.UnRegisterObserver(kEvent, handler, &g_receiverA);
        EXPECT_EQ(References(handler.operator->()), 4u) << "only the first match goes";
        const HandlerPtr unknown = MakeHandler(kEvent);
        queue.UnRegisterObserver(kEvent, unknown, &g_receiverA);
        queue.UnRegisterObserver(99, handler, &g_receiverA);
        EXPECT_EQ(References(handler.operator->()), 4u);
    }
    EXPECT_EQ(References(handler.operator->()), 1u) << "the queue releases what is left";
}

TEST_F(EventQueue, PurgesAnIdentifierWithItsLastHandlerAndNothingElse)
{
    CHynThreadEventQueue queue(10);
    const HandlerPtr handler = MakeHandler(kEvent);
    const HandlerPtr other = MakeHandler(kOther);
    queue.RegisterObserver(kEvent, handler, &g_receiverA);
    queue.RegisterObserver(kEvent, handler, &g_receiverB);
    queue.RegisterObserver(kOther, other, nullptr);
    const ParamPtr param = new Param;
    queue.InsertEvent(Info(kEvent, 1, param, &g_receiverA), 0);
    queue.InsertEvent(Info(kOther, 2), 0);
    queue.InsertEvent(Info(kEvent, 3, param, &g_receiverB), 0);
    queue.UnRegisterObserver(kEvent, handler, &g_receiverA);
    EXPECT_EQ(References(param.operator->()), 3u) << "one handler is left for the identifier";
    queue.UnRegisterObserver(kEvent, handler, &g_receiverB);
    EXPECT_EQ(References(param.operator->()), 1u);
    Drain(queue);
    EXPECT_EQ(Numbers(*other), (List{2}));
    EXPECT_TRUE(handler->calls.empty());
}

TEST_F(EventQueue, RemovesNothingWithoutIdentifiers)
{
    CHynThreadEventQueue queue(10);
    queue.InsertEvent(Info(kEvent, 1), 0);
    const std::uint32_t id = kEvent;
    EXPECT_EQ(queue.RemoveEvents(nullptr, 1), static_cast<std::uint32_t>(HYN_E_FAIL));
    EXPECT_EQ(queue.RemoveEvents(&id, 0), static_cast<std::uint32_t>(HYN_E_FAIL));
    EXPECT_FALSE(queue.IsEmpty());
}

TEST_F(EventQueue, AgreesWithAModelOverRandomOperations)
{
    const auto seed = std::random_device{}();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    for (const std::int32_t capacity : {-1, 0, 1, 2, 30, 1000})
        CompareWithModel(capacity, random);
}

TEST_F(EventQueue, AHandlerMayChangeTheTableAndPostFromInside)
{
    CHynThreadEventQueue queue(10);
    const HandlerPtr late = MakeHandler(kEvent);
    const HandlerPtr third = MakeHandler(kEvent);
    const HandlerPtr nested = MakeHandler(kOther);
    queue.RegisterObserver(kOther, nested, nullptr);
    HandlerPtr first =
        MakeHandler(kEvent,
                    [&](std::uint32_t number, auto...)
                    {
                        if (number != 1)
                            return;
                        queue.UnRegisterObserver(kEvent, first, nullptr); // itself, while it runs
                        queue.UnRegisterObserver(kEvent, third, nullptr); // one that has not had its turn
                        for (int i = 0; i < 100; ++i)                     // enough for the table to move
                            queue.RegisterObserver(kEvent, MakeHandler(kEvent), nullptr);
                        queue.RegisterObserver(kEvent, late, nullptr);
                        queue.InsertEvent(Info(kEvent, 2), 0);
                        EXPECT_EQ(queue.Invoke(kOther, 0, 0, nullptr, nullptr), HYN_S_OK); // tidies nothing up
                    });
    const HandlerPtr second = MakeHandler(kEvent);
    for (const HandlerPtr& handler : {first, second, third})
        queue.RegisterObserver(kEvent, handler, nullptr);
    queue.InsertEvent(Info(kEvent, 1), 0);
    EXPECT_EQ(queue.ProcessNext(), 1);
    EXPECT_EQ(Numbers(*second), (List{1}));
    EXPECT_TRUE(third->calls.empty()) << "removed before its turn";
    EXPECT_TRUE(late->calls.empty()) << "registered during the dispatch";
    EXPECT_EQ(queue.ProcessNext(), 1);
    EXPECT_EQ(Numbers(*first), (List{1}));
    EXPECT_EQ(Numbers(*late), (List{2}));
}

TEST_F(EventQueue, AHandlerThatDropsItsOwnLastReferenceLivesUntilItReturns)
{
    CHynThreadEventQueue queue(10);
    Handler* raw = nullptr;
    queue.RegisterObserver(kEvent,
                           raw =
                               new Handler(kEvent,
                                           [&](auto...)
                                           {
                                               queue.UnRegisterObserver(kEvent, raw, nullptr);
                                               EXPECT_EQ(queue.Invoke(kEvent, 2, 0, nullptr, nullptr), HYN_E_NOHANDLER)
                                                   << "its identifier has no handler now";
                                               EXPECT_EQ(Handler::Alive(), 1);
                                           }),
                           nullptr);
    queue.InsertEvent(Info(kEvent, 3), 0);
    EXPECT_EQ(queue.Invoke(kEvent, 1, 0, nullptr, nullptr), HYN_S_OK);
    EXPECT_EQ(Handler::Alive(), 0);
    EXPECT_TRUE(queue.IsEmpty()) << "the pending event went with the last handler";
}

TEST_F(EventQueue, AParameterThatPostsFromItsDestructorFindsNoLockInItsWay)
{
    struct Poster : Param
    {
        explicit Poster(CHynThreadEventQueue& q) : queue(q) {}
        ~Poster() override
        {
            std::thread([this] { queue.InsertEvent(Info(kOther, 9), 0); }).join();
        }
        CHynThreadEventQueue& queue;
    };
    CHynThreadEventQueue queue(10);
    const std::uint32_t id = kEvent;
    queue.InsertEvent(Info(kEvent, 1, ParamPtr(new Poster(queue))), 0);
    queue.RemoveEvents(&id, 1);
    queue.InsertEvent(Info(kEvent, 1, ParamPtr(new Poster(queue))), 0);
    queue.ProcessNext();
    queue.ClearQueue();
    EXPECT_TRUE(queue.IsEmpty() || queue.ProcessNext() == 1);
}
