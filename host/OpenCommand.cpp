#include <host/OpenCommand.h>

#include <filesystem>
#include <memory>
#include <string>

#include <unistd.h>

#include <CLI/CLI.hpp>

#include <host/ItemPath.h>
#include <host/Launching.h>
#include <host/Recogniser.h>

namespace HynHost
{
namespace
{
struct Options
{
    std::string file;
    std::string application;
};

// Whether the item itself is to be started. A disk without permissions of its own marks every file as a program, so a
// medium is none, whatever its permissions say.
bool IsApplication(const std::string& path)
{
    if (!std::filesystem::is_regular_file(path) || path.ends_with(".desktop"))
        return true; // a folder may be a bundle; the launch tells
    return access(path.c_str(), X_OK) == 0 && !Recogniser().Recognise(path).kind;
}

void Open(const Options& options)
{
    const std::string path = ItemPath(kOpenAction, options.file);
    if (!options.application.empty())
        return StartApplication(ItemPath(kOpenAction, options.application), path);
    if (!IsApplication(path))
        return OpenDocument(path);
    if (TryStart(path, {}))
        return;
    std::filesystem::is_directory(path) ? OpenDocument(path) : StartApplication(path, {});
}
} // namespace

void AddOpenCommand(CLI::App& app)
{
    auto options = std::make_shared<Options>();
    CLI::App* command =
        app.add_subcommand("open", "Open a file with its application, or start it when it is an application");
    command->add_option("FILE", options->file, "The file, folder, program, desktop entry or bundle")->required();
    command
        ->add_option("--with", options->application,
                     "The application: a program, desktop entry or bundle (default: the desktop's choice)")
        ->type_name("FILE");
    command->callback([options] { Open(*options); });
}
} // namespace HynHost
