// `hynvalidate`: checks that a component module keeps the rules of the framework.
//
// Exit status: 0 every check passed or had nothing to look at; 1 a check failed; 2 the module cannot be checked, or a
// wrong command line.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>
#include <sys/resource.h>

#include <halyon/framework/HynVersion.h>
#include <validate/Report.h>
#include <validate/Runner.h>
#include <validate/Subject.h>

#if defined(HYNVALIDATE_SANITIZED)
// What kills a check is named by its signal, and the check for leaks is the one that looks for leaks.
extern "C" [[gnu::visibility("default")]] const char* __asan_default_options();
extern "C" [[gnu::visibility("default")]] const char* __tsan_default_options();
const char* __asan_default_options()
{
    return "detect_leaks=0:handle_segv=0:handle_sigbus=0:handle_abort=0";
}
const char* __tsan_default_options()
{
    return "handle_segv=0:handle_sigbus=0:handle_abort=0";
}
#endif

namespace HynValidate
{
namespace
{
struct Options
{
    std::string module;
    std::vector<std::string> classes;
    std::vector<std::string> only;
    double limit = 10;
    bool isJson = false;
    bool isList = false;
    std::string runCheck; // the two for the process of a check
    int channel = -1;
};

const Check& CheckNamed(std::string_view name)
{
    const auto checks = Checks();
    return *std::find_if(checks.begin(), checks.end(), [&](const Check& check) { return name == check.name; });
}

void AddOptions(CLI::App& app, Options& options)
{
    std::set<std::string> names;
    for (const Check& check : Checks())
        names.insert(check.name);
    const CLI::Validator isClass(
        [](const std::string& text) -> std::string
        {
            try
            {
                Class::Parse(text);
                return "";
            }
            catch (const std::invalid_argument& error)
            {
                return error.what();
            }
        },
        "CLASS[:INTERFACE,...]");
    const CLI::Validator isCheck([names](const std::string& name) -> std::string
                                 { return names.count(name) != 0 ? "" : "there is no check '" + name + "'"; },
                                 "NAME");
    app.add_option("MODULE", options.module, "The module's file");
    app.add_option("--class", options.classes,
                   "Check this class, too, with these interfaces; all three as FE15F6EB-1E69-4568-9111-3FB8FACBAAF9. "
                   "May be given again")
        ->check(isClass)
        ->type_name("")
        ->allow_extra_args(false);
    app.add_option("--only", options.only, "Run this check and those that it rests on. May be given again")
        ->check(isCheck)
        ->type_name("")
        ->allow_extra_args(false);
    app.add_option("--time-limit", options.limit, "Seconds that one check may take")
        ->check(CLI::Range(0.001, 86400.0))
        ->type_name("SECONDS")
        ->capture_default_str();
    app.add_flag("--json", options.isJson, "Report as JSON");
    app.add_flag("--list", options.isList, "Name the checks and the rule that each looks after");
    app.add_option("--run-check", options.runCheck)->check(isCheck)->group("");
    app.add_option("--channel", options.channel)->group("");
    app.set_version_flag("--version", std::string("hynvalidate ") + HALYON_VERSION_TEXT);
}

// The wanted checks and those that they rest on, in order.
std::vector<const Check*> Selected(const std::vector<std::string>& only)
{
    std::set<std::string_view> wanted(only.begin(), only.end());
    const auto checks = Checks();
    std::vector<const Check*> selected;
    for (std::size_t i = checks.size(); i-- > 0;)
    {
        if (!only.empty() && wanted.count(checks[i].name) == 0)
            continue;
        wanted.insert(checks[i].needs.begin(), checks[i].needs.end());
        selected.insert(selected.begin(), &checks[i]);
    }
    return selected;
}

Report RunAll(const Options& options, Request request)
{
    Report report;
    std::set<std::string_view> passed;
    for (const Check* check : Selected(options.only))
    {
        const auto missing =
            std::find_if(check->needs.begin(), check->needs.end(), [&](auto name) { return passed.count(name) == 0; });
        Outcome outcome{Result::Skipped, "", 0, {}};
        if (missing != check->needs.end())
            outcome.reason = "rests on " + std::string(*missing);
        else
            outcome = RunCheck(*check, request);
        if (outcome.result == Result::Ok)
            passed.insert(check->name);
        if (std::string_view(check->name) == "classes")
            request.classes = outcome.classes;
        report.emplace_back(check, std::move(outcome));
    }
    return report;
}

int Validate(const Options& options)
{
    std::error_code error;
    const std::filesystem::path path = std::filesystem::canonical(options.module, error);
    if (error)
        throw NoModule("cannot check the module " + options.module + ": " + error.message());
    const ElfFile readable(path.string());
    const std::chrono::duration<double> limit(options.limit);
    Request request{path.string(), options.classes, std::chrono::ceil<std::chrono::milliseconds>(limit)};
    if (!options.runCheck.empty())
        return RunInside(CheckNamed(options.runCheck), request, options.channel);

    // A check that crashes is no reason to leave a core file behind.
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    const Report report = RunAll(options, std::move(request));
    std::fputs((options.isJson ? AsJson(report, options.module) : AsText(report)).c_str(), stdout);
    return HasPassed(report) ? 0 : 1;
}

int Run(int argc, char** argv)
{
    CLI::App app("Checks that a component module keeps the rules of the framework.", "hynvalidate");
    app.footer("Exit status: 0 every check passed, 1 a check failed, 2 the module cannot be checked.");
    Options options;
    AddOptions(app, options);
    try
    {
        app.parse(argc, argv);
        if (!options.isList && options.module.empty())
            throw CLI::RequiredError("MODULE");
    }
    catch (const CLI::ParseError& error)
    {
        return app.exit(error) == 0 ? 0 : 2; // help and version are 0
    }
    int status = 0;
    if (options.isList)
        std::fputs(ListOfChecks().c_str(), stdout);
    else
        status = Validate(options);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot write to standard output");
    return status;
}
} // namespace
} // namespace HynValidate

int main(int argc, char** argv)
{
    try
    {
        return HynValidate::Run(argc, argv);
    }
    catch (const std::exception& error)
    {
        std::fflush(stdout);
        std::fprintf(stderr, "hynvalidate: %s\n", error.what());
        return 2;
    }
}
