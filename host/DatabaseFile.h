// A file that is to be opened as a database, looked at before the engine does: the engine tells every refusal by the
// same code, and makes a file of any name that is mistyped.
#pragma once

#include <string>
#include <string_view>

namespace HynHost
{
struct DatabaseFile
{
    std::string path; // absolute: the engine takes some relative names for something else than a file
    bool exists = false;
};

// Throws HostError, with what is attempted ("cannot open the catalogue"), when the name is not valid UTF-8, or the file
// is there but is no regular one, cannot be read or does not begin as a database does. [any]
[[nodiscard]] DatabaseFile LookAtDatabaseFile(std::string_view action, const std::string& name);

// Whether it is a name that the engine reads itself ("file:media.db?vfs=ceph"). What it names need not be a file of
// this machine, so it cannot be looked at. [any]
[[nodiscard]] bool IsEngineName(std::string_view name) noexcept;

// Such a name for opening what is there: unless it says how, it gets a mode that makes nothing. Throws HostError when
// it is not valid UTF-8. [any]
[[nodiscard]] std::string EngineName(std::string_view action, std::string name, bool mayMake);
} // namespace HynHost
