#include <host/BusyNotice.h>

#include <chrono>
#include <utility>

#include <unistd.h>

#include <host/Interrupt.h>

namespace HynHost
{
using namespace std::chrono_literals;

BusyNotice::BusyNotice(std::function<void()> onWait, std::function<void()> onInterrupted)
    : m_onWait(std::move(onWait)), m_onInterrupted(std::move(onInterrupted)), m_thread(&BusyNotice::Watch, this)
{
}

BusyNotice::~BusyNotice()
{
    {
        const Halyon::TovMutexLock lock(m_mutex);
        m_done = true;
    }
    m_changed.notify_one();
    m_thread.join();
}

void BusyNotice::Watch()
{
    const auto start = std::chrono::steady_clock::now();
    bool told = false;
    const Halyon::TovMutexLock lock(m_mutex);
    while (!m_changed.wait_for(m_mutex, 100ms, [this]() HYN_REQUIRES(m_mutex) { return m_done; }))
    {
        if (!told && std::chrono::steady_clock::now() - start >= 1s)
        {
            m_onWait();
            told = true;
        }
        if (Interrupt::Requested())
        {
            m_onInterrupted();
            _exit(Interrupt::kExitStatus);
        }
    }
}
} // namespace HynHost
