// Folders that every system has, and the names that people see.

#include <halyon/platform/FileManager.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include <fcntl.h>
#include <linux/fs.h>
#include <pwd.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <halyon/platform/LaunchServices.h>
#include <halyon/platform/TovPCMac.h>
#include <halyon/platform/linux/FileItem.h>

namespace Halyon
{
namespace
{
using PathBuffer = char[PATH_MAX];

// `folder` and `rest` one behind the other; false when they do not fit.
bool Join(PathBuffer& path, const char* folder, const char* rest) noexcept
{
    const std::size_t length = std::strlen(folder);
    if (length + std::strlen(rest) >= sizeof path)
        return false;
    std::memcpy(path, folder, length);
    std::memcpy(path + length, rest, std::strlen(rest) + 1);
    return true;
}

// An absolute path from the environment; null for none, and in a program that runs with more rights than its caller.
const char* FromEnvironment(const char* name) noexcept
{
    const char* path = secure_getenv(name);
    return path != nullptr && path[0] == '/' ? path : nullptr;
}

bool HomeFolder(PathBuffer& path) noexcept
{
    if (const char* home = FromEnvironment("HOME"))
        return Join(path, home, "");
    passwd entry = {};
    passwd* found = nullptr;
    char texts[4096];
    return getpwuid_r(geteuid(), &entry, texts, sizeof texts, &found) == 0 && found != nullptr &&
           entry.pw_dir[0] == '/' && Join(path, entry.pw_dir, "");
}

bool IsHere(const char* path) noexcept
{
    struct stat info = {};
    return stat(path, &info) == 0 && S_ISDIR(info.st_mode);
}

bool UserLibrary(PathBuffer& path) noexcept
{
    if (const char* data = FromEnvironment("XDG_DATA_HOME"))
        return Join(path, data, "");
    PathBuffer home;
    return HomeFolder(home) && IsHere(home) && Join(path, home, "/.local/share");
}

// Makes what is missing of the path, for its user alone.
void MakeFolders(PathBuffer& path) noexcept
{
    for (char* slash = std::strchr(path + 1, '/'); slash != nullptr; slash = std::strchr(slash + 1, '/'))
    {
        *slash = 0;
        mkdir(path, S_IRWXU);
        *slash = '/';
    }
    mkdir(path, S_IRWXU);
}

struct FixedFolder
{
    FSVolumeRefNum domain;
    OSType type;
    const char* path;
};

constexpr FixedFolder kFixedFolders[] = {
    {kSystemDomain, kSystemFolderType, "/usr"},        {kLocalDomain, kDomainLibraryFolderType, "/var"},
    {kSystemDomain, kDeveloperFolderType, "/usr/src"}, {kSystemDomain, kApplicationsFolderType, "/opt"},
    {kLocalDomain, kUsersFolderType, "/home"},
};

// The label of the file system that "/" lies on. It may hold any bytes; one with a slash would not be one component.
bool RootLabel(char (&label)[FSLABEL_MAX + 1]) noexcept
{
    std::memset(label, 0, sizeof label);
    const int root = open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (root < 0)
        return false;
    const bool known = ioctl(root, FS_IOC_GETFSLABEL, label) == 0;
    close(root);
    for (char& c : label)
        c = c == '/' ? ':' : c;
    return known && label[0] != 0;
}

CFStringRef TextOf(const char* bytes) noexcept
{
    char16_t units[sizeof FSRef::szPath];
    const std::size_t length = TovTextFromUTF8(bytes, std::strlen(bytes), units, std::size(units));
    return CFStringCreateWithCharacters(nullptr, units, static_cast<CFIndex>(length));
}
} // namespace

OSStatus FSFindFolder(FSVolumeRefNum domain, OSType type, Boolean bCreate, FSRef* pRef) noexcept
{
    if (pRef == nullptr)
        return paramErr;
    *pRef = {};
    PathBuffer path = "";
    if (domain == kUserDomain && type == kDomainLibraryFolderType)
    {
        if (UserLibrary(path) && bCreate != 0 && !IsHere(path))
            MakeFolders(path);
    }
    else if (domain == kLocalDomain && type == kCurrentUserFolderType)
    {
        HomeFolder(path);
    }
    for (const FixedFolder& folder : kFixedFolders)
    {
        if (folder.domain == domain && folder.type == type)
            Join(path, folder.path, "");
    }
    Boolean isFolder = 0;
    FSRef ref = {};
    const OSStatus status = FSPathMakeRef(path, &ref, &isFolder);
    if (status != noErr || isFolder == 0)
        return status == memFullErr ? memFullErr : fnfErr;
    *pRef = ref;
    return noErr;
}

OSStatus LSCopyDisplayNameForRef(const FSRef* pRef, CFStringRef* pName) noexcept
{
    if (pName == nullptr)
        return paramErr;
    *pName = nullptr;
    if (pRef == nullptr)
        return paramErr;
    unsigned mode = 0;
    if (!IsStillThere(*pRef, mode))
        return fnfErr;
    const char* name = std::strrchr(pRef->szPath, '/') + 1;
    char label[FSLABEL_MAX + 1];
    if (*name == 0)
        name = RootLabel(label) ? label : "System";
    *pName = TextOf(name);
    return *pName != nullptr ? noErr : memFullErr;
}
} // namespace Halyon
