// Says so when a call of the module takes long because another program holds the database.
//
// The module waits by itself, up to about 100 seconds, and cannot be asked to stop. An object of this class around such
// a call tells the user after a second what is waited for, and ends the program when the user interrupts it meanwhile:
// what waits for its lock has nothing open, so nothing is lost. Not around calls that may hold a lock already.
#pragma once

#include <condition_variable>
#include <functional>
#include <string>
#include <thread>

#include <halyon/platform/TovMutex.h>

namespace HynHost
{
class BusyNotice
{
public:
    // `onWait` runs once, on another thread, when the wait gets long; `onInterrupted` before the program ends.
    BusyNotice(std::function<void()> onWait, std::function<void()> onInterrupted);
    ~BusyNotice();
    BusyNotice(const BusyNotice&) = delete;
    BusyNotice& operator=(const BusyNotice&) = delete;

private:
    void Watch();

    std::function<void()> m_onWait;
    std::function<void()> m_onInterrupted;
    Halyon::TovMutex m_mutex;
    std::condition_variable_any m_changed;
    bool m_done HYN_GUARDED_BY(m_mutex) = false;
    std::thread m_thread;
};
} // namespace HynHost
