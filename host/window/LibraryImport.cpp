#include <host/window/LibraryImport.h>

#include <algorithm>
#include <exception>
#include <thread>

#include <host/HostError.h>
#include <host/ImportScope.h>
#include <host/window/Thumbnails.h>

namespace HynHost
{
namespace
{
using namespace std::chrono_literals;

constexpr auto kShowEvery = 1s;
constexpr auto kRateOver = 10s;
constexpr auto kPatience = 100ms; // with a locked catalogue, once the user has cancelled

std::vector<std::byte> Thumbnail(std::span<const std::uint8_t> bytes)
{
    return PackThumbnail(MakeThumbnail(bytes));
}
} // namespace

LibraryImport::LibraryImport(Halyon::CHynThreadManager& manager, SharedCatalog& catalog, FunctionWorker& writer,
                             Results results)
    : m_manager(manager), m_catalog(catalog), m_writer(writer), m_results(std::move(results)),
      m_counter(manager, "counter")
{
}

void LibraryImport::Start(const std::string& folder)
{
    m_writer.Post([this, folder, number = ++m_started] { Run(folder, number); });
}

void LibraryImport::Cancel()
{
    m_cancelledAt.store(Clock::now().time_since_epoch().count());
    m_cancelledUpTo.store(m_started);
    if (IsFirstAt(m_started)) // the writer has not come to it
    {
        ImportReport report;
        report.interrupted = true;
        m_results.onEnded(report, "");
        return;
    }
    m_writer.Post(
        [this, number = m_started]
        {
            if (m_pipeline != nullptr && m_number.load() == number)
                m_pipeline->Stop();
        });
}

// Either the writer begins an import or somebody cancels it before that.
bool LibraryImport::IsFirstAt(std::uint64_t number) noexcept
{
    std::uint64_t before = number - 1;
    return m_begun.compare_exchange_strong(before, number);
}

bool LibraryImport::MustStop() const noexcept
{
    return m_catalog.IsStopped() || m_cancelledUpTo.load() >= m_number.load();
}

bool LibraryImport::IsOutOfPatience() const
{
    const Clock::time_point cancelledAt{Clock::duration(m_cancelledAt.load())};
    return m_cancelledUpTo.load() >= m_number.load() && Clock::now() >= cancelledAt + kPatience;
}

void LibraryImport::Run(const std::string& folder, std::uint64_t number) noexcept
{
    if (!IsFirstAt(number))
        return;
    m_number.store(number);
    try
    {
        Begin(folder);
    }
    catch (...)
    {
        OnEnded({}, std::current_exception());
    }
}

void LibraryImport::Begin(const std::string& folder)
{
    ImportScope scope;
    try
    {
        scope = ScopeOfImport(folder);
        m_catalog.Open(Catalog::Mode::Create, [this] { return IsOutOfPatience(); });
    }
    catch (const HostError& failure)
    {
        m_results.onRefused(folder, failure.what());
        return;
    }
    m_total.store(0);
    m_lately.clear();
    m_shown = 0;
    m_showAt = Clock::now() + kShowEvery;
    m_counter.Post([this, scope, number = m_number.load()] { Count(scope, number); });
    const ImportSettings settings{FolderWalk::Links::Pass, std::max(1u, std::thread::hardware_concurrency()),
                                  &Thumbnail};
    m_pipeline = std::make_shared<ImportPipeline>(m_catalog.Get(), std::move(scope), settings, m_manager,
                                                  m_writer.Thread(), *this);
    m_pipeline->Begin();
}

// While the import runs: the walk for it is short beside the reading, and brings into memory what that needs.
void LibraryImport::Count(const ImportScope& scope, std::uint64_t number) noexcept
{
    try
    {
        std::uint64_t total = 0;
        FolderWalk walk(scope.folder, FolderWalk::Links::Pass, scope.passed,
                        [](const std::string&, const std::string&) {});
        for (; walk.Next(); ++total)
        {
            if (m_number.load() != number || MustStop())
                return;
        }
        m_total.store(total);
    }
    catch (const std::exception&) // the import runs into the same, and tells
    {
    }
}

std::shared_ptr<void> LibraryImport::BeforeLock(const ImportReport& /*soFar*/, Transaction::Kind kind)
{
    m_catalog.WaitFor(kind, [this] { return IsOutOfPatience(); });
    return nullptr;
}

void LibraryImport::OnProgress(const ImportReport& soFar, std::uint64_t looked, const std::string& folder)
{
    const std::uint64_t counted = m_total.load();
    const std::uint64_t total = counted == 0 ? 0 : std::max(counted, looked); // the folder may have grown
    m_results.onProgress({looked, total, SecondsLeft(looked, total), folder});
    if (const auto now = Clock::now(); now >= m_showAt && soFar.done != m_shown)
    {
        m_showAt = now + kShowEvery;
        m_shown = soFar.done;
        m_results.onStored();
    }
}

// By the rate of the last seconds: files that are unchanged go by much faster than new ones.
double LibraryImport::SecondsLeft(std::uint64_t done, std::uint64_t total)
{
    const auto now = Clock::now();
    m_lately.emplace_back(now, done);
    while (m_lately.front().first < now - kRateOver)
        m_lately.pop_front();
    const double seconds = std::chrono::duration<double>(now - m_lately.front().first).count();
    const std::uint64_t files = done - m_lately.front().second;
    if (total == 0 || files == 0 || seconds < 1)
        return -1;
    return static_cast<double>(total - done) * seconds / static_cast<double>(files);
}

void LibraryImport::OnEnded(const ImportReport& report, std::exception_ptr failure)
{
    ImportReport ended = report;
    std::string message;
    try
    {
        if (failure != nullptr)
            m_catalog.Guarded("cannot bring up to date", [&] { std::rethrow_exception(failure); });
    }
    catch (const Stopped&)
    {
        ended.interrupted = true;
        if (m_pipeline != nullptr)
            m_results.whenFree([this, pipeline = m_pipeline] { StoreRest(*pipeline); });
    }
    catch (const std::exception& error)
    {
        message = error.what();
    }
    m_writer.Post( // which is at it now
        [this, number = m_number.load()]
        {
            if (m_number.load() == number)
                m_pipeline.reset();
        });
    m_results.onEnded(ended, message);
    m_results.onStored();
}

void LibraryImport::StoreRest(ImportPipeline& pipeline)
{
    try
    {
        m_catalog.Guarded("cannot bring up to date", [&pipeline] { pipeline.StoreRest(); });
        m_results.onStored();
    }
    catch (const std::exception& failure)
    {
        m_results.onFailure(failure.what());
    }
}

void LibraryImport::Finish() noexcept
{
    if (m_pipeline != nullptr)
        m_pipeline->Stop();
    m_pipeline.reset();
}
} // namespace HynHost
