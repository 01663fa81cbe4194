// The command line that the programs of the database benchmark share.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "../Runner.h"
#include "Suite.h"

namespace Bench
{
struct Options
{
    std::string module = HALYON_MODULE;
    std::string folder;
    std::string json;
    std::string only;
    int rounds = 11;
    bool noPeers = false;
    bool processorTime = false;
    std::size_t part = 1;
};

// Reads the options, makes a folder for the files, runs the works that `works` gives for it and writes the table. The
// folder is removed again. The program's exit status.
int RunProgram(
    int argc, char** argv, const std::string& description,
    const std::function<std::vector<Work>(const Options& options, const std::filesystem::path& folder)>& works);
} // namespace Bench
