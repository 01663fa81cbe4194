// Posted events, dispatched through the worker's observer table.

#include <halyon/thread/CHynEventHandler.h>
#include <halyon/thread/CHynWorkerThread.h>

#include "Channel.h"

using namespace Halyon;

namespace Bench
{
namespace
{
constexpr std::uint32_t kEventID = 1;

class SinkHandler : public CHynEventHandler
{
public:
    explicit SinkHandler(Sink& sink) : CHynEventHandler(kEventID), m_sink(sink) {}

    HynResult HandleEvent(std::uint32_t, std::int32_t, IHynEventParam* pParam) override
    {
        m_sink.Handle(*static_cast<Payload*>(pParam));
        return HYN_S_EVENT_HANDLED;
    }

private:
    Sink& m_sink;
};

class HalyonChannel final : public Channel
{
public:
    void Start(Sink& sink) override
    {
        // Nothing may be lost here, however far the producers run ahead.
        m_worker = new CHynWorkerThread(INT32_MAX);
        m_handler = new SinkHandler(sink);
        m_worker->RegisterHandler(m_handler, nullptr);
        int started = 0;
        m_worker->Start(nullptr, &started);
    }
    void Post(PayloadPtr payload) override { m_worker->PostEvent(kEventID, 0, 0, payload.get(), nullptr); }
    void Stop() override { m_worker->Stop(); }

private:
    CHynAutoPtr<CHynWorkerThread> m_worker;
    CHynAutoPtr<SinkHandler> m_handler;
};
} // namespace

std::unique_ptr<Channel> MakeHalyon()
{
    return std::make_unique<HalyonChannel>();
}
} // namespace Bench
