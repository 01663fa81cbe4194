// A pointer that owns one reference on a component.
//
// For every reference that outlives a statement. Not for parameters: a raw pointer argument borrows.
//
//     CHynAutoPtr<IHynSQCommand> spCommand;
//     HynResult result = pConnection->CreateCommand(spCommand.Receive());
//
// One CHynAutoPtr is not protected against use from two threads; the count of the object it holds is.
#pragma once

#include <halyon/framework/HynUnit.h>

namespace Halyon
{
template <class T>
class CHynAutoPtr
{
public:
    CHynAutoPtr() noexcept = default;

    // Takes a reference on `p`, which may be null.
    CHynAutoPtr(T* p) : m_p(p)
    {
        if (m_p != nullptr)
            m_p->AddRef();
    }

    // Takes a reference of its own on what `other` holds.
    CHynAutoPtr(const CHynAutoPtr& other) : CHynAutoPtr(other.m_p) {}

    // Takes over the reference of `other`, which is empty afterwards.
    CHynAutoPtr(CHynAutoPtr&& other) noexcept : m_p(other.Detach()) {}

    ~CHynAutoPtr()
    {
        if (m_p != nullptr)
            m_p->Release();
    }

    // Holds `p` from now on. The old pointer is released before the new one is added to, deliberately: a holder that
    // owns the last reference destroys its object before it touches the next. The pointer already held changes no
    // count.
    CHynAutoPtr& operator=(T* p)
    {
        if (p == m_p)
            return *this;
        if (m_p != nullptr)
            m_p->Release();
        m_p = p;
        if (m_p != nullptr)
            m_p->AddRef();
        return *this;
    }

    CHynAutoPtr& operator=(const CHynAutoPtr& other)
    {
        if (this != &other)
            *this = other.m_p;
        return *this;
    }

    CHynAutoPtr& operator=(CHynAutoPtr&& other) noexcept
    {
        if (this != &other)
            Attach(other.Detach());
        return *this;
    }

    operator T*() const noexcept { return m_p; }

    // Requires: not empty.
    T* operator->() const noexcept { return m_p; }

    // Empties the holder, releasing what it held, and returns the address for an out parameter that hands over one
    // reference.
    T** Receive()
    {
        *this = nullptr;
        return &m_p;
    }

    // Takes over a reference that the caller owns, releasing what was held.
    void Attach(T* p)
    {
        T* old = m_p;
        m_p = p;
        if (old != nullptr)
            old->Release();
    }

    // Gives the held reference to the caller; empty afterwards. Null when it was empty.
    [[nodiscard]] T* Detach() noexcept
    {
        T* p = m_p;
        m_p = nullptr;
        return p;
    }

private:
    T* m_p = nullptr;
};

static_assert(sizeof(CHynAutoPtr<int>) == sizeof(void*));
} // namespace Halyon
