// `hynhost open`: opens a file with its application, or starts an application.
#pragma once

namespace CLI
{
class App;
}

namespace HynHost
{
// Adds the subcommand to the program's options; it runs when the command line names it. [main]
void AddOpenCommand(CLI::App& app);
} // namespace HynHost
