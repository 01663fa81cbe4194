// What one import covers: a folder, the volumes that its files lie on, and the folders below it that are not entered.
#pragma once

#include <string>
#include <vector>

#include <host/FolderWalk.h>
#include <host/Volumes.h>

namespace HynHost
{
struct ImportScope
{
    std::string folder;               // absolute, without links
    std::vector<Volume> volumes;      // the folder's own, then those mounted below it, the outer before the inner
    FolderWalk::PassedFolders passed; // below it, with the reasons
};

// The scope of a folder as a user names it. Throws HostError, with the reason in plain words, when there is no such
// folder or it may not be searched for media (CHynPathHelper::IsValidScanFolder). [any]
[[nodiscard]] ImportScope ScopeOfImport(const std::string& folder);
} // namespace HynHost
