// `hynhost trash`: moves files to the desktop's trash.
#pragma once

namespace CLI
{
class App;
}

namespace HynHost
{
// Adds the subcommand to the program's options; it runs when the command line names it. [main]
void AddTrashCommand(CLI::App& app);
} // namespace HynHost
