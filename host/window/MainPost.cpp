#include <host/window/MainPost.h>

#include <chrono>
#include <deque>
#include <utility>

#include <halyon/platform/TovMutex.h>
#include <host/Events.h>

using Halyon::IHynEventParam;

namespace HynHost
{
namespace
{
constexpr std::uint32_t kDeliver = 0x484C6962; // "HLib"

// A frame of the window stays whole with this and what the functions themselves take.
constexpr auto kLongestDelivery = std::chrono::milliseconds(4);
} // namespace

// Outlives its owner while a function runs that ends it.
class MainPost::Box
{
public:
    explicit Box(Halyon::CHynThreadManager& manager) { RequireThread(manager.GetMainThread(m_spMain.Receive())); }

    void Add(std::function<void()> function)
    {
        const Halyon::TovMutexLock lock(m_mutex);
        if (m_closed)
            return;
        m_functions.push_back(std::move(function));
        if (m_functions.size() == 1)
            Announce();
    }

    void Close()
    {
        std::deque<std::function<void()>> dropped;
        const Halyon::TovMutexLock lock(m_mutex);
        m_closed = true;
        dropped.swap(m_functions);
    }

    void Deliver()
    {
        const auto end = std::chrono::steady_clock::now() + kLongestDelivery;
        while (const auto function = Next())
        {
            function();
            if (!Done(std::chrono::steady_clock::now() >= end))
                return;
        }
    }

private:
    // The first one, which stays in the list until it is done, so that meanwhile nobody announces another delivery.
    std::function<void()> Next()
    {
        const Halyon::TovMutexLock lock(m_mutex);
        return m_functions.empty() ? std::function<void()>() : m_functions.front();
    }

    // Returns whether to go on.
    bool Done(bool pause)
    {
        std::function<void()> done;
        const Halyon::TovMutexLock lock(m_mutex);
        if (m_closed || m_functions.empty())
            return false;
        done = std::move(m_functions.front());
        m_functions.pop_front();
        if (pause && !m_functions.empty())
            Announce();
        return !pause;
    }

    void Announce() HYN_REQUIRES(m_mutex) { PostSurely(*m_spMain, kDeliver, 0, nullptr, this); }

    Halyon::CHynAutoPtr<Halyon::IHynThread> m_spMain;
    Halyon::TovMutex m_mutex;
    bool m_closed HYN_GUARDED_BY(m_mutex) = false;
    std::deque<std::function<void()>> m_functions HYN_GUARDED_BY(m_mutex);
};

MainPost::MainPost(Halyon::CHynThreadManager& manager)
    : m_box(std::make_shared<Box>(manager)), m_manager(manager),
      m_spHandler(new FunctionHandler(kDeliver, [box = m_box](std::uint32_t, IHynEventParam*) { box->Deliver(); }))
{
    RequireThread(m_manager.RegisterHandler(m_spHandler, m_box.get()));
}

MainPost::~MainPost()
{
    m_box->Close();
    m_manager.UnRegisterHandler(m_spHandler, m_box.get());
}

void MainPost::Post(std::function<void()> function)
{
    m_box->Add(std::move(function));
}
} // namespace HynHost
