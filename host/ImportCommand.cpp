#include <host/ImportCommand.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include <CLI/CLI.hpp>

#include <halyon/platform/EventLoop.h>
#include <halyon/thread/CHynThreadManager.h>
#include <host/BusyNotice.h>
#include <host/Catalog.h>
#include <host/Events.h>
#include <host/FunctionWorker.h>
#include <host/HostError.h>
#include <host/ImportPipeline.h>
#include <host/ImportScope.h>
#include <host/Interrupt.h>
#include <host/PrintableText.h>
#include <host/Progress.h>

namespace HynHost
{
namespace
{
struct Options
{
    std::string folder;
    std::string catalog;
    bool followLinks = false;
    unsigned jobs = std::max(1u, std::thread::hardware_concurrency());
};

using Clock = std::chrono::steady_clock;

unsigned long long Number(std::uint64_t number)
{
    return number;
}

Catalog OpenCatalog(const std::string& file)
{
    const BusyNotice notice(
        [&file]
        { std::fprintf(stderr, "hynhost: waiting for the catalogue %s: another program is using it\n", file.c_str()); },
        [] { std::fputs("hynhost: interrupted before the first file\n", stderr); });
    return Catalog(file, Catalog::Mode::Create);
}

// Says on standard error that and where an import was interrupted.
void TellInterrupted(const ImportReport& report, Progress& progress)
{
    progress.Clear();
    const std::uint64_t total = progress.Total();
    const std::string of = total == 0 ? std::string() : " of " + std::to_string(total);
    std::fprintf(stderr, "hynhost: interrupted after %llu%s files; what they told is in the catalogue\n",
                 Number(report.done), of.c_str());
}

// An import on a terminal: its bar, its interrupts, and the main loop that runs meanwhile.
class TerminalImport : public ImportObserver
{
public:
    TerminalImport(Catalog& catalog, Progress& progress) : m_catalog(catalog), m_progress(progress) {}

    // Runs the main event loop until the import has ended or was interrupted; every thread has ended then. Throws what
    // a thread ran into, HostError or DatabaseError. [main]
    ImportReport Run(const ImportScope& scope, const ImportSettings& settings)
    {
        RequireThread(m_spManager->InitMainThread(nullptr));
        RequireThread(m_spManager->GetMainThread(m_spMain.Receive()));
        {
            std::unique_ptr<ImportPipeline> pipeline; // the writer's
            FunctionWorker writer(*m_spManager, "writer", [&pipeline] { pipeline.reset(); });
            writer.Post([&] { Begin(pipeline, scope, settings, writer); });
            const Ticker ticker([&] { writer.Post([&pipeline] { StopIt(pipeline.get()); }); });
            Halyon::RunApplicationEventLoop();
        }
        m_spManager->UnRegisterAll();
        m_progress.Clear();
        if (m_failure != nullptr)
            std::rethrow_exception(m_failure);
        return std::move(m_report);
    }

private:
    // Looks for an interrupt a few times a second while the loop runs, and acts on it once.
    class Ticker
    {
    public:
        explicit Ticker(std::function<void()> onInterrupt) : m_onInterrupt(std::move(onInterrupt))
        {
            constexpr double kLookForInterruptSeconds = 0.05;
            Halyon::InstallEventLoopTimer(
                Halyon::GetMainEventLoop(), 0.0, kLookForInterruptSeconds,
                [](Halyon::EventLoopTimerRef, void* self) { static_cast<Ticker*>(self)->Look(); }, this, &m_timer);
        }
        ~Ticker() { Halyon::RemoveEventLoopTimer(m_timer); }
        Ticker(const Ticker&) = delete;
        Ticker& operator=(const Ticker&) = delete;

    private:
        void Look()
        {
            if (!m_done && Interrupt::Requested())
            {
                m_done = true;
                m_onInterrupt();
            }
        }

        std::function<void()> m_onInterrupt;
        Halyon::EventLoopTimerRef m_timer = nullptr;
        bool m_done = false;
    };

    void Begin(std::unique_ptr<ImportPipeline>& pipeline, const ImportScope& scope, const ImportSettings& settings,
               FunctionWorker& writer) noexcept
    {
        try
        {
            pipeline =
                std::make_unique<ImportPipeline>(m_catalog, scope, settings, *m_spManager, writer.Thread(), *this);
            pipeline->Begin();
        }
        catch (...)
        {
            OnEnded({}, std::current_exception());
        }
    }

    static void StopIt(ImportPipeline* pipeline) noexcept
    {
        if (pipeline != nullptr)
            pipeline->Stop();
    }

    [[nodiscard]] bool MustStop() const noexcept override { return Interrupt::Requested(); }

