#include <halyon/thread/CHynThread.h>

#include <cstring>

namespace Halyon
{
namespace
{
constexpr int kUsualPriority = 0;
constexpr int kPatientPriority = -2;
} // namespace

CHynThread::CHynThread(std::int32_t nCapacity, const char* pszName) : CHynEventThread(nCapacity)
{
    if (pszName != nullptr)
        std::strncpy(m_szName, pszName, sizeof m_szName - 1);
}

CHynThread::~CHynThread()
{
    CHynThread::Stop();
}

HynResult CHynThread::DefaultQueryInterface(const HYN_GUID& iid, void** ppv)
{
    return AnswerThreadInterface(iid, ppv);
}

void CHynThread::InitThread() {}

void CHynThread::ExitThread() {}

HynResult CHynThread::Start(IHynThreadManager* pManager, int* pStarted)
{
    if (pStarted == nullptr)
        return HYN_E_POINTER;
    {
        const CHynAutoLock lock(m_lock);
        *pStarted = 0;
        const HynResult result = CheckExitFlag() == 0 ? HYN_E_THREADRUNNING : CreateThread();
        if (HynFailed(result))
        {
            // Also when the thread runs, deliberately: a second Start leaves it deaf, and only Stop is of use then.
            CloseHandles();
            return result;
        }
        m_bKnown = pManager == nullptr || HynSucceeded(pManager->RegisterThread(this));
        if (m_bKnown)
        {
            m_spManager = pManager;
            TovSetThreadPriority(m_thread, kPatientPriority);
            *pStarted = 1;
            return HYN_S_OK;
        }
    }
    // Nobody would find the thread: it ends before its first step, without the lock that it waits for.
    CHynThread::Stop();
    return HYN_E_FAIL;
}

// Makes the event and the thread, and waits until the thread has made its identifier known.
HynResult CHynThread::CreateThread()
{
    m_event = TovCreateEvent(0, 0);
    m_identified = TovCreateEvent(0, 0);
    if (m_event == 0 || m_identified == 0)
        return HYN_E_THREADNOEVENT;
    m_nMayBeAsleep = 0;
    m_nExit = 0;
    m_thread = TovCreateThread(ThreadProc, this, 0, 0);
    // The exit flag stays 0 when there is no thread, deliberately: a later Start finds the object running.
    if (m_thread == 0)
        return HYN_E_THREADNOTHREAD;
    m_body = m_thread.load();
    TovWaitEvent(m_identified, kTovForever);
    return HYN_S_OK;
}

// The thread's reference itself is kept for Stop, which must be able to wait in every case.
void CHynThread::CloseHandles()
{
    TovCloseEvent(m_event.exchange(0));
    TovCloseEvent(m_identified.exchange(0));
    m_thread = 0;
}

std::uint32_t CHynThread::ThreadProc(void* pThread)
{
    auto* thread = static_cast<CHynThread*>(pThread);
    thread->m_uThreadID.store(GetCurrentTovThreadID(), std::memory_order_release);
    if (thread->m_szName[0] != 0)
        TovSetCurrentThreadName(thread->m_szName);
    TovSetEvent(thread->m_identified);
    bool bKnown = false;
    {
        // Start holds the lock until the thread is registered: InitThread can rely on that.
        const CHynAutoLock started(thread->m_lock);
        bKnown = thread->m_bKnown;
    }
    if (bKnown)
        thread->Run();
    return 0;
}

HynResult CHynThread::Run()
{
    m_queue.Adopt();
    InitThread();
    while (CheckExitFlag() == 0)
    {
        // Announced first and looked at afterwards: a post either sees the announcement and signals, or is seen here.
        m_nMayBeAsleep.store(1);
        const TovEventRef event = m_event;
        const bool pending = event != 0 && !m_queue.IsEmpty();
        if (!pending && TovWaitEvent(event, kTovForever) != 0)
            continue;
        m_nMayBeAsleep.store(0);
        Drain();
    }
    ExitThread();
    m_queue.Disown();
    return HYN_S_OK;
}

void CHynThread::Drain()
{
    m_nBusy.store(1, std::memory_order_release);
    while (m_queue.ProcessNext() == 1 && CheckExitFlag() == 0)
    {
    }
    m_nBusy.store(0, std::memory_order_release);
}

HynResult CHynThread::Stop()
{
    if (CheckExitFlag() != 0)
        return HYN_S_OK;
    if (GetCurrentTovThreadID() == m_uThreadID.load(std::memory_order_acquire))
        return HYN_E_NOINTERFACE;
    m_nExit = 1;
    TovSetEvent(m_event);
    TovWaitThread(m_body, kTovForever);
    if (m_spManager != nullptr)
    {
        m_spManager->UnRegisterThread(this);
        m_spManager = nullptr;
    }
    m_queue.ClearQueue();
    CloseHandles();
    TovCloseThreadRef(m_body.exchange(0));
    m_uThreadID = 0;
    return HYN_S_OK;
}

HynResult CHynThread::SetPriority(int nPriority)
{
    const TovThreadRef thread = m_thread;
    if (thread == 0)
        return HYN_E_FAIL;
    if (nPriority > 100)
        TovSetThreadPriority(thread, kUsualPriority);
    else if (nPriority < 10)
        TovSetThreadPriority(thread, kPatientPriority);
    return HYN_S_OK;
}

HynResult CHynThread::PostEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam,
                                IHynEventParam* pParam, void* pReceiver)
{
    return PostEventEx(dwEventID, uParam, lParam, pParam, pReceiver, 0);
}

HynResult CHynThread::PostEventEx(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam,
                                  IHynEventParam* pParam, void* pReceiver, int bFront)
{
    const int inserted = m_queue.InsertEventUnless(m_nExit, {dwEventID, pReceiver, uParam, lParam, pParam}, bFront);
    if (inserted < 0)
        return inserted == -1 ? HYN_E_THREADNOTRUNNING : HYN_E_FAIL;
    // One signal wakes the thread for everything that is posted until it sleeps again.
    if (m_nMayBeAsleep.load() != 0 && m_nMayBeAsleep.exchange(0) != 0)
        TovSetEvent(m_event);
    return HYN_S_OK;
}

HynResult CHynThread::SendEvent(std::uint32_t dwEventID, std::uint32_t uParam, std::int32_t lParam,
                                IHynEventParam* pParam, void* pReceiver)
{
    if (CheckExitFlag() != 0)
        return HYN_E_THREADNOTRUNNING;
    if (GetCurrentTovThreadID() != GetThreadID())
        return HYN_E_NOINTERFACE;
    return m_queue.Invoke(dwEventID, uParam, lParam, pParam, pReceiver);
}
} // namespace Halyon
