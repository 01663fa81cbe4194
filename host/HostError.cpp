#include <host/HostError.h>

#include <system_error>

namespace HynHost
{
namespace
{
std::string Join(std::string_view action, std::string_view object, std::string_view reason)
{
    std::string text;
    text.append(action).append(" ").append(object).append(": ").append(reason);
    return text;
}
} // namespace

HostError::HostError(std::string_view action, std::string_view object, std::string_view reason)
    : std::runtime_error(Join(action, object, reason))
{
}

void ThrowSystemError(std::string_view action, std::string_view object, int errorNumber)
{
    throw HostError(action, object, SystemReason(errorNumber));
}

std::string SystemReason(int errorNumber)
{
    return std::generic_category().message(errorNumber);
}
} // namespace HynHost
