// The two small classes that posting between threads takes: a parameter that carries a value, and a handler that calls
// a function.
//
//     CHynAutoPtr<Carried<FileJob>> job = new Carried<FileJob>(...);
//     manager->PostEvent(kReadFile, 0, 0, job, readerID, nullptr);
//     reader->RegisterHandler(new FunctionHandler(kReadFile, [](std::uint32_t number, IHynEventParam* param) { ... }),
//                             nullptr);
#pragma once

#include <functional>
#include <utility>

#include <halyon/thread/CHynEventHandler.h>

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
} // namespace HynHost
