// A loadable module: its file opened, and its entry points looked up by name.
//
// For hosts that make components. Not for programs and documents (LaunchServices.h).
//
//     ModuleFile file;
//     std::string reason;
//     if (!file.Open("HynSQ.so", &reason))
//         return Report(reason);
//     auto getClassObject = reinterpret_cast<HynGetClassObjectProc>(file.Find(kHynGetClassObjectName));
//
// What was opened is closed with the object, so every component of the module must be gone by then.
#pragma once

#include <string>

#include <halyon/platform/PlatformTypes.h>

namespace Halyon
{
class ModuleFile
{
public:
    ModuleFile() noexcept = default;
    ~ModuleFile();
    ModuleFile(const ModuleFile&) = delete;
    ModuleFile& operator=(const ModuleFile&) = delete;

    // Opens `path`, a name in the system's own bytes; without a separator it is looked for where the system keeps its
    // libraries. What the module exports stays private to whoever asks with Find. Opened before: closed first. On
    // failure nothing is open, and `*reason`, unless null, is what the system says. [owner]
    bool Open(const char* path, std::string* reason);

    // The address of what the module exports under `name`; null when it exports no such name or nothing is open. [any]
    [[nodiscard]] void* Find(const char* name) const noexcept;

private:
    void Close() noexcept;

    void* m_handle = nullptr;
};
} // namespace Halyon
