#include <halyon/thread/CHynMainThread.h>

namespace Halyon
{
namespace
{
constexpr std::int32_t kCapacity = 65535;
constexpr EventTimerInterval kFirstTickSeconds = 0.0;
constexpr EventTimerInterval kTickSeconds = 0.01;
constexpr std::uint32_t kQuitEventID = 0;
} // namespace

CHynMainThread::CHynMainThread(std::uint32_t uThreadID) : CHynEventThread(kCapacity), m_uThreadID(uThreadID) {}

CHynMainThread::~CHynMainThread()
{
    RemoveEventLoopTimer(m_timer);
    MPDeleteQueue(m_notifications);
}

HynResult CHynMainThread::DefaultQueryInterface(const HYN_GUID& iid, void** ppv)
{
    return AnswerThreadInterface(iid, ppv);
}

HynResult CHynMainThread::Start(IHynThreadManager* /*pManager*/, int* /*pStarted*/)
{
    if (m_timer != nullptr)
        return HYN_S_OK;
    if (GetCurrentTovThreadID() == m_uThreadID)
        m_queue.Adopt();
    if (m_notifications == nullptr && MPCreateQueue(&m_notifications) != noErr)
        return HYN_E_FAIL;
    const OSStatus status =
        InstallEventLoopTimer(GetMainEventLoop(), kFirstTickSeconds, kTickSeconds, TimerProc, this, &m_timer);
    return status == noErr ? HYN_S_OK : HYN_E_FAIL;
}

HynResult CHynMainThread::Stop()
{
    return HYN_E_NOINTERFACE;
}

HynResult CHynMainThread::Run()
{
    return HYN_S_OK;
}

HynResult CHynMainThread::SetPriority(int /*nPriority*/)
{
    return HYN_E_NOINTERFACE;
}

HynResult CHynMainThread::PostEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam,
                                    IHynEventParam* pParam, void* pReceiver)
{
    if (dwEventID == kQuitEventID)
    {
        QuitApplicationEventLoop();
        return HYN_S_OK;
    }
    static constexpr std::atomic<std::int32_t> kNeverClosed{0};
    if (m_queue.InsertEventUnless(kNeverClosed, {dwEventID, pReceiver, uParam, lParam, pParam}, 0) < 0)
        return HYN_E_FAIL;
    MPNotifyQueue(m_notifications, nullptr, nullptr, nullptr);
    return HYN_S_OK;
}

HynResult CHynMainThread::SendEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam,
                                    IHynEventParam* pParam, void* pReceiver)
{
    if (GetCurrentTovThreadID() != m_uThreadID)
        return HYN_E_NOINTERFACE;
    return m_queue.Invoke(dwEventID, uParam, lParam, pParam, pReceiver);
}

HynResult CHynMainThread::ProcessEvent()
{
    m_queue.ProcessNext();
    return HYN_S_OK;
}

MPQueueID CHynMainThread::GetQueueID()
{
    return m_notifications;
}

void TimerProc(EventLoopTimerRef /*timer*/, void* pMainThread)
{
    auto* mainThread = static_cast<CHynMainThread*>(pMainThread);
    if (mainThread == nullptr)
        return;
    if (MPWaitOnQueue(mainThread->GetQueueID(), nullptr, nullptr, nullptr, 0) == noErr)
        mainThread->ProcessEvent();
}
} // namespace Halyon
