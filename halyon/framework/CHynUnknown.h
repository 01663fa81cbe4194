// The reference-counting base of every component class.
//
// A component class derives first from its interface, so that the object's address is its interface pointer, and
// second from CHynUnknown; it forwards the three root operations and overrides DefaultQueryInterface:
//
//     class CMyPart : public IMyPart, public Halyon::CHynUnknown
//     {
//     public:
//         std::uint32_t AddRef() override { return DefaultAddRef(); }
//         std::uint32_t Release() override { return DefaultRelease(); }
//         HynResult QueryInterface(const HYN_GUID& iid, void** ppv) override
//         {
//             return DefaultQueryInterface(iid, ppv);
//         }
//
//         // ... the operations of IMyPart ...
//
//         ~CMyPart() override;
//         HynResult DefaultQueryInterface(const HYN_GUID& iid, void** ppv) override
//         {
//             return HynAnswerInterface<&IID_IMyPart, &IID_IHynUnknown>(static_cast<IMyPart*>(this), iid, ppv);
//         }
//     };
//
// A new object has the count 0; whoever makes it takes the first reference.
#pragma once

#include <halyon/framework/HynLock.h>
#include <halyon/framework/IHynUnknown.h>

namespace Halyon
{
// A count whose steps are made under a lock of its own.
template <class TLock>
class LockCounter
{
public:
    // Adds 1; returns the count that this call made. [any]
    std::uint32_t increment() noexcept
    {
        m_lock.Lock();
        const std::uint32_t count = ++m_uCount;
        m_lock.Unlock();
        return count;
    }

    // Takes 1 away; returns the count that this call made. [any]
    std::uint32_t decrement() noexcept
    {
        m_lock.Lock();
        const std::uint32_t count = --m_uCount;
        m_lock.Unlock();
        return count;
    }

private:
    std::uint32_t m_uCount HYN_GUARDED_BY(m_lock) = 0;
    TLock m_lock;
};

class CHynUnknown
{
public:
    CHynUnknown() = default;
    CHynUnknown(const CHynUnknown&) = delete;
    CHynUnknown& operator=(const CHynUnknown&) = delete;
    virtual ~CHynUnknown();

    // Takes one reference; returns the new count. [any]
    virtual std::uint32_t DefaultAddRef();

    // Gives one reference back; the object is destroyed at 0. Returns the new count. [any]
    virtual std::uint32_t DefaultRelease();

    // Answers nothing: HYN_E_NOINTERFACE, `ppv` untouched. Component classes override it. [any]
    virtual HynResult DefaultQueryInterface(const HYN_GUID& iid, void** ppv);

private:
    LockCounter<CHynLock> m_count;
};

// The answer of a component to a query: the identifier is tested first, in the order given, then the pointers; on
// success `*ppv` is `self` with one reference more. HYN_E_NOINTERFACE, HYN_E_POINTER as in IHynUnknown. [any]
template <const HYN_GUID*... identifiers>
HynResult HynAnswerInterface(IHynUnknown* self, const HYN_GUID& iid, void** ppv)
{
    if (!((iid == *identifiers) || ...))
        return HYN_E_NOINTERFACE;
    if (self == nullptr || ppv == nullptr)
        return HYN_E_POINTER;
    *ppv = self;
    self->AddRef();
    return HYN_S_OK;
}

// Other binaries rely on these.
static_assert(sizeof(void*) != 8 || sizeof(LockCounter<CHynLock>) == 16);
static_assert(sizeof(void*) != 8 || sizeof(CHynUnknown) == 24);
} // namespace Halyon
