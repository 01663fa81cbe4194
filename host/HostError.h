// What a subcommand throws when it cannot go on: a message that names the action, the object and the system's reason.
//
//     throw HostError("cannot open", path, "it is no catalogue");
//     ThrowSystemError("cannot open", path, errno);
//
// The program prints it on standard error and ends with status 1. Not for what concerns one file of many: that is
// collected and reported at the end.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace HynHost
{
class HostError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;

    // "ACTION OBJECT: REASON"
    HostError(std::string_view action, std::string_view object, std::string_view reason);
};

// Throws a HostError whose reason is the text of the system's error number. [any]
[[noreturn]] void ThrowSystemError(std::string_view action, std::string_view object, int errorNumber);

// The text of the system's error number ("Permission denied"). [any]
[[nodiscard]] std::string SystemReason(int errorNumber);
} // namespace HynHost
