// `hynhost sql`: runs SQL statements on a database file.
#pragma once

namespace CLI
{
class App;
}

namespace HynHost
{
// Adds the subcommand to the program's options; it runs when the command line names it. [main]
void AddSqlCommand(CLI::App& app);
} // namespace HynHost
