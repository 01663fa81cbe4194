// Runs one check in a process of its own, so that whatever the module does there (crash, hang, exit) is an outcome of
// the check and nothing more.
//
// The process is this program again, with --run-check and the descriptor of a piece of memory that both share.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <validate/Check.h>

namespace HynValidate
{
struct Request
{
    std::string module;               // its real path
    std::vector<std::string> classes; // as --class takes them
    std::chrono::milliseconds limit;
};

// Starts the process and waits for its end, at most until the limit; nothing that it started is left. Throws
// std::system_error when the system gives no process. [main]
Outcome RunCheck(const Check& check, const Request& request);

// Inside the process: runs the check and puts its outcome into the shared memory; the exit status. [main]
int RunInside(const Check& check, const Request& request, int channel);
} // namespace HynValidate
