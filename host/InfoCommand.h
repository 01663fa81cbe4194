// `hynhost info`: tells about one file.
#pragma once

namespace CLI
{
class App;
}

namespace HynHost
{
// Adds the subcommand to the program's options; it runs when the command line names it. [main]
void AddInfoCommand(CLI::App& app);
} // namespace HynHost
