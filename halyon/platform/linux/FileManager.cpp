// References to items of the file system.

#include <halyon/platform/FileManager.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>

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

bool IsStillThere(const FSRef& ref) noexcept
{
    FSRef now = {};
    unsigned mode = 0;
    const bool isPath = ref.szPath[0] == '/' && std::memchr(ref.szPath, 0, sizeof ref.szPath) != nullptr;
    return isPath && Identify(ref.szPath, now, mode) && now.uDevice == ref.uDevice && now.uInode == ref.uInode &&
           now.uBirth == ref.uBirth;
}
} // namespace

OSStatus FSPathMakeRef(const char* pszPath, FSRef* pRef, Boolean* pIsDirectory) noexcept
{
    if (pRef == nullptr)
        return paramErr;
    *pRef = {};
    if (pszPath == nullptr || *pszPath == 0)
        return paramErr;
    char resolved[PATH_MAX];
    if (realpath(pszPath, resolved) == nullptr)
        return errno == ENAMETOOLONG ? pathTooLongErr : fnfErr;
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
    if (!IsStillThere(*pRef))
        return fnfErr;
    const std::size_t length = std::strlen(pRef->szPath);
    if (length >= uSize)
        return pathTooLongErr;
    std::memcpy(pBuffer, pRef->szPath, length + 1);
    return noErr;
}
} // namespace Halyon
