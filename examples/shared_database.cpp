// Two workers write into one database; the main thread counts what is done, quits after the last and prints the sum.
//   shared_database MODULE FILE
#include <cstdio>

#include <halyon/client/HynSQ.h>
#include <halyon/platform/EventLoop.h>
#include <halyon/thread/CHynEventHandler.h>
#include <halyon/thread/CHynThreadManager.h>
#include <halyon/thread/CHynWorkerThread.h>

using namespace Halyon;

constexpr std::uint32_t kQuit = 0;
constexpr std::uint32_t kStore = 1; // uParam: a number
constexpr std::uint32_t kStored = 2;
constexpr std::uint32_t kNumbers = 20;

class StoreHandler : public CHynEventHandler
{
public:
    StoreHandler(const Client::Connection& database, IHynThreadManager& manager)
        : CHynEventHandler(kStore), m_database(database), m_manager(manager)
    {
    }
    // On a worker. The connection keeps a handle of the engine for each thread and waits while another thread writes.
    // No exception may leave, hence the form that answers a code.
    HynResult HandleEvent(std::uint32_t uParam, std::int32_t, IHynEventParam*) override
    {
        const HynResult result = m_database.try_execute(u"INSERT INTO numbers VALUES (?)", int(uParam));
        m_manager.PostEvent(HynSucceeded(result) ? kStored : kQuit, 0, 0, nullptr, kHynMainThreadID, nullptr);
        return HYN_S_EVENT_HANDLED;
    }

private:
    const Client::Connection& m_database;
    IHynThreadManager& m_manager;
};

class StoredHandler : public CHynEventHandler
{
public:
    explicit StoredHandler(IHynThreadManager& manager) : CHynEventHandler(kStored), m_manager(manager) {}
    HynResult HandleEvent(std::uint32_t, std::int32_t, IHynEventParam*) override
    {
        if (++m_stored == kNumbers)
            m_manager.PostEvent(kQuit, 0, 0, nullptr, kHynMainThreadID, nullptr);
        return HYN_S_EVENT_HANDLED;
    }

private:
    IHynThreadManager& m_manager;
    std::uint32_t m_stored = 0;
};

static void Run(const char* module, const char* file)
{
    // A file: each thread would have a database of its own under ":memory:".
    const Client::Connection database(Client::Module(module), file);
    database.execute("CREATE TABLE numbers (number INTEGER)");

    const CHynAutoPtr<CHynThreadManager> manager = new CHynThreadManager;
    manager->InitMainThread(nullptr);
    manager->RegisterHandler(new StoredHandler(*manager), nullptr);

    const CHynAutoPtr<CHynWorkerThread> workers[] = {new CHynWorkerThread(kNumbers), new CHynWorkerThread(kNumbers)};
    for (const auto& worker : workers)
    {
        int started = 0;
        worker->Start(manager, &started);
        worker->RegisterHandler(new StoreHandler(database, *manager), nullptr);
    }
    for (std::uint32_t number = 1; number <= kNumbers; ++number)
        workers[number % 2]->PostEvent(kStore, number, 0, nullptr, nullptr);

    RunApplicationEventLoop();
    for (const auto& worker : workers)
        worker->Stop();
    for (auto& row : database.query("SELECT count(*), sum(number) FROM numbers"))
        std::printf("%d numbers, %d in all\n", row.get<int>(0), row.get<int>(1));
}

int main(int argc, char** argv)
{
    if (argc != 3)
        return std::fprintf(stderr, "usage: shared_database MODULE FILE\n"), 2;
    try
    {
        Run(argv[1], argv[2]);
    }
    catch (const Client::Error& error)
    {
        return std::fprintf(stderr, "shared_database: %s\n", error.what()), 1;
    }
}
