// `hynhost` as a user runs it: a process of its own, with its output caught, or on a terminal.
#pragma once

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
    std::optional<unsigned short> terminalColumns = {};  // on a terminal of this width, else on pipes
    std::optional<uid_t> user = {};                      // only root can be another
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

    // Reads until standard output shows `text`; false when the program ended without.
    bool WaitFor(std::string_view text);
    // Types on the terminal.
    void Type(std::string_view keys) const;
    // Reads the rest and waits for the end.
    HostOutcome Finish();

private:
    // Reads what has come, waiting for some; false at the end of both.
    bool Read();

    pid_t m_pid = -1;
    int m_out = -1; // also the terminal
    int m_err = -1;
    HostOutcome m_outcome;
};

HostOutcome RunHost(const std::vector<std::string>& arguments, const HostOptions& options = {});
} // namespace HalyonTest
