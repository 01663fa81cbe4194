// References to items of the file system.

#include <halyon/platform/linux/FileItem.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>

#include <halyon/platform/TovPCMac.h>

namespace Halyon
{
namespace
{
// A file system gives a freed inode number to the next item, often at once. Its handle holds the number's generation
// as well; where it makes no handles, the time of birth is what it has, exact to a tick of its clock.
std::uint64_t BirthOf(const char* path, const struct statx& info) noexcept
{
    alignas(file_handle) unsigned char buffer[sizeof(file_handle) + MAX_HANDLE_SZ] = {};
    auto* handle = reinterpret_cast<file_handle*>(buffer);
    handle->handle_bytes = MAX_HANDLE_SZ;
    int mount = 0;
    if (name_to_handle_at(AT_FDCWD, path, handle, &mount, 0) != 0)
        return static_cast<std::uint64_t>(info.stx_btime.tv_sec) * 1'000'000'000 + info.stx_btime.tv_nsec;
    std::uint64_t hash = 0xCBF29CE484222325; // FNV-1a
    for (unsigned i = 0; i < handle->handle_bytes; ++i)
        hash = (hash ^ buffer[offsetof(file_handle, f_handle) + i]) * 0x100000001B3;
    return hash;
}

// Fills all but the path, for the item that lies at `path` itself; false when there is none.
bool Identify(const char* path, FSRef& ref, unsigned& mode) noexcept
{
    struct statx info = {};
    if (statx(AT_FDCWD, path, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, STATX_TYPE | STATX_INO | STATX_BTIME, &info) != 0)
        return false;
    ref.uDevice = std::uint64_t{info.stx_dev_major} << 32 | info.stx_dev_minor;
    ref.uInode = info.stx_ino;
    ref.uBirth = BirthOf(path, info);
    mode = info.stx_mode;
    return true;
}

// The path of the item that `path` names, links resolved but for one at the end. `path` is changed meanwhile.
bool ResolveToItem(char* path, char (&resolved)[PATH_MAX]) noexcept
{
    std::size_t length = std::strlen(path);
    while (length > 1 && path[length - 1] == '/')
        path[--length] = 0;
    char* slash = std::strrchr(path, '/');
    char* name = slash != nullptr ? slash + 1 : path;
    if (*name == 0 || std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0)
        return realpath(path, resolved) != nullptr;
    const char first = *name;
    *name = 0;
    const bool found = realpath(slash != nullptr ? path : ".", resolved) != nullptr;
    *name = first;
    if (!found)
        return false;
    std::size_t folder = std::strlen(resolved);
    if (folder + std::strlen(name) + 2 > sizeof resolved)
        return false;
    if (resolved[folder - 1] != '/')
        resolved[folder++] = '/';
    std::memcpy(resolved + folder, name, std::strlen(name) + 1);
    return true;
}
} // namespace

bool IsStillThere(const FSRef& ref, unsigned& mode) noexcept
{
    FSRef now = {};
    const bool isPath = ref.szPath[0] == '/' && std::memchr(ref.szPath, 0, sizeof ref.szPath) != nullptr;
    return isPath && Identify(ref.szPath, now, mode) && now.uDevice == ref.uDevice && now.uInode == ref.uInode &&
           now.uBirth == ref.uBirth;
}

bool BytesOfPath(const char16_t* path, char (&bytes)[PATH_MAX]) noexcept
{
    const std::size_t length = path != nullptr ? tov_wcslen(path) : 0;
    const std::size_t size = TovTextToUTF8(path, length, bytes, sizeof bytes - 1);
    if (length == 0 || size >= sizeof bytes)
        return false;
    bytes[size] = 0;
    return true;
}

bool MakeItemRef(const char16_t* path, FSRef& ref) noexcept
{
    ref = {};
    char bytes[PATH_MAX];
    char resolved[PATH_MAX];
    struct stat info = {};
    if (!BytesOfPath(path, bytes) || lstat(bytes, &info) != 0) // with a separator at its end, a file is none
        return false;
    if (!ResolveToItem(bytes, resolved))
        return false;
    const std::size_t length = std::strlen(resolved);
    FSRef item = {};
    unsigned mode = 0;
    if (length >= sizeof item.szPath || !Identify(resolved, item, mode))
        return false;
    std::memcpy(item.szPath, resolved, length + 1);
    ref = item;
    return true;
}

OSStatus FSPathMakeRef(const char* pszPath, FSRef* pRef, Boolean* pIsDirectory) noexcept
{
    if (pRef == nullptr)
        return paramErr;
    *pRef = {};
    if (pszPath == nullptr || *pszPath == 0)
        return paramErr;
    char resolved[PATH_MAX];
    if (realpath(pszPath, resolved) == nullptr)
    {
        if (errno == ENOMEM)
            return memFullErr;
        return errno == ENAMETOOLONG ? pathTooLongErr : fnfErr;
    }
    const std::size_t length = std::strlen(resolved);
    if (length >= sizeof pRef->szPath)
        return pathTooLongErr;
    FSRef ref = {};
    unsigned mode = 0;
    // A link at a resolved path took its place a moment ago.
    if (!Identify(resolved, ref, mode) || S_ISLNK(mode))
        return fnfErr;
    std::memcpy(ref.szPath, resolved, length + 1);
    *pRef = ref;
    if (pIsDirectory != nullptr)
        *pIsDirectory = S_ISDIR(mode) ? 1 : 0;
    return noErr;
}

OSStatus FSRefMakePath(const FSRef* pRef, char* pBuffer, std::uint32_t uSize) noexcept
{
    if (pBuffer == nullptr || uSize == 0)
        return paramErr;
    pBuffer[0] = 0;
    if (pRef == nullptr)
        return paramErr;
    unsigned mode = 0;
    if (!IsStillThere(*pRef, mode))
        return fnfErr;
    const std::size_t length = std::strlen(pRef->szPath);
    if (length >= uSize)
        return pathTooLongErr;
    std::memcpy(pBuffer, pRef->szPath, length + 1);
    return noErr;
}
} // namespace Halyon
