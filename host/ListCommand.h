// `hynhost list`: shows what the catalogue holds.
#pragma once

namespace CLI
{
class App;
}

namespace HynHost
{
// Adds the subcommand to the program's options; it runs when the command line names it. [main]
void AddListCommand(CLI::App& app);
} // namespace HynHost
