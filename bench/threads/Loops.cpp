// The event loops of other libraries: GLib, Boost.Asio, libuv.

#include <mutex>
#include <thread>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <glib.h>
#include <uv.h>

#include "Channel.h"

namespace Bench
{
namespace
{
class GLibInvokeChannel final : public Channel
{
public:
    ~GLibInvokeChannel() override
    {
        g_main_loop_unref(m_loop);
        g_main_context_unref(m_context);
    }
    void Start(Sink& sink) override
    {
        m_sink = &sink;
        m_thread = std::jthread(
            [this]
            {
                g_main_context_push_thread_default(m_context);
                g_main_loop_run(m_loop);
                g_main_context_pop_thread_default(m_context);
            });
    }
    void Post(PayloadPtr payload) override
    {
        auto* call = new Call{m_sink, std::move(payload)};
        g_main_context_invoke_full(m_context, G_PRIORITY_DEFAULT, Run, call,
                                   [](void* data) { delete static_cast<Call*>(data); });
    }
    void Stop() override
    {
        while (g_main_loop_is_running(m_loop) == 0)
            std::this_thread::yield();
        g_main_loop_quit(m_loop);
        m_thread.join();
    }

private:
    struct Call
    {
        Sink* sink;
        PayloadPtr payload;
    };
    static gboolean Run(void* data)
    {
        const auto* call = static_cast<Call*>(data);
        call->sink->Handle(*call->payload);
        return G_SOURCE_REMOVE;
    }

    GMainContext* m_context = g_main_context_new();
    GMainLoop* m_loop = g_main_loop_new(m_context, FALSE);
    Sink* m_sink = nullptr;
    std::jthread m_thread;
};

class GLibQueueChannel final : public Channel
{
public:
    ~GLibQueueChannel() override { g_async_queue_unref(m_queue); }
    void Start(Sink& sink) override
    {
        m_thread = std::jthread(
            [this, &sink]
            {
                for (;;)
                {
                    void* item = g_async_queue_pop(m_queue);
                    if (item == this)
                        return;
                    const PayloadPtr payload(static_cast<Payload*>(item));
                    sink.Handle(*payload);
                }
            });
    }
    void Post(PayloadPtr payload) override { g_async_queue_push(m_queue, payload.release()); }
    void Stop() override
    {
        g_async_queue_push(m_queue, this);
        m_thread.join();
    }

private:
    GAsyncQueue* m_queue = g_async_queue_new();
    std::jthread m_thread;
};

class AsioChannel final : public Channel
{
public:
    void Start(Sink& sink) override
    {
        m_sink = &sink;
        m_thread = std::jthread([this] { m_context.run(); });
    }
    void Post(PayloadPtr payload) override
    {
        boost::asio::post(m_context, [sink = m_sink, owned = std::move(payload)] { sink->Handle(*owned); });
    }
    void Stop() override
    {
        m_work.reset();
        m_thread.join();
    }

private:
    boost::asio::io_context m_context;
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> m_work{m_context.get_executor()};
    Sink* m_sink = nullptr;
    std::jthread m_thread;
};

// libuv wakes a loop but queues nothing: its users bring a list of their own.
class LibuvChannel final : public Channel
{
public:
    void Start(Sink& sink) override
    {
        m_sink = &sink;
        uv_loop_init(&m_loop);
        uv_async_init(&m_loop, &m_async, [](uv_async_t* handle) { static_cast<LibuvChannel*>(handle->data)->Drain(); });
        m_async.data = this;
        m_thread = std::jthread([this] { uv_run(&m_loop, UV_RUN_DEFAULT); });
    }
    void Post(PayloadPtr payload) override
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_pending.push_back(std::move(payload));
        }
        uv_async_send(&m_async);
    }
    void Stop() override
    {
        Post(nullptr);
        m_thread.join();
        uv_loop_close(&m_loop);
    }

private:
    void Drain()
    {
        std::vector<PayloadPtr> batch;
        {
            const std::scoped_lock lock(m_mutex);
            batch.swap(m_pending);
        }
        for (const PayloadPtr& payload : batch)
        {
            if (payload != nullptr)
                m_sink->Handle(*payload);
            else
                uv_close(reinterpret_cast<uv_handle_t*>(&m_async), nullptr);
        }
    }

    uv_loop_t m_loop{};
    uv_async_t m_async{};
    std::mutex m_mutex;
    std::vector<PayloadPtr> m_pending;
    Sink* m_sink = nullptr;
    std::jthread m_thread;
};
} // namespace

std::unique_ptr<Channel> MakeGLibInvoke()
{
    return std::make_unique<GLibInvokeChannel>();
}

std::unique_ptr<Channel> MakeGLibQueue()
{
    return std::make_unique<GLibQueueChannel>();
}

std::unique_ptr<Channel> MakeAsio()
{
    return std::make_unique<AsioChannel>();
}

std::unique_ptr<Channel> MakeLibuv()
{
    return std::make_unique<LibuvChannel>();
}
} // namespace Bench
