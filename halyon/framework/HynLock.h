// A re-entrant lock as an object, and the guard that holds it for a scope.
//
// For a component that must keep several threads out of a few fields. Not for waiting on something to happen: that is
// what the events of TovPCMac.h are for.
#pragma once

#include <halyon/platform/TovPCMac.h>

namespace Halyon
{
// Owns one critical section of the platform. The thread that holds it may take it again, and gives it back as often.
class HYN_LOCK CHynLock
{
public:
    CHynLock() noexcept { TovInitCriticalSection(&m_section); }
    ~CHynLock() { TovDeleteCriticalSection(&m_section); }
    CHynLock(const CHynLock&) = delete;
    CHynLock& operator=(const CHynLock&) = delete;

    // Waits until no other thread holds the lock, then takes it. [any]
    void Lock() noexcept HYN_ACQUIRE() HYN_UNCHECKED { TovEnterCriticalSection(&m_section); }

    // Gives it back once. Requires: the calling thread holds it. [any]
    void Unlock() noexcept HYN_RELEASE() HYN_UNCHECKED { TovLeaveCriticalSection(&m_section); }

private:
    TovCriticalSection m_section;
};

// Holds a lock from construction to the end of the scope, however the scope ends.
template <class TLock>
class HYN_SCOPED_LOCK CHynAutoLock
{
public:
    explicit CHynAutoLock(TLock& lock) noexcept HYN_ACQUIRE(lock) : m_lock(lock) { m_lock.Lock(); }
    ~CHynAutoLock() HYN_RELEASE() { m_lock.Unlock(); }
    CHynAutoLock(const CHynAutoLock&) = delete;
    CHynAutoLock& operator=(const CHynAutoLock&) = delete;

private:
    TLock& m_lock;
};

static_assert(sizeof(CHynLock) == sizeof(TovCriticalSection));
} // namespace Halyon
