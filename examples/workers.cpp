// A worker squares numbers; its answers come back to the main thread, which prints them and quits after the last.
#include <cstdio>

#include <halyon/platform/EventLoop.h>
#include <halyon/thread/CHynEventHandler.h>
#include <halyon/thread/CHynThreadManager.h>
#include <halyon/thread/CHynWorkerThread.h>

using namespace Halyon;

constexpr std::uint32_t kSquare = 1;
constexpr std::uint32_t kAnswer = 2;
constexpr std::uint32_t kQuit = 0;

class Number : public CHynEventParam
{
public:
    explicit Number(int number) : value(number) {}
    const int value;
};

// Calls a plain function for each event of one identifier.
class Handler : public CHynEventHandler
{
public:
    using Function = void (*)(IHynThreadManager& manager, const Number& number);
    Handler(std::uint32_t eventID, IHynThreadManager& manager, Function function)
        : CHynEventHandler(eventID), m_manager(manager), m_function(function)
    {
    }
    HynResult HandleEvent(std::uint32_t, std::int32_t, IHynEventParam* pParam) override
    {
        m_function(m_manager, *static_cast<Number*>(pParam));
        return HYN_S_EVENT_HANDLED;
    }

private:
    IHynThreadManager& m_manager;
    Function m_function;
};

void OnSquare(IHynThreadManager& manager, const Number& number)
{
    const CHynAutoPtr<Number> answer = new Number(number.value * number.value);
    manager.PostEvent(kAnswer, 0, 0, answer, kHynMainThreadID, nullptr);
}

void OnAnswer(IHynThreadManager& manager, const Number& number)
{
    std::printf("%d\n", number.value);
    if (number.value == 25)
        manager.PostEvent(kQuit, 0, 0, nullptr, kHynMainThreadID, nullptr);
}

int main()
{
    const CHynAutoPtr<CHynThreadManager> manager = new CHynThreadManager;
    manager->InitMainThread(nullptr);
    manager->RegisterHandler(new Handler(kAnswer, *manager, OnAnswer), nullptr);

    const CHynAutoPtr<CHynWorkerThread> worker = new CHynWorkerThread(100, "squares");
    int started = 0;
    if (HynFailed(worker->Start(manager, &started)))
        return 1;
    worker->RegisterHandler(new Handler(kSquare, *manager, OnSquare), nullptr);
    for (int value = 1; value <= 5; ++value)
    {
        const CHynAutoPtr<Number> number = new Number(value);
        worker->PostEvent(kSquare, 0, 0, number, nullptr);
    }

    RunApplicationEventLoop();
    worker->Stop();
    return 0;
}
