#include <host/ImportCommand.h>

#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include <host/Catalog.h>

namespace HynHost
{
void AddImportCommand(CLI::App& app)
{
    struct Options
    {
        std::string folder;
        std::string catalog;
    };
    auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("import", "Bring a folder's media files into the catalogue");
    command->add_option("FOLDER", options->folder, "The folder")->required();
    command->add_option("--catalog", options->catalog, "The catalogue file")->type_name("FILE");
    command->callback(
        [options] {
            Catalog catalog(options->catalog.empty() ? Catalog::DefaultFile() : options->catalog,
                            Catalog::Mode::Create);
        });
}
} // namespace HynHost
