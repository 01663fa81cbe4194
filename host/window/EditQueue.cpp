#include <host/window/EditQueue.h>

#include <utility>

#include <halyon/platform/TovPCMac.h>
#include <host/window/SharedCatalog.h>

namespace HynHost
{
namespace
{
constexpr std::uint32_t kTryAgainMilliseconds = 2;
} // namespace

void EditQueue::Post(Edit edit)
{
    {
        const Halyon::TovMutexLock lock(m_mutex);
        m_edits.push_back(std::move(edit));
        if (m_edits.size() > 1)
            return; // it is on its way
    }
    m_writer.Post([this] { Run(); });
}

EditQueue::Edit EditQueue::First()
{
    const Halyon::TovMutexLock lock(m_mutex);
    return m_edits.empty() ? Edit() : m_edits.front();
}

void EditQueue::DoAll()
{
    while (const Edit edit = First())
    {
        edit();
        Edit done;
        const Halyon::TovMutexLock lock(m_mutex);
        done = std::move(m_edits.front());
        m_edits.pop_front();
    }
}

// Behind what else the writer has to do, it tries again.
void EditQueue::Run() noexcept
{
    try
    {
        DoAll();
    }
    catch (const Stopped&)
    {
        TovSleep(kTryAgainMilliseconds);
        m_writer.Post([this] { Run(); });
    }
}

void EditQueue::Finish() noexcept
{
    try
    {
        DoAll();
    }
    catch (const Stopped&)
    {
    }
    const Halyon::TovMutexLock lock(m_mutex);
    m_edits.clear();
}
} // namespace HynHost