    [[nodiscard]] std::shared_ptr<void> BeforeLock(const ImportReport& soFar, Transaction::Kind /*kind*/) override
    {
        return std::make_shared<BusyNotice>(
            [this]
            {
                m_progress.Clear();
                std::fputs("hynhost: waiting for the catalogue: another program is using it\n", stderr);
            },
            [this, &soFar] { TellInterrupted(soFar, m_progress); });
    }

    void OnProgress(const ImportReport& soFar, std::uint64_t /*looked*/, const std::string& /*folder*/) override
    {
        m_progress.Update(soFar.done);
    }

    void OnEnded(const ImportReport& report, std::exception_ptr failure) override
    {
        m_report = report;
        m_failure = std::move(failure);
        PostSurely(*m_spMain, 0); // ends the loop
    }

    Catalog& m_catalog;
    Progress& m_progress;
    Halyon::CHynAutoPtr<Halyon::CHynThreadManager> m_spManager = new Halyon::CHynThreadManager;
    Halyon::CHynAutoPtr<Halyon::IHynThread> m_spMain;
    ImportReport m_report;        // read when the writer has ended
    std::exception_ptr m_failure; // the same
};

// Only a bar needs the total; the walk for it is short and brings what the real one needs into memory.
std::uint64_t CountFiles(const ImportScope& scope, FolderWalk::Links links, const Progress& progress)
{
    std::uint64_t total = 0;
    if (progress.WantsTotal())
    {
        FolderWalk walk(scope.folder, links, scope.passed, [](const std::string&, const std::string&) {});
        while (!Interrupt::Requested() && walk.Next())
            ++total;
    }
    return total;
}

ImportReport RunImport(Catalog& catalog, const ImportScope& scope, const ImportSettings& settings, Progress& progress)
{
    try
    {
        progress.Start(CountFiles(scope, settings.links, progress));
        return TerminalImport(catalog, progress).Run(scope, settings);
    }
    catch (const DatabaseError& failure)
    {
        ThrowRefusal("cannot bring up to date", catalog.GetDatabase().File(), failure);
    }
}

void PrintReport(const ImportReport& report, const std::string& folder, const std::string& catalog, double seconds)
{
    std::printf("%s\n  %llu new, %llu changed, %llu unchanged, %llu gone\n", PrintableText(folder).c_str(),
                Number(report.added), Number(report.changed), Number(report.unchanged), Number(report.gone));
    if (report.others != 0)
        std::printf("  %llu other files\n", Number(report.others));
    if (report.passedLinks != 0)
        std::printf("  %llu links not followed (--follow-links follows them)\n", Number(report.passedLinks));
    std::printf("  in %s after %.1f s, %.0f files/s\n", PrintableText(catalog).c_str(), seconds,
                static_cast<double>(report.done) / seconds);
    std::fflush(stdout);
}

void PrintProblems(const ImportReport& report)
{
    const std::uint64_t count = report.problems.size() + report.moreProblems;
    if (count == 0)
        return;
    std::fprintf(stderr, "%llu %s:\n", Number(count), count == 1 ? "problem" : "problems");
    for (const auto& [path, reason] : report.problems)
        std::fprintf(stderr, "  %s: %s\n", PrintableText(path).c_str(), PrintableText(reason).c_str());
    if (report.moreProblems != 0)
        std::fprintf(stderr, "  and %llu more\n", Number(report.moreProblems));
}

void Import(const Options& options)
{
    const ImportScope scope = ScopeOfImport(options.folder);
    const std::string file = options.catalog.empty() ? Catalog::DefaultFile() : options.catalog;
    const Interrupt interrupt;
    Catalog catalog = OpenCatalog(file);
    Progress progress("files");
    const ImportSettings settings{
        options.followLinks ? FolderWalk::Links::Follow : FolderWalk::Links::Pass, options.jobs, {}};
    const auto start = Clock::now();
    const ImportReport report = RunImport(catalog, scope, settings, progress);
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    PrintReport(report, scope.folder, catalog.GetDatabase().File(), seconds);
    PrintProblems(report);
    if (report.interrupted)
    {
        TellInterrupted(report, progress);
        throw CLI::RuntimeError(Interrupt::kExitStatus);
    }
}
} // namespace

void AddImportCommand(CLI::App& app)
{
    auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("import", "Bring a folder's media files into the catalogue");
    command->add_option("FOLDER", options->folder, "The folder; those below it come with it")->required();
    command->add_option("--catalog", options->catalog, "The catalogue (default: halyon/catalog.db in the user's data)")
        ->type_name("FILE");
    command->add_flag("--follow-links", options->followLinks, "Follow symbolic links to files and folders");
    command->add_option("--jobs", options->jobs, "How many threads read files (default: one for each core)")
        ->type_name("N")
        ->check(CLI::Range(1, 256));
    command->callback([options] { Import(*options); });
}
} // namespace HynHost
