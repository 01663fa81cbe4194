// The command lines of desktop entries. Internal to the platform.
#pragma once

#include <string>
#include <vector>

namespace Halyon
{
// A program to start.
struct LaunchCommand
{
    std::string program;                // its file
    std::vector<std::string> arguments; // its name first
    std::string folder;                 // its working folder; empty for the caller's
};

// The commands that open `documents` (absolute paths) with the entry in the file `path`: one, or one for each document
// when the program takes a single one. `parameters` come last. Empty when it is no entry of an application, when its
// program is missing, and when it needs a terminal and there is none. Throws std::bad_alloc.
std::vector<LaunchCommand> CommandsOfDesktopEntry(const char* path, const std::vector<std::string>& documents,
                                                  const std::vector<std::string>& parameters);
} // namespace Halyon
