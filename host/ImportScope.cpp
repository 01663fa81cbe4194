#include <host/ImportScope.h>

#include <array>
#include <filesystem>
#include <optional>
#include <utility>

#include <unistd.h>

#include <halyon/platform/FileManager.h>
#include <halyon/platform/TovPCMac.h>
#include <halyon/tools/CHynPathHelper.h>
#include <host/HostError.h>
#include <host/PrintableText.h>

using Halyon::CHynPathHelper;

namespace HynHost
{
namespace
{
constexpr std::string_view kAction = "cannot import the folder";

// The path of one of the system's known folders; empty when there is none.
std::string KnownFolder(Halyon::FSVolumeRefNum domain, Halyon::OSType type)
{
    Halyon::FSRef ref{};
    std::array<char, sizeof ref.szPath> path{};
    if (Halyon::FSFindFolder(domain, type, 0, &ref) != Halyon::noErr ||
        Halyon::FSRefMakePath(&ref, path.data(), path.size()) != Halyon::noErr)
        return {};
    return path.data();
}

// Where programs keep their data for the user.
std::string UserLibrary()
{
    return KnownFolder(Halyon::kUserDomain, Halyon::kDomainLibraryFolderType);
}

bool LiesIn(const CTovStringW& path, const std::string& folder)
{
    return !folder.empty() && CHynPathHelper::PathInPath(path, CTovStringW::FromUTF8(folder)) < 0;
}

std::string WhyNotOnVolume(std::uint32_t drive, const std::string& mount)
{
    const std::string at = mount.empty() ? "the startup volume" : "the volume at " + mount;
    switch (drive)
    {
    case kTovDriveRemote:
        return at + " is a network drive; only disks of this computer are imported";
    case kTovDriveOptical:
        return at + " is an optical disc; only fixed and removable disks are imported";
    case kTovDriveMemory:
        return at + " is kept in memory and is gone after a restart; only disks are imported";
    default:
        return at + " is no disk: the system makes up what is in it";
    }
}

// Why a folder may not be searched for media; nothing when it may.
std::optional<std::string> WhyNotSearched(const std::string& folder)
{
    const CTovStringW path = CTovStringW::FromUTF8(folder);
    if (CHynPathHelper::IsValidScanFolder(path))
        return std::nullopt;
    const CTovStringW mount = CHynPathHelper::GetPathDriver(path);
    const std::uint32_t drive = TovGetDriveType(mount);
    if (drive != kTovDriveRemovable && drive != kTovDriveFixed)
        return WhyNotOnVolume(drive, mount.ToUTF8());
    if (LiesIn(path, UserLibrary()))
        return "programs keep their own data there";
    if (LiesIn(path, KnownFolder(Halyon::kLocalDomain, Halyon::kUsersFolderType)))
        return "it is or holds the home of another user; yours is " +
               KnownFolder(Halyon::kLocalDomain, Halyon::kCurrentUserFolderType);
    return "it belongs to the system";
}

// The folder's one path: absolute and without links, so that a second import finds what the first one stored.
std::string FolderPath(const std::string& folder)
{
    std::error_code error;
    const auto path = std::filesystem::canonical(folder, error);
    if (error && CHynPathHelper::IsUNC(CTovStringW::FromUTF8(folder)) != 0)
        throw HostError(kAction, PrintableText(folder),
                        "it is on the network; only disks of this computer are imported");
    if (error)
        throw HostError(kAction, PrintableText(folder), error.message());
    if (!std::filesystem::is_directory(path))
        throw HostError(kAction, PrintableText(folder), "it is not a folder");
    if (!IsUTF8(path.string()))
        throw HostError(kAction, PrintableText(folder), "its path is not valid UTF-8");
    return path.string();
}
void PassWhatMayNotBeSearched(ImportScope& scope, const std::string& folder)
{
    if (auto reason = WhyNotSearched(folder); reason)
        scope.passed.emplace(folder + '/', std::move(*reason));
}

// The folders below the imported one that could not be imported themselves. Only where such folders may be is asked, so
// that an import of a home costs no more than one of its pictures.
void PassSystemFolders(ImportScope& scope)
{
    if (const std::string library = UserLibrary(); !library.empty())
        PassWhatMayNotBeSearched(scope, library);
    std::error_code error;
    for (std::filesystem::directory_iterator at("/", error), end; scope.folder == "/" && at != end; at.increment(error))
    {
        if (!at->is_symlink(error) && at->is_directory(error))
            PassWhatMayNotBeSearched(scope, at->path().string());
    }
}

// What lies in a volume's trash is no longer part of it: a user who has moved a picture there does not miss it.
void PassTrash(ImportScope& scope)
{
    for (const Volume& volume : scope.volumes)
    {
        scope.passed.emplace(volume.mount + "/.Trash/", "");
        scope.passed.emplace(volume.mount + "/.Trash-" + std::to_string(geteuid()) + '/', "");
    }
}

// Mounts on single files and below others are no volumes that a walk meets.
void AddVolumesBelow(ImportScope& scope, const MountedVolumes& mounted)
{
    for (Volume& volume : mounted.Below(scope.folder))
    {
        if (CHynPathHelper::IsRoot(CTovStringW::FromUTF8(volume.mount)) == 0)
            continue;
        if (auto reason = WhyNotSearched(volume.mount); reason)
            scope.passed.emplace(volume.mount + '/', std::move(*reason));
        else
            scope.volumes.push_back(std::move(volume));
    }
}
} // namespace

ImportScope ScopeOfImport(const std::string& folder)
{
    ImportScope scope{FolderPath(folder), {}, {}};
    if (const auto reason = WhyNotSearched(scope.folder); reason)
        throw HostError(kAction, PrintableText(scope.folder), PrintableText(*reason));
    const MountedVolumes mounted;
    scope.volumes.push_back(mounted.At(CHynPathHelper::GetPathDriver(CTovStringW::FromUTF8(scope.folder)).ToUTF8()));
    AddVolumesBelow(scope, mounted);
    PassSystemFolders(scope);
    PassTrash(scope);
    return scope;
}
} // namespace HynHost
