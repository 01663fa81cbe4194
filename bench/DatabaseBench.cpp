// The module against the engine's own interface and against what a user might pick instead.
//
// Every contender does the same work on the same rows; what reached the caller's memory is summed and compared in each
// round, and a difference ends the run.
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <random>
#include <thread>

#include <CLI/CLI.hpp>
#include <QCoreApplication>

#include "Runner.h"
#include "database/Suite.h"

namespace
{
struct Options
{
    std::string module = HALYON_MODULE;
    std::string folder = std::filesystem::temp_directory_path();
    std::string json;
    std::string only;
    int rounds = 11;
    bool noPeers = false;
    bool processorTime = false;
    std::size_t part = 1;
};

void Declare(CLI::App& app, Options& options)
{
    app.add_option("--module", options.module, "The module to load")->check(CLI::ExistingFile);
    app.add_option("--folder", options.folder, "Where the databases are made and removed again")
        ->check(CLI::ExistingDirectory);
    app.add_option("--rounds", options.rounds, "Timed rounds")->check(CLI::PositiveNumber)->capture_default_str();
    app.add_option("--part", options.part, "Do only this part of each work: 10 is a tenth")->check(CLI::Range(1, 1000));
    app.add_option("--only", options.only, "Only works whose name holds this text");
    app.add_option("--json", options.json, "Also write the results to this file");
    app.add_flag("--no-peers", options.noPeers, "The module and the reference alone");
    app.add_flag("--processor-time", options.processorTime,
                 "Compare processor time instead of elapsed time, for a busy machine");
}

// A folder of this run alone, removed at the end.
class WorkFolder
{
public:
    explicit WorkFolder(const std::filesystem::path& parent)
        : m_path(parent / ("halyon-bench-" + std::to_string(std::random_device()())))
    {
        std::filesystem::create_directory(m_path);
    }
    ~WorkFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

void AddContenders(Bench::Suite& suite, const Options& options)
{
    suite.Add("raw", Bench::MakeRaw(), {});
    suite.Add("Halyon", Bench::MakeModule(options.module), {});
    if (options.noPeers)
        return;
    // None of them is asked to open record sets: that work is there for its heap calls.
    const std::string open = "open, one row by name";
    constexpr std::size_t kNever = SIZE_MAX;
    suite.Add("SQLiteCpp", Bench::MakeSqliteCpp(), {{open, kNever}});
    suite.Add("Qt SQL", Bench::MakeQtSql(), {{open, kNever}});
    suite.Add("SOCI", Bench::MakeSoci(), {{open, kNever}});
    suite.Add("Poco", Bench::MakePoco(), {{open, kNever}});
}

int Run(const Options& options)
{
    // A host has threads; the C library is quicker in a process that never had a second one, and would flatter all.
    std::thread([] {}).join();

    const WorkFolder folder(options.folder);
    Bench::Suite suite(folder.Path(), options.part);
    AddContenders(suite, options);
    std::vector<Bench::Work> works = suite.Works();
    std::erase_if(works, [&](const Bench::Work& work) { return work.name.find(options.only) == std::string::npos; });

    const auto clock = options.processorTime ? Bench::Clock::Processor : Bench::Clock::Wall;
    const std::vector<Bench::WorkResult> results = Bench::Run(works, options.rounds, clock);
    std::cout << "Multiples of raw, medians of " << options.rounds << " rounds; " << Bench::Machine() << "\n\n"
              << Bench::Table(results) << std::flush;
    if (!options.json.empty())
        Bench::WriteJson(options.json, results, options.rounds);
    return 0;
}
} // namespace

int main(int argc, char** argv)
try
{
    const QCoreApplication application(argc, argv);
    Options options;
    CLI::App app("The speed of the module's database, as multiples of the engine's own interface.");
    Declare(app, options);
    CLI11_PARSE(app, argc, argv);
    return Run(options);
}
catch (const std::exception& failure)
{
    std::fprintf(stderr, "DatabaseBench: %s\n", failure.what());
    return 1;
}
