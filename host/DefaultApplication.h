// The desktop's own choice of programs for a document.
#pragma once

#include <string>
#include <vector>

namespace HynHost
{
// The desktop entry of the application that the user's desktop opens the item with; empty when there is none. [any]
[[nodiscard]] std::string DefaultApplication(const std::string& path);

struct Application
{
    std::string name;  // as people see it, in their language
    std::string entry; // its desktop entry
};

// The applications that the user's desktop knows for the item, the one that it would choose first. [any]
[[nodiscard]] std::vector<Application> ApplicationsFor(const std::string& path);
} // namespace HynHost
