#include <host/Interrupt.h>

#include <atomic>

namespace HynHost
{
namespace
{
constexpr std::array kSignals = {SIGINT, SIGTERM};
std::atomic<bool> g_requested = false;
static_assert(std::atomic<bool>::is_always_lock_free); // a signal handler stores it

void OnSignal(int)
{
    g_requested.store(true);
}
} // namespace

Interrupt::Interrupt()
{
    for (std::size_t i = 0; i < kSignals.size(); ++i)
    {
        struct sigaction action = {};
        action.sa_handler = &OnSignal;
        action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
        sigaction(kSignals[i], &action, &m_before[i]);
        if (m_before[i].sa_handler == SIG_IGN) // as in the background of a shell: stays ignored
            sigaction(kSignals[i], &m_before[i], nullptr);
    }
}

Interrupt::~Interrupt()
{
    for (std::size_t i = 0; i < kSignals.size(); ++i)
        sigaction(kSignals[i], &m_before[i], nullptr);
}

bool Interrupt::Requested() noexcept
{
    return g_requested.load(std::memory_order_relaxed);
}
} // namespace HynHost
