// A mutex, a condition variable and a deque that the worker takes whole; and the queue made for speed alone.

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include <blockingconcurrentqueue.h>

#include "Channel.h"

namespace Bench
{
namespace
{
class TextbookChannel final : public Channel
{
public:
    void Start(Sink& sink) override
    {
        m_thread = std::jthread(
            [this, &sink]
            {
                for (;;)
                {
                    std::deque<PayloadPtr> batch;
                    {
                        std::unique_lock lock(m_mutex);
                        m_changed.wait(lock, [this] { return !m_pending.empty() || m_stop; });
                        if (m_pending.empty())
                            return;
                        batch.swap(m_pending);
                    }
                    for (const PayloadPtr& payload : batch)
                        sink.Handle(*payload);
                }
            });
    }
    void Post(PayloadPtr payload) override
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_pending.push_back(std::move(payload));
        }
        m_changed.notify_one();
    }
    void Stop() override
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_stop = true;
        }
        m_changed.notify_one();
        m_thread.join();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<PayloadPtr> m_pending;
    bool m_stop = false;
    std::jthread m_thread;
};

class MoodycamelChannel final : public Channel
{
public:
    void Start(Sink& sink) override
    {
        m_thread = std::jthread(
            [this, &sink]
            {
                for (;;)
                {
                    PayloadPtr payload;
                    m_queue.wait_dequeue(payload);
                    if (payload == nullptr)
                        return;
                    sink.Handle(*payload);
                }
            });
    }
    void Post(PayloadPtr payload) override { m_queue.enqueue(std::move(payload)); }
    void Stop() override
    {
        m_queue.enqueue(nullptr);
        m_thread.join();
    }

private:
    moodycamel::BlockingConcurrentQueue<PayloadPtr> m_queue;
    std::jthread m_thread;
};
} // namespace

std::unique_ptr<Channel> MakeTextbook()
{
    return std::make_unique<TextbookChannel>();
}

std::unique_ptr<Channel> MakeMoodycamel()
{
    return std::make_unique<MoodycamelChannel>();
}
} // namespace Bench
