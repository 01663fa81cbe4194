// A worker thread that runs the functions that are posted to it, one after the other.
#pragma once

#include <functional>

#include <halyon/thread/CHynThreadManager.h>
#include <halyon/thread/CHynWorkerThread.h>

namespace HynHost
{
class FunctionWorker
{
public:
    // Starts it. `atEnd` runs last, on the thread. Throws HostError when it cannot be started. [any]
    FunctionWorker(Halyon::CHynThreadManager& manager, const char* name, std::function<void()> atEnd = {});
    ~FunctionWorker() { Stop(); }
    FunctionWorker(const FunctionWorker&) = delete;
    FunctionWorker& operator=(const FunctionWorker&) = delete;

    // Waits for the function that runs; those that were posted behind it do not run. Once is enough. [any other]
    void Stop() { m_spThread->Stop(); }

    // `function` throws nothing; it is dropped when the worker has been stopped. [any]
    void Post(std::function<void()> function);

    [[nodiscard]] Halyon::CHynWorkerThread& Thread() noexcept { return *m_spThread; }

private:
    Halyon::CHynAutoPtr<Halyon::CHynWorkerThread> m_spThread;
};
} // namespace HynHost
