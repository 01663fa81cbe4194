// `hynhost import`: brings a folder's media files into the catalogue.
#pragma once

namespace CLI
{
class App;
}

namespace HynHost
{
// Adds the subcommand to the program's options; it runs when the command line names it. [main]
void AddImportCommand(CLI::App& app);
} // namespace HynHost
