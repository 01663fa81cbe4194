// References to items of the file system.

#include <halyon/platform/FileManager.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include <sys/stat.h>

namespace Halyon
{
OSStatus FSPathMakeRef(const char* pszPath, FSRef* pRef, Boolean* pIsDirectory) noexcept
{
    if (pRef == nullptr)
        return paramErr;
    std::memset(pRef, 0, sizeof *pRef);
    if (pszPath == nullptr || *pszPath == 0)
        return paramErr;
    char resolved[PATH_MAX];
    if (realpath(pszPath, resolved) == nullptr)
        return errno == ENAMETOOLONG ? pathTooLongErr : fnfErr;
    const std::size_t length = std::strlen(resolved);
    if (length >= sizeof pRef->szPath)
        return pathTooLongErr;
    struct stat info = {};
    if (lstat(resolved, &info) != 0)
        return fnfErr;
    pRef->uDevice = info.st_dev;
    pRef->uInode = info.st_ino;
    std::memcpy(pRef->szPath, resolved, length + 1);
    if (pIsDirectory != nullptr)
        *pIsDirectory = S_ISDIR(info.st_mode) ? 1 : 0;
    return noErr;
}

OSStatus FSRefMakePath(const FSRef* pRef, char* pBuffer, std::uint32_t uSize) noexcept
{
    if (pBuffer == nullptr || uSize == 0)
        return paramErr;
    pBuffer[0] = 0;
    if (pRef == nullptr)
        return paramErr;
    struct stat info = {};
    if (pRef->szPath[0] == 0 || lstat(pRef->szPath, &info) != 0 || info.st_dev != pRef->uDevice ||
        info.st_ino != pRef->uInode)
        return fnfErr;
    const std::size_t length = std::strlen(pRef->szPath);
    if (length >= uSize)
        return pathTooLongErr;
    std::memcpy(pBuffer, pRef->szPath, length + 1);
    return noErr;
}
} // namespace Halyon
