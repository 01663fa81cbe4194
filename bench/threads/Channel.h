// One way to get counted payloads from producers to a worker, as each library offers it.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include <halyon/thread/IHynEventParam.h>

namespace Bench
{
// The payload of every contender: counted by one atomic, destroyed by the last release.
class Payload final : public Halyon::IHynEventParam
{
public:
    explicit Payload(std::uint32_t number) : m_number(number) {}

    std::uint32_t AddRef() override { return m_count.fetch_add(1, std::memory_order_relaxed) + 1; }
    std::uint32_t Release() override
    {
        const std::uint32_t left = m_count.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0)
            delete this;
        return left;
    }
    Halyon::HynResult QueryInterface(const Halyon::HYN_GUID&, void**) override { return Halyon::HYN_E_NOINTERFACE; }

    std::uint32_t Number() const { return m_number; }

private:
    ~Payload() = default;

    std::atomic<std::uint32_t> m_count{1};
    std::uint32_t m_number;
};

struct ReleasePayload
{
    void operator()(Payload* payload) const { payload->Release(); }
};
using PayloadPtr = std::unique_ptr<Payload, ReleasePayload>;

// Called on the worker for each payload.
class Sink
{
public:
    virtual ~Sink() = default;
    virtual void Handle(Payload& payload) = 0;
};

class Channel
{
public:
    virtual ~Channel() = default;
    // Makes the worker, which hands everything to `sink` until Stop.
    virtual void Start(Sink& sink) = 0;
    // Called by any producer.
    virtual void Post(PayloadPtr payload) = 0;
    // Ends the worker. Requires: everything posted has been handled.
    virtual void Stop() = 0;
};

struct NamedChannel
{
    const char* name;
    std::unique_ptr<Channel> (*make)();
};

// The textbook queue first, Halyon second, then the others.
std::vector<NamedChannel> Channels();

std::unique_ptr<Channel> MakeTextbook();
std::unique_ptr<Channel> MakeHalyon();
std::unique_ptr<Channel> MakeQtPostEvent();
std::unique_ptr<Channel> MakeQtQueued();
std::unique_ptr<Channel> MakeGLibInvoke();
std::unique_ptr<Channel> MakeGLibQueue();
std::unique_ptr<Channel> MakeAsio();
std::unique_ptr<Channel> MakeLibuv();
std::unique_ptr<Channel> MakeMoodycamel();
} // namespace Bench
