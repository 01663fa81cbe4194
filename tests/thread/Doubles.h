// Parameters and handlers for tests, and the gate that threads meet at.
#pragma once

#include <atomic>
#include <functional>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <halyon/thread/CHynEventHandler.h>
#include <halyon/thread/CHynWorkerThread.h>

namespace HalyonTest
{
// A count that threads raise and a test waits for.
class Counter
{
public:
    void Raise()
    {
        ++m_count;
        m_count.notify_all();
    }
    void WaitFor(int count) const
    {
        for (int seen = m_count; seen < count; seen = m_count)
            m_count.wait(seen);
    }
    [[nodiscard]] int Get() const { return m_count; }

private:
    std::atomic<int> m_count{0};
};

// Shut until it is opened.
class Gate
{
public:
    void Open() { m_counter.Raise(); }
    void Pass() const { m_counter.WaitFor(1); }

private:
    Counter m_counter;
};

// A parameter that carries a number; knows how many of its kind are alive.
class Param : public Halyon::CHynEventParam
{
public:
    explicit Param(std::uint32_t number = 0) : m_number(number) { ++s_alive; }
    ~Param() override { --s_alive; }

    std::uint32_t Number() const { return m_number; }
    static int Alive() { return s_alive; }

private:
    std::uint32_t m_number;
    static inline std::atomic<int> s_alive{0};
};

// The references on an object, as its own counting tells.
template <class T>
std::uint32_t References(T* object)
{
    object->AddRef();
    return object->Release();
}

struct Call
{
    std::uint32_t uParam;
    std::int32_t lParam;
    Halyon::IHynEventParam* pParam;
    bool operator==(const Call&) const = default;
};

// Records its calls, answers what it is told, and runs what a test gives it.
class Handler : public Halyon::CHynEventHandler
{
public:
    using Action = std::function<void(std::uint32_t, std::int32_t, Halyon::IHynEventParam*)>;

    explicit Handler(std::uint32_t eventID, Action action = {}) : CHynEventHandler(eventID), m_action(std::move(action))
    {
        ++s_alive;
    }
    ~Handler() override { --s_alive; }

    Halyon::HynResult HandleEvent(std::uint32_t uParam, std::int32_t lParam, Halyon::IHynEventParam* pParam) override
    {
        calls.push_back({uParam, lParam, pParam});
        if (m_action)
            m_action(uParam, lParam, pParam);
        called.Raise();
        return answer;
    }
    Halyon::HynResult IsSameHandler(Halyon::IHynEventHandler* pOther, int* pSame) override
    {
        *pSame = pOther == this ? 1 : 0;
        return sameAnswer;
    }

    static int Alive() { return s_alive; }

    std::vector<Call> calls; // read on the handling thread, or after `called` was waited for
    Counter called;
    Halyon::HynResult answer = Halyon::HYN_S_OK;
    Halyon::HynResult sameAnswer = Halyon::HYN_S_OK;

private:
    Action m_action;
    static inline std::atomic<int> s_alive{0};
};

using HandlerPtr = Halyon::CHynAutoPtr<Handler>;
using ParamPtr = Halyon::CHynAutoPtr<Param>;

inline HandlerPtr MakeHandler(std::uint32_t eventID, Handler::Action action = {})
{
    return new Handler(eventID, std::move(action));
}

// The first arguments of the calls, by which tests number their events.
inline std::vector<std::uint32_t> Numbers(const Handler& handler)
{
    std::vector<std::uint32_t> numbers;
    for (const Call& call : handler.calls)
        numbers.push_back(call.uParam);
    return numbers;
}

// Keeps its thread inside an event until the gate is opened.
struct Blocker
{
    explicit Blocker(std::uint32_t eventID)
        : handler(MakeHandler(eventID,
                              [this](auto...)
                              {
                                  inside.Open();
                                  gate.Pass();
                              }))
    {
    }
    Blocker(const Blocker&) = delete;
    Blocker& operator=(const Blocker&) = delete;

    Gate inside;
    Gate gate;
    HandlerPtr handler;
};

using WorkerPtr = Halyon::CHynAutoPtr<Halyon::CHynWorkerThread>;

inline WorkerPtr StartedWorker(std::int32_t capacity = 65535, Halyon::IHynThreadManager* manager = nullptr)
{
    WorkerPtr worker = new Halyon::CHynWorkerThread(capacity);
    int started = 0;
    EXPECT_EQ(worker->Start(manager, &started), Halyon::HYN_S_OK);
    EXPECT_EQ(started, 1);
    return worker;
}

// Every test ends with the counts of parameters and handlers where they began.
class ThreadTest : public testing::Test
{
protected:
    void TearDown() override
    {
        EXPECT_EQ(Param::Alive(), 0);
        EXPECT_EQ(Handler::Alive(), 0);
    }
};
} // namespace HalyonTest
