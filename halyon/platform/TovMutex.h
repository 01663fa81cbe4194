// A std::mutex whose use a compiler can check (TovThreadSafety.h).
//
// For state that one source keeps to itself, also before and after main. Not re-entrant: an object whose calls may meet
// on one thread has a critical section.
#pragma once

#include <mutex>

#include <halyon/platform/TovThreadSafety.h>

namespace Halyon
{
class HYN_LOCK TovMutex
{
public:
    constexpr TovMutex() noexcept = default;
    TovMutex(const TovMutex&) = delete;
    TovMutex& operator=(const TovMutex&) = delete;

    // Named as the standard library's condition variables expect.
    void lock() HYN_ACQUIRE() HYN_UNCHECKED { m_mutex.lock(); }
    void unlock() HYN_RELEASE() HYN_UNCHECKED { m_mutex.unlock(); }

private:
    std::mutex m_mutex;
};

// Holds a TovMutex from construction to the end of the scope.
class HYN_SCOPED_LOCK TovMutexLock
{
public:
    explicit TovMutexLock(TovMutex& mutex) HYN_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.lock(); }
    ~TovMutexLock() HYN_RELEASE() { m_mutex.unlock(); }
    TovMutexLock(const TovMutexLock&) = delete;
    TovMutexLock& operator=(const TovMutexLock&) = delete;

private:
    TovMutex& m_mutex;
};
} // namespace Halyon
