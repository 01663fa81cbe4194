// Critical sections: the owner's thread identifier in a word that the kernel can wait on.

#include <halyon/platform/TovPCMac.h>

#include "Futex.h"
#include "ThreadIdentity.h"

#include <sys/single_threaded.h>

using Halyon::Linux::Deadline;
using Halyon::Linux::FutexWait;
using Halyon::Linux::FutexWake;

namespace
{
// Set beside the owner's identifier when somebody may be asleep on the word. Identifiers have at most 22 bits.
constexpr std::uint32_t kHasWaiters = 0x80000000u;

// True while the process has one thread, so that nobody can come between a load and a store. The C library ends that
// before a second thread begins, and the second thread sees what the first has stored until then.
bool IsAlone() noexcept
{
    return __libc_single_threaded != 0;
}

// Apart, so that the way in without contention stays short.
[[gnu::noinline]] void EnterContended(std::uint32_t* word, std::uint32_t self) noexcept
{
    const std::atomic_ref owner(*word);
    // No look before sleeping: a thread that waits at once leaves the section to the one that is in, which then runs on
    // with the section's memory to itself.
    const Deadline never(kTovForever);
    for (;;)
    {
        std::uint32_t seen = owner.load(std::memory_order_relaxed);
        if (seen == 0)
        {
            // Others may be asleep beside this thread, so the mark is kept.
            if (owner.compare_exchange_weak(seen, self | kHasWaiters, std::memory_order_acquire,
                                            std::memory_order_relaxed))
                return;
            continue;
        }
        const std::uint32_t marked = seen | kHasWaiters;
        if (seen == marked || owner.compare_exchange_weak(seen, marked, std::memory_order_relaxed))
            FutexWait(word, marked, never);
    }
}
} // namespace

void TovInitCriticalSection(TovCriticalSection* pSection) noexcept
{
    *pSection = {0, 0};
}

void TovDeleteCriticalSection(TovCriticalSection* /*pSection*/) noexcept {}

void TovEnterCriticalSection(TovCriticalSection* pSection) noexcept HYN_UNCHECKED
{
    const std::uint32_t self = Halyon::Linux::ThreadID();
    const std::atomic_ref owner(pSection->uOwner);
    std::uint32_t seen = 0;
    if (IsAlone())
    {
        seen = owner.load(std::memory_order_relaxed);
        if (seen == 0)
        {
            owner.store(self, std::memory_order_relaxed);
            return;
        }
    }
    else if (owner.compare_exchange_strong(seen, self, std::memory_order_acquire, std::memory_order_relaxed))
    {
        return;
    }
    if ((seen & ~kHasWaiters) == self)
    {
        ++pSection->uDepth;
        return;
    }
    EnterContended(&pSection->uOwner, self);
}

void TovLeaveCriticalSection(TovCriticalSection* pSection) noexcept HYN_UNCHECKED
{
    if (pSection->uDepth != 0)
    {
        --pSection->uDepth;
        return;
    }
    const std::atomic_ref owner(pSection->uOwner);
    if (IsAlone())
    {
        owner.store(0, std::memory_order_relaxed);
        return;
    }
    // The section may be destroyed by the next owner as soon as the word is 0; only its address is used after that.
    const std::uint32_t* word = &pSection->uOwner;
    const std::uint32_t seen = owner.exchange(0, std::memory_order_release);
    if ((seen & kHasWaiters) != 0)
        FutexWake(word, 1);
}
