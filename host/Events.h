// What posting between threads takes: a parameter that carries a value, a handler that calls a function, and a post
// that arrives.
//
//     CHynAutoPtr<Carried<FileJob>> job = new Carried<FileJob>(...);
//     manager->PostEvent(kReadFile, 0, 0, job, readerID, nullptr);
//     reader->RegisterHandler(new FunctionHandler(kReadFile, [](std::uint32_t number, IHynEventParam* param) { ... }),
//                             nullptr);
#pragma once

#include <cstdint>
#include <functional>
#include <utility>

#include <halyon/framework/HynResult.h>
#include <halyon/platform/TovPCMac.h>
#include <halyon/thread/CHynEventHandler.h>
#include <halyon/thread/IHynThread.h>
#include <host/HostError.h>

namespace HynHost
{
// A counted value. Whoever holds the last reference destroys it; between a post and its handling nobody else touches
// it.
template <class T>
class Carried : public Halyon::CHynEventParam
{
public:
    explicit Carried(T initial) : value(std::move(initial)) {}

    T value;
};

// Calls its function for each event of one identifier. No exception may leave the function.
class FunctionHandler : public Halyon::CHynEventHandler
{
public:
    using Function = std::function<void(std::uint32_t uParam, Halyon::IHynEventParam* pParam)>;

    FunctionHandler(std::uint32_t eventID, Function function)
        : CHynEventHandler(eventID), m_function(std::move(function))
    {
    }

    Halyon::HynResult HandleEvent(std::uint32_t uParam, std::int32_t /*lParam*/,
                                  Halyon::IHynEventParam* pParam) override
    {
        m_function(uParam, pParam);
        return Halyon::HYN_S_EVENT_HANDLED;
    }

private:
    Function m_function;
};

// Posts to a thread, and again while there is no memory for it: for events that somebody waits for, who cannot be told
// in another way. A stopped worker gets nothing. [any]
inline void PostSurely(Halyon::IHynThread& thread, std::uint32_t eventID, std::uint32_t uParam = 0,
                       Halyon::IHynEventParam* param = nullptr, void* receiver = nullptr) noexcept
{
    constexpr std::uint32_t kWithoutMemoryMilliseconds = 10;
    while (thread.PostEvent(eventID, uParam, 0, param, receiver) == Halyon::HYN_E_FAIL)
        TovSleep(kWithoutMemoryMilliseconds);
}

// Throws HostError when `result` says that a thread, or what it is to handle, could not be set up.
inline void RequireThread(Halyon::HynResult result)
{
    if (Halyon::HynFailed(result))
        throw HostError("cannot start", "a thread", Halyon::HynResultName(result));
}
} // namespace HynHost
