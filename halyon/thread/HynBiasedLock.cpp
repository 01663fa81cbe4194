#include <halyon/thread/HynBiasedLock.h>

namespace Halyon
{
void HynBiasedLock::Adopt() noexcept
{
    Claim();
    m_uOwner.store(GetCurrentTovThreadID(), std::memory_order_relaxed);
    EndClaim();
}

void HynBiasedLock::WakeClaimant() noexcept
{
    // Once more, with a fence: a claimant that falls asleep sees that the owner has left, or is seen here.
    m_nInside.exchange(0);
    m_nInside.notify_all();
}

// The owner steps back, and comes in again while no claim can be made.
void HynBiasedLock::WaitForClaims() noexcept
{
    WakeClaimant();
    const CHynAutoLock noClaims(m_claimLock);
    m_nInside.store(1, std::memory_order_relaxed);
}

void HynBiasedLock::Claim() noexcept
{
    m_claimLock.Lock();
    m_nClaims.fetch_add(1);
    TovFenceThreads();
    m_nInside.wait(1);
}

void HynBiasedLock::EndClaim() noexcept
{
    m_nClaims.fetch_sub(1);
    m_claimLock.Unlock();
}
} // namespace Halyon
