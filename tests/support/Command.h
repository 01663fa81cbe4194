// Programs that a test runs through the shell, and what files hold.
#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <sys/wait.h>

namespace HalyonTest
{
struct Ended
{
    int status = -1; // -1: it was not started, or was killed
    std::string output;
};

inline Ended RunShell(const std::string& command)
{
    Ended ended;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        return ended;
    char part[4096];
    while (const std::size_t count = std::fread(part, 1, sizeof part, pipe))
        ended.output.append(part, count);
    const int status = pclose(pipe);
    ended.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return ended;
}

// What a command prints; the word "failed" is in front of it when it does not end well.
inline std::string OutputOf(const std::string& command)
{
    const Ended ended = RunShell(command);
    return (ended.status == 0 ? "" : "failed: ") + ended.output;
}

inline std::string ContentOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// What the formatter of manual pages finds wrong with one.
inline std::string ManualPageWarnings(const std::string& path)
{
    return OutputOf("LC_ALL=C man --warnings -E UTF-8 -l '" + path + "' 2>&1 >/dev/null");
}
} // namespace HalyonTest
