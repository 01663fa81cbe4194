// What a program derives its handlers and its events' parameters from: everything but what they are for.
//
//     class CSquare : public Halyon::CHynEventHandler
//     {
//     public:
//         CSquare() : CHynEventHandler(kSquare) {}
//         HynResult HandleEvent(std::uint32_t uParam, std::int32_t lParam, IHynEventParam* pParam) override;
//     };
//
// Header-only, so that components of any library can use it. New objects have the count 0.
#pragma once

#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/CHynComponent.h>
#include <halyon/thread/IHynEventHandler.h>

namespace Halyon
{
// A counted object that travels with an event; derived classes add what it carries. Between the post and the handling
// nobody else touches it; whoever gives the last reference back destroys it.
class CHynEventParam : public CHynComponent<IHynEventParam, &IID_IHynEventParam>
{
};

// A handler of one event identifier that is the same as no other object. Derived classes say what HandleEvent does.
class CHynEventHandler : public CHynComponent<IHynEventHandler, &IID_IHynEventHandler>
{
public:
    explicit CHynEventHandler(std::uint32_t dwEventID) noexcept : m_dwEventID(dwEventID) {}

    HynResult GetEventID(std::uint32_t* pEventID) override
    {
        *pEventID = m_dwEventID;
        return HYN_S_OK;
    }
    // Null until SetOwner has said otherwise.
    HynResult GetOwner(void** ppOwner) override
    {
        *ppOwner = m_pOwner;
        return HYN_S_OK;
    }
    HynResult SetOwner(void* pOwner) override
    {
        m_pOwner = pOwner;
        return HYN_S_OK;
    }
    HynResult IsSameHandler(IHynEventHandler* pOther, int* pSame) override
    {
        *pSame = pOther == this ? 1 : 0;
        return HYN_S_OK;
    }

private:
    const std::uint32_t m_dwEventID;
    void* m_pOwner = nullptr;
};
} // namespace Halyon
