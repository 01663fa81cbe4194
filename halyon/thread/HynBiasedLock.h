// A re-entrant lock that costs its owner, one thread, next to nothing.
//
// For state that one thread uses all the time and others now and then, like the consumer's end of an event queue. Not
// for state that is shared evenly: to every thread but the owner it is dearer than a CHynLock.
//
// The owner announces that it is inside with a plain store and looks whether anybody has claimed the lock. Another
// thread claims first, lets every thread of the process pass a fence, and looks afterwards: so either the owner sees
// the claim, or the claimant sees the owner. Where the system has no such fence the owner makes one itself.
#pragma once

#include <atomic>

#include <halyon/framework/HynLock.h>

namespace Halyon
{
class HYN_LOCK HynBiasedLock
{
public:
    HynBiasedLock() noexcept = default;
    HynBiasedLock(const HynBiasedLock&) = delete;
    HynBiasedLock& operator=(const HynBiasedLock&) = delete;

    // Makes the calling thread the owner; before the first call nobody is. Requires: the thread does not hold the lock,
    // and the owner before it never uses the lock again. [any]
    void Adopt() noexcept;

    // Nobody is the owner any more. An owner that ends calls it first: the system may give its identifier to another
    // thread at once. Requires: the thread does not hold the lock. [owner]
    void Disown() noexcept { m_uOwner.store(0, std::memory_order_relaxed); }

    // Waits until no other thread holds the lock, then takes it; the thread that holds it may take it again. [any]
    void Lock() noexcept HYN_ACQUIRE() HYN_UNCHECKED
    {
        if (GetCurrentTovThreadID() == m_uOwner.load(std::memory_order_relaxed))
            EnterAsOwner();
        else
            Claim();
    }

    // Gives it back once. Requires: the calling thread holds it. [any]
    void Unlock() noexcept HYN_RELEASE() HYN_UNCHECKED
    {
        if (GetCurrentTovThreadID() == m_uOwner.load(std::memory_order_relaxed))
            LeaveAsOwner();
        else
            EndClaim();
    }

private:
    void EnterAsOwner() noexcept
    {
        if (m_uDepth++ != 0)
            return;
        SetInside(1);
        if (m_nClaims.load() != 0)
            WaitForClaims();
    }

    void LeaveAsOwner() noexcept
    {
        if (--m_uDepth != 0)
            return;
        SetInside(0);
        if (m_nClaims.load() != 0)
            WakeClaimant();
    }

    // Before a look at the claims. The claimant's fence spares this side its own; all that must be kept is the order in
    // which the compiler leaves the two.
    void SetInside(std::int32_t nInside) noexcept
    {
        if (!TovCanFenceThreads())
        {
            m_nInside.exchange(nInside);
            return;
        }
        m_nInside.store(nInside, std::memory_order_release);
        std::atomic_signal_fence(std::memory_order_seq_cst);
    }

    void WakeClaimant() noexcept;
    void WaitForClaims() noexcept;
    void Claim() noexcept HYN_ACQUIRE(m_claimLock);
    void EndClaim() noexcept HYN_RELEASE(m_claimLock);

    std::atomic<std::uint32_t> m_uOwner{0};
    std::atomic<std::int32_t> m_nInside{0}; // whether the owner is inside, or about to look for claims
    std::atomic<std::int32_t> m_nClaims{0}; // changed under m_claimLock
    std::uint32_t m_uDepth = 0;             // of the owner; nobody else looks at it
    CHynLock m_claimLock;                   // held by the claimant while it holds this lock
};
} // namespace Halyon
