// Threads and events beside what one would pick instead: one table, ratios to the textbook queue in the same run.

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <malloc.h>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <sys/resource.h>

#include <halyon/thread/CHynThreadEventQueue.h>

#include "Runner.h"
#include "threads/Channel.h"
#include "threads/Figures.h"

using namespace Bench;

namespace
{
// Counts what arrives and lets the producers wait for the last one.
class CountingSink final : public Sink
{
public:
    explicit CountingSink(std::uint32_t expected) : m_expected(expected) {}
    void Handle(Payload& payload) override
    {
        m_sum += payload.Number();
        if (++m_count == m_expected)
        {
            m_done.store(true, std::memory_order_release);
            m_done.notify_one();
        }
    }
    void Wait() const { m_done.wait(false, std::memory_order_acquire); }
    std::uint64_t Sum() const { return m_sum; }

private:
    std::uint32_t m_expected;
    std::uint32_t m_count = 0;
    std::uint64_t m_sum = 0;
    std::atomic<bool> m_done{false};
};

Turn Producers(const NamedChannel& channel, std::uint32_t producers, std::uint32_t events)
{
    struct State
    {
        std::unique_ptr<CountingSink> sink;
        std::unique_ptr<Channel> channel;
    };
    auto state = std::make_shared<State>();
    const std::uint32_t each = events / producers;
    Turn turn;
    turn.contender = channel.name;
    turn.operations = events;
    turn.setUp = [state, make = channel.make, events](bool)
    {
        state->sink = std::make_unique<CountingSink>(events);
        state->channel = make();
        state->channel->Start(*state->sink);
    };
    turn.run = [state, producers, each]
    {
        std::vector<std::jthread> threads;
        for (std::uint32_t producer = 0; producer < producers; ++producer)
            threads.emplace_back(
                [state, each]
                {
                    for (std::uint32_t number = 0; number < each; ++number)
                        state->channel->Post(PayloadPtr(new Payload(number)));
                });
        threads.clear();
        state->sink->Wait();
    };
    turn.check = [state, producers, each]
    {
        state->channel->Stop();
        state->channel.reset();
        const std::uint64_t expected = std::uint64_t{producers} * each * (each - 1) / 2;
        if (state->sink->Sum() != expected)
            throw std::runtime_error("payloads are missing");
    };
    return turn;
}

// Two workers that post each payload back to the other.
class PingPongSink final : public Sink
{
public:
    void Handle(Payload& payload) override
    {
        if (payload.Number() == 0)
        {
            done.store(true, std::memory_order_release);
            done.notify_one();
            return;
        }
        other->Post(PayloadPtr(new Payload(payload.Number() - 1)));
    }
    Channel* other = nullptr;
    std::atomic<bool> done{false};
};

Turn PingPong(const NamedChannel& channel, std::uint32_t trips)
{
    struct State
    {
        PingPongSink sinks[2];
        std::unique_ptr<Channel> channels[2];
    };
    auto state = std::make_shared<std::unique_ptr<State>>();
    Turn turn;
    turn.contender = channel.name;
    turn.operations = trips;
    turn.setUp = [state, make = channel.make](bool)
    {
        *state = std::make_unique<State>();
        for (std::unique_ptr<Channel>& end : (*state)->channels)
            end = make();
        for (int i = 0; i < 2; ++i)
        {
            (*state)->sinks[i].other = (*state)->channels[1 - i].get();
            (*state)->channels[i]->Start((*state)->sinks[i]);
        }
    };
    turn.run = [state, trips]
    {
        // An even number of legs ends where it began.
        (*state)->channels[0]->Post(PayloadPtr(new Payload(trips * 2)));
        (*state)->sinks[0].done.wait(false, std::memory_order_acquire);
    };
    turn.check = [state]
    {
        for (const std::unique_ptr<Channel>& end : (*state)->channels)
            end->Stop();
    };
    return turn;
}

// The bare round trip: one mutex, one condition variable, a turn that goes to and fro.
Turn BareRoundTrip(std::uint32_t trips)
{
    Turn turn;
    turn.contender = "mutex and condition variable";
    turn.operations = trips;
    turn.setUp = [](bool) {
    };
    turn.check = [] {
    };
    turn.run = [trips]
    {
        std::mutex mutex;
        std::condition_variable changed;
        int side = 0;
        const auto play = [&](int self)
        {
            for (std::uint32_t trip = 0; trip < trips; ++trip)
            {
                std::unique_lock lock(mutex);
                changed.wait(lock, [&] { return side == self; });
                side = 1 - self;
                lock.unlock();
                changed.notify_one();
            }
        };
        const std::jthread partner(play, 1);
        play(0);
    };
    return turn;
}
} // namespace

namespace
{
bool IsWanted(const std::string& name, const std::vector<std::string>& only)
{
    return only.empty() ||
           std::any_of(only.begin(), only.end(), [&](const std::string& text) { return name.find(text) != name.npos; });
}
} // namespace

namespace Bench
{
std::vector<NamedChannel> Channels()
{
    return {{"textbook queue", MakeTextbook}, {"Halyon", MakeHalyon},          {"Qt postEvent", MakeQtPostEvent},
            {"Qt queued call", MakeQtQueued}, {"GLib invoke", MakeGLibInvoke}, {"GAsyncQueue", MakeGLibQueue},
            {"Boost.Asio post", MakeAsio},    {"libuv async", MakeLibuv},      {"moodycamel", MakeMoodycamel}};
}
} // namespace Bench

int main(int argc, char** argv)
try
{
    int rounds = 11;
    std::string json;
    std::vector<std::string> only;
    CLI::App options("Events between threads");
    options.add_option("--rounds", rounds, "Timed rounds; the medians are reported")->check(CLI::PositiveNumber);
    options.add_option("--only", only, "Only contenders whose name holds one of these texts, and the reference");
    options.add_option("--json", json, "Also write the results to this file");
    CLI11_PARSE(options, argc, argv);
    const QCoreApplication application(argc, argv);

    constexpr std::uint32_t kEvents = 1'000'000;
    constexpr std::uint32_t kTrips = 20'000;
    Work one{"one producer, one worker", "event", 0.75, {}};
    Work four{"four producers, one worker", "event", 0, {}};
    Work pingPong{"ping-pong between two workers", "round trip", 1.15, {}};
    pingPong.turns.push_back(BareRoundTrip(kTrips));
    for (const NamedChannel& channel : Channels())
    {
        if (!one.turns.empty() && !IsWanted(channel.name, only))
            continue;
        one.turns.push_back(Producers(channel, 1, kEvents));
        four.turns.push_back(Producers(channel, 4, kEvents));
    }
    pingPong.turns.push_back(PingPong(Channels()[1], kTrips));
    pingPong.turns.push_back(PingPong(Channels()[0], kTrips));
    pingPong.turns.push_back(PingPong(Channels()[2], kTrips));

    const std::vector<WorkResult> results = Run({one, four, pingPong}, rounds, Clock::Wall);
    std::printf("%s\n%s", Machine().c_str(), Table(results).c_str());
    if (!json.empty())
        WriteJson(json, results, rounds);
    if (only.empty())
        std::printf("\n%s", Table(ThreadFigures()).c_str());
    return 0;
}
catch (const std::exception& error)
{
    std::fprintf(stderr, "ThreadBench: %s\n", error.what());
    return 1;
}
