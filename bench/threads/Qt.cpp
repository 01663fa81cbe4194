// Posted events and queued calls of a thread with an event loop.

#include <QCoreApplication>
#include <QEvent>
#include <QThread>

#include "Channel.h"

namespace Bench
{
namespace
{
class PayloadEvent final : public QEvent
{
public:
    explicit PayloadEvent(PayloadPtr payload) : QEvent(QEvent::User), spPayload(std::move(payload)) {}
    PayloadPtr spPayload;
};

class Receiver final : public QObject
{
public:
    explicit Receiver(Sink& sink) : m_sink(sink) {}
    void Handle(Payload& payload) { m_sink.Handle(payload); }

protected:
    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        Handle(*static_cast<PayloadEvent*>(event)->spPayload);
        return true;
    }

private:
    Sink& m_sink;
};

class QtChannel : public Channel
{
public:
    void Start(Sink& sink) override
    {
        m_receiver = std::make_unique<Receiver>(sink);
        m_receiver->moveToThread(&m_thread);
        m_thread.start();
    }
    void Stop() override
    {
        m_thread.quit();
        m_thread.wait();
    }

protected:
    std::unique_ptr<Receiver> m_receiver;
    QThread m_thread;
};

class QtPostChannel final : public QtChannel
{
public:
    void Post(PayloadPtr payload) override
    {
        QCoreApplication::postEvent(m_receiver.get(), new PayloadEvent(std::move(payload)));
    }
};

class QtQueuedChannel final : public QtChannel
{
public:
    void Post(PayloadPtr payload) override
    {
        // The call is copied into the queue, so it carries the bare pointer and its one reference.
        QMetaObject::invokeMethod(
            m_receiver.get(),
            [receiver = m_receiver.get(), raw = payload.release()]
            {
                const PayloadPtr owned(raw);
                receiver->Handle(*owned);
            },
            Qt::QueuedConnection);
    }
};
} // namespace

std::unique_ptr<Channel> MakeQtPostEvent()
{
    return std::make_unique<QtPostChannel>();
}

std::unique_ptr<Channel> MakeQtQueued()
{
    return std::make_unique<QtQueuedChannel>();
}
} // namespace Bench
