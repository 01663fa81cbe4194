#include <host/ImportCommand.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include <CLI/CLI.hpp>

#include <host/BusyNotice.h>
#include <host/Catalog.h>
#include <host/HostError.h>
#include <host/ImportPipeline.h>
#include <host/ImportScope.h>
#include <host/Interrupt.h>
#include <host/PrintableText.h>

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

ImportReport RunImport(ImportPipeline& pipeline, const std::string& catalog)
{
    try
    {
        return pipeline.Run();
    }
    catch (const DatabaseError& failure)
    {
        ThrowRefusal("cannot bring up to date", catalog, failure);
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
    ImportPipeline pipeline(catalog, scope, options.followLinks ? FolderWalk::Links::Follow : FolderWalk::Links::Pass,
                            options.jobs, progress);

    const auto start = Clock::now();
    const ImportReport report = RunImport(pipeline, catalog.GetDatabase().File());
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
