// Starts applications, as `hynhost open` and the organiser's window do.
#pragma once

#include <string>
#include <string_view>

namespace HynHost
{
inline constexpr std::string_view kOpenAction = "cannot open";

// Starts an application (a program, a desktop entry or a bundle), with a document unless `document` is empty. False
// when it is no application at all. Throws HostError when it cannot be started for another reason. [any]
bool TryStart(const std::string& application, const std::string& document);

// The same, and throws HostError when it is no application. [any]
void StartApplication(const std::string& application, const std::string& document);

// Opens an item with the application that the desktop has chosen for it. Throws HostError when there is none or it
// cannot be started. [any]
void OpenDocument(const std::string& path);
} // namespace HynHost
