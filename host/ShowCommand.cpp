#include <host/ShowCommand.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <memory>

#include <unistd.h>

#include <CLI/CLI.hpp>

#include <host/HostError.h>

namespace HynHost
{
namespace
{
constexpr std::string_view kAction = "cannot start the window";

std::string FindOrganiser()
{
    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    const std::array places = {folder / HYNHOST_INSTALLED_ORGANISER, folder / HYNHOST_BUILT_ORGANISER};
    std::string tried;
    for (const auto& place : places)
    {
        std::error_code ignored;
        if (std::filesystem::exists(place, ignored))
            return place.lexically_normal();
        tried += "\n  " + place.lexically_normal().string();
    }
    throw HostError("cannot find the window's program hynorganiser; tried:" + tried);
}

std::vector<std::string> Arguments(const std::string& program, const ShowOptions& options, const std::string& storage)
{
    std::vector<std::string> words = {program};
    if (!storage.empty())
        words.insert(words.end(), {"--storage", storage});
    if (!options.catalog.empty())
        words.insert(words.end(), {"--catalog", options.catalog});
    for (const auto& [given, word] :
         {std::pair(options.trace, "--trace"), std::pair(options.traceScroll, "--trace-scroll"),
          std::pair(options.traceQuit, "--trace-quit")})
    {
        if (given)
            words.emplace_back(word);
    }
    if (!options.folder.empty())
        words.insert(words.end(), {"--", options.folder});
    return words;
}

[[noreturn]] void Show(const ShowOptions& options, const std::string& storage)
{
    const std::string program = FindOrganiser();
    std::vector<std::string> words = Arguments(program, options, storage);
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    execv(program.c_str(), arguments.data());
    ThrowSystemError(kAction, program, errno);
}
} // namespace

void AddShowOptions(CLI::App& command, ShowOptions& options)
{
    command.add_option("FOLDER", options.folder, "A folder to import; those below it come with it");
    command.add_option("--catalog", options.catalog, "The catalogue (default: halyon/catalog.db in the user's data)")
        ->type_name("FILE");
    command.add_flag("--trace", options.trace, "Print what the window's thread was busy with, at the end");
    command.add_flag("--trace-scroll", options.traceScroll, "Scroll through everything once, and quit");
    command.add_flag("--trace-quit", options.traceQuit, "Quit when the first pictures are seen, or FOLDER is imported");
}

void AddShowCommand(CLI::App& app)
{
    auto options = std::make_shared<ShowOptions>();
    CLI::App* command = app.add_subcommand("show", "Look through the catalogue in a window");
    AddShowOptions(*command, *options);
    command->callback(
        [options, &app]
        {
            const CLI::Option* storage = app.get_option_no_throw("--storage");
            Show(*options, storage != nullptr && !storage->empty() ? storage->results().front() : "");
        });
}
} // namespace HynHost
