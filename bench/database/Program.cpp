#include "Program.h"

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <random>
#include <thread>

#include <CLI/CLI.hpp>

namespace Bench
{
namespace
{
void Declare(CLI::App& app, Options& options)
{
    app.add_option("--module", options.module, "The module to load")->check(CLI::ExistingFile);
    options.folder = std::filesystem::temp_directory_path();
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

} // namespace

int RunProgram(
    int argc, char** argv, const std::string& description,
    const std::function<std::vector<Work>(const Options& options, const std::filesystem::path& folder)>& works)
try
{
    Options options;
    CLI::App app(description);
    Declare(app, options);
    CLI11_PARSE(app, argc, argv);

    // A host has threads; the C library is quicker in a process that never had a second one, and would flatter all.
    std::thread([] {}).join();

    const WorkFolder folder(options.folder);
    std::vector<Work> wanted = works(options, folder.Path());
    std::erase_if(wanted, [&](const Work& work) { return work.name.find(options.only) == std::string::npos; });

    const auto clock = options.processorTime ? Clock::Processor : Clock::Wall;
    const std::vector<WorkResult> results = Run(wanted, options.rounds, clock);
    std::cout << "Multiples of " << (wanted.empty() ? "nothing" : wanted.front().turns.front().contender)
              << ", medians of " << options.rounds << " rounds; " << Machine() << "\n\n"
              << Table(results) << std::flush;
    if (!options.json.empty())
        WriteJson(options.json, results, options.rounds);
    return 0;
}
catch (const std::exception& failure)
{
    std::fprintf(stderr, "%s: %s\n", argv[0], failure.what());
    return 1;
}
} // namespace Bench
