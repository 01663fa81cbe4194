// `hynhost` as a user runs it: a process of its own, with its output caught, or on a terminal.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace HalyonTest
{
struct HostOptions
{
    std::map<std::string, std::string> environment = {}; // added to this process's own
    std::string input = {};                              // on standard input
    std::optional<unsigned short> terminalColumns = {};  // on a terminal of this width, else in files
    std::optional<uid_t> user = {};                      // only root can be another
    std::optional<unsigned long> mostFileBytes = {};     // no file grows beyond
};

struct HostOutcome
{
    int status = -1; // exit status, or 128 and the signal's number
    std::string out; // on a terminal: all that it showed
    std::string err;
};

class HostProcess
{
public:
    explicit HostProcess(const std::vector<std::string>& arguments, const HostOptions& options = {});
    ~HostProcess();
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;

    // On a terminal: reads until it shows `text`; false when the program ended without. Types on it.
    bool WaitFor(std::string_view text);
    void Type(std::string_view keys) const;
    // Ends it at once, without a word to it.
    void Kill() const;
    [[nodiscard]] bool HasEnded() const;
    // Waits for the end and takes all that was written.
    HostOutcome Finish();

private:
    // Reads what has come, waiting for some; false at the end.
    bool ReadTerminal();

    pid_t m_pid = -1;
    int m_terminal = -1;
    std::array<int, 3> m_streams{-1, -1, -1}; // files in memory, by the program's own numbers
    HostOutcome m_outcome;
};

// Whether the program can be run as another user: root can, when every folder above the program lets others through.
bool CanRunAsSomebodyElse();

HostOutcome RunHost(const std::vector<std::string>& arguments, const HostOptions& options = {});
} // namespace HalyonTest
