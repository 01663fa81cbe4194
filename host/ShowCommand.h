// `hynhost show`: the organiser's window. Also the words of its command line, which the window's own program reads
// again.
#pragma once

#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace HynHost
{
struct ShowOptions
{
    std::string folder;  // to import; empty: none
    std::string catalog; // empty: the user's own
    bool trace = false;
    bool traceScroll = false;
    bool traceQuit = false;
};

// Adds the options to a command, which fills `options` when it is parsed. [any]
void AddShowOptions(CLI::App& command, ShowOptions& options);

// Adds the subcommand to the program's options; it runs when the command line names it, and does not come back: the
// window's program takes the process over, so that no other subcommand loads the window system's libraries. Throws
// HostError when that program cannot be started. [main]
void AddShowCommand(CLI::App& app);
} // namespace HynHost
