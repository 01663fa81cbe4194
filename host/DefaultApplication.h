// The desktop's own choice of a program for a document.
#pragma once

#include <string>

namespace HynHost
{
// The desktop entry of the application that the user's desktop opens the item with; empty when there is none. [any]
[[nodiscard]] std::string DefaultApplication(const std::string& path);
} // namespace HynHost
