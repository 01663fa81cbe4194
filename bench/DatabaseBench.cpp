// The module against the engine's own interface and against what a user might pick instead.
//
// Every contender does the same work on the same rows; what reached the caller's memory is summed and compared in each
// round, and a difference ends the run.
#include <cstdint>
#include <memory>

#include <QCoreApplication>

#include "database/Program.h"

namespace
{
void AddContenders(Bench::Suite& suite, const Bench::Options& options)
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

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    std::unique_ptr<Bench::Suite> suite;
    return Bench::RunProgram(argc, argv,
                             "The speed of the module's database, as multiples of the engine's own interface.",
                             [&](const Bench::Options& options, const std::filesystem::path& folder)
                             {
                                 suite = std::make_unique<Bench::Suite>(folder, options.part);
                                 AddContenders(*suite, options);
                                 return suite->Works();
                             });
}
