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

#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/CHynUnknown.h>
#include <halyon/framework/HynIdentifiers.h>
#include <halyon/thread/IHynEventHandler.h>

namespace HynHost
{
// A counted value. Whoever holds the last reference destroys it; between a post and its handling nobody else touches
// it.
template <class T>
class Carried : public Halyon::IHynEventParam, public Halyon::CHynUnknown
{
public:
    explicit Carried(T initial) : value(std::move(initial)) {}

    std::uint32_t AddRef() override { return DefaultAddRef(); }
    std::uint32_t Release() override { return DefaultRelease(); }
    Halyon::HynResult QueryInterface(const Halyon::HYN_GUID& iid, void** ppv) override
    {
        return DefaultQueryInterface(iid, ppv);
    }
    Halyon::HynResult DefaultQueryInterface(const Halyon::HYN_GUID& iid, void** ppv) override
    {
        return Halyon::HynAnswerInterface<&Halyon::IID_IHynEventParam, &Halyon::IID_IHynUnknown>(
            static_cast<Halyon::IHynEventParam*>(this), iid, ppv);
    }

    T value;
};

// Calls its function for each event of one identifier. No exception may leave the function.
class FunctionHandler : public Halyon::IHynEventHandler, public Halyon::CHynUnknown
{
public:
    using Function = std::function<void(std::uint32_t uParam, Halyon::IHynEventParam* pParam)>;

    FunctionHandler(std::uint32_t eventID, Function function) : m_eventID(eventID), m_function(std::move(function)) {}

    std::uint32_t AddRef() override { return DefaultAddRef(); }
    std::uint32_t Release() override { return DefaultRelease(); }
    Halyon::HynResult QueryInterface(const Halyon::HYN_GUID& iid, void** ppv) override
    {
        return DefaultQueryInterface(iid, ppv);
    }
    Halyon::HynResult DefaultQueryInterface(const Halyon::HYN_GUID& iid, void** ppv) override
    {
        return Halyon::HynAnswerInterface<&Halyon::IID_IHynEventHandler, &Halyon::IID_IHynUnknown>(
            static_cast<Halyon::IHynEventHandler*>(this), iid, ppv);
    }

    Halyon::HynResult GetEventID(std::uint32_t* pEventID) override
    {
        *pEventID = m_eventID;
        return Halyon::HYN_S_OK;
    }
    Halyon::HynResult GetOwner(void** ppOwner) override
    {
        *ppOwner = m_pOwner;
        return Halyon::HYN_S_OK;
    }
    Halyon::HynResult SetOwner(void* pOwner) override
    {
        m_pOwner = pOwner;
        return Halyon::HYN_S_OK;
    }
    Halyon::HynResult HandleEvent(std::uint32_t uParam, std::int32_t /*lParam*/,
                                  Halyon::IHynEventParam* pParam) override
    {
        m_function(uParam, pParam);
        return Halyon::HYN_S_EVENT_HANDLED;
    }
    Halyon::HynResult IsSameHandler(Halyon::IHynEventHandler* pOther, int* pSame) override
    {
        *pSame = pOther == this ? 1 : 0;
        return Halyon::HYN_S_OK;
    }

private:
    std::uint32_t m_eventID;
    void* m_pOwner = nullptr;
    Function m_function;
};
} // namespace HynHost
