#include <host/FunctionWorker.h>

#include <utility>

#include <host/Events.h>

using Halyon::CHynWorkerThread;
using Halyon::IHynEventParam;

namespace HynHost
{
namespace
{
constexpr std::uint32_t kRun = 0x4852756E; // "HRun"

using Job = Carried<std::function<void()>>;

class RunningThread : public CHynWorkerThread
{
public:
    RunningThread(const char* name, std::function<void()> atEnd)
        : CHynWorkerThread(65535, name), m_atEnd(std::move(atEnd))
    {
    }
    ~RunningThread() override { CHynWorkerThread::Stop(); }

    void ExitThread() override
    {
        if (m_atEnd)
            m_atEnd();
    }

private:
    std::function<void()> m_atEnd;
};
} // namespace

FunctionWorker::FunctionWorker(Halyon::CHynThreadManager& manager, const char* name, std::function<void()> atEnd)
    : m_spThread(new RunningThread(name, std::move(atEnd)))
{
    RequireThread(m_spThread->RegisterHandler(
        new FunctionHandler(kRun, [](std::uint32_t, IHynEventParam* job) { static_cast<Job&>(*job).value(); }), this));
    int started = 0;
    RequireThread(m_spThread->Start(&manager, &started));
}

void FunctionWorker::Post(std::function<void()> function)
{
    const Halyon::CHynAutoPtr<Job> spJob = new Job(std::move(function));
    PostSurely(*m_spThread, kRun, 0, spJob, this);
}
} // namespace HynHost
