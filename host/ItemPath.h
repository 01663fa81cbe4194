// Files as a user names them on the command line.
#pragma once

#include <string>
#include <string_view>

namespace HynHost
{
// The absolute path of an item: its folder without links and "..", its own name as it is, so that a link is itself.
// Throws HostError, which begins with `action`, when there is no such item or its path is not valid UTF-8. [any]
[[nodiscard]] std::string ItemPath(std::string_view action, const std::string& name);
} // namespace HynHost
