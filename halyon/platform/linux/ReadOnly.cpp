// What the caller may do with an item, and the opening of files that finds it out.

#include <halyon/platform/BaseFunction.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <halyon/platform/linux/FileItem.h>

namespace Halyon
{
namespace
{
// noErr when the reference's item is there.
OSStatus Check(const FSRef* ref, unsigned& mode) noexcept
{
    if (ref == nullptr)
        return paramErr;
    return IsStillThere(*ref, mode) ? noErr : fnfErr;
}

// By the rights that the system would use, which differ from the caller's own in a program with changed rights.
bool MayWrite(const FSRef& ref) noexcept
{
    return faccessat(AT_FDCWD, ref.szPath, W_OK, AT_EACCESS) == 0;
}

// Whether the open file is the reference's item and holds data.
bool IsItem(int file, const FSRef& ref) noexcept
{
    struct stat info = {};
    return fstat(file, &info) == 0 && S_ISREG(info.st_mode) && info.st_ino == ref.uInode &&
           (std::uint64_t{major(info.st_dev)} << 32 | minor(info.st_dev)) == ref.uDevice;
}
} // namespace

OSStatus FSGetCatalogInfo(const FSRef* pRef, FSCatalogInfoBitmap uWhich, FSCatalogInfo* pInfo, HFSUniStr255* pName,
                          FSSpec* pSpec, FSRef* pParent) noexcept
{
    if (uWhich != kFSCatInfoUserPrivs || pInfo == nullptr || pName != nullptr || pSpec != nullptr || pParent != nullptr)
        return paramErr;
    unsigned mode = 0;
    const OSStatus status = Check(pRef, mode);
    if (status == noErr)
        pInfo->userPrivileges = MayWrite(*pRef) ? 0 : kioACUserNoMakeChangesMask;
    return status;
}

OSStatus FSGetDataForkName(HFSUniStr255* pName) noexcept
{
    if (pName == nullptr)
        return paramErr;
    pName->length = 0;
    return noErr;
}

OSStatus FSOpenFork(const FSRef* pRef, std::uint32_t uNameLength, const char16_t* /*pName*/, std::int8_t nPermissions,
                    FSIORefNum* pRefNum) noexcept
{
    if (pRefNum == nullptr)
        return paramErr;
    *pRefNum = 0;
    if (uNameLength != 0 || nPermissions < fsRdPerm || nPermissions > fsRdWrPerm)
        return paramErr;
    unsigned mode = 0;
    const OSStatus status = Check(pRef, mode);
    if (status != noErr)
        return status;
    // To open a pipe or a device does something to it, so it is not tried. Non-blocking: what took the file's place
    // since, or who holds it, is not waited for.
    if (!S_ISREG(mode))
        return notAFileErr;
    constexpr int kAccess[] = {O_RDONLY, O_WRONLY, O_RDWR};
    const int file =
        open(pRef->szPath, kAccess[nPermissions - fsRdPerm] | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC);
    if (file < 0)
        return permErr;
    if (!IsItem(file, *pRef))
    {
        close(file);
        return fnfErr;
    }
    *pRefNum = file + 1; // a descriptor may be 0
    return noErr;
}

OSStatus FSCloseFork(FSIORefNum refNum) noexcept
{
    return refNum > 0 && close(refNum - 1) == 0 ? noErr : paramErr;
}

OSStatus FSRefCheckLock(const FSRef* pRef) noexcept
{
    unsigned mode = 0;
    const OSStatus status = Check(pRef, mode);
    if (status != noErr)
        return status;
    struct statx info = {};
    const bool known = statx(AT_FDCWD, pRef->szPath, AT_SYMLINK_NOFOLLOW, STATX_TYPE, &info) == 0;
    return known && (info.stx_attributes & STATX_ATTR_IMMUTABLE) != 0 ? fLckdErr : noErr;
}

OSStatus FSRefIsWritable(const FSRef* pRef, Boolean* pbWritable) noexcept
{
    if (pbWritable == nullptr)
        return paramErr;
    unsigned mode = 0;
    const OSStatus status = Check(pRef, mode);
    if (status == noErr)
        *pbWritable = MayWrite(*pRef) ? 1 : 0;
    return status;
}
} // namespace Halyon
