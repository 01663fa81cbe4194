// References to items of the file system, what may be done with them, and the folders that every system has.
#pragma once

#include <halyon/platform/PlatformTypes.h>

namespace Halyon
{
// One item of the file system: a plain value, copied freely, that holds no descriptor. It remembers where the item lay
// and which item it was. When something else lies there by the time the reference is used, the use fails: a reference
// never acts on another item. An item that was moved is not followed. All zero bytes is no item.
struct FSRef
{
    std::uint64_t uDevice;
    std::uint64_t uInode;
    std::uint64_t uBirth; // tells an item from a later one that got the same number; 0 where the file system cannot
    char szPath[1024];    // absolute, resolved, as the file system spells it (bytes), zero-terminated
};
static_assert(sizeof(FSRef) == 1048);

// Fills `*pRef` for the item at `pszPath` (UTF-8, or whatever bytes the file system uses), following links; a relative
// path starts at the working folder. `*pIsDirectory`, where asked for, becomes 1 for a folder, else 0.
// fnfErr: no such item, or it cannot be reached. pathTooLongErr: its resolved path is longer than 1023 bytes.
// memFullErr: no memory to find it. paramErr: null or empty path, null `pRef`. After a failure `*pRef` is all zero and
// `*pIsDirectory` as it was. [any]
OSStatus FSPathMakeRef(const char* pszPath, FSRef* pRef, Boolean* pIsDirectory) noexcept;

// Writes the item's path with its terminator into `uSize` bytes.
// fnfErr: all zero, gone, or another item by now. pathTooLongErr: it does not fit. paramErr: a null argument, or a size
// of 0. After a failure the buffer holds the empty text, if it has room for a terminator. [any]
OSStatus FSRefMakePath(const FSRef* pRef, char* pBuffer, std::uint32_t uSize) noexcept;

// ---------------------------------------------------------------------------------------------------------------------
// What the caller may do. Asking changes nothing: no item is made, emptied, touched or waited for.
// ---------------------------------------------------------------------------------------------------------------------

using FSCatalogInfoBitmap = std::uint32_t;
inline constexpr FSCatalogInfoBitmap kFSCatInfoUserPrivs = 0x20000;

inline constexpr std::uint8_t kioACUserNoMakeChangesMask = 4;

// The one part of an item's record that is supplied here.
struct FSCatalogInfo
{
    std::uint8_t userPrivileges; // kioACUserNoMakeChangesMask: the caller may not change the item
};

// A name of at most 255 units, not terminated.
struct HFSUniStr255
{
    std::uint16_t length;
    char16_t unicode[255];
};

struct FSSpec; // not supplied here

// Fills the fields of `*pInfo` that `uWhich` asks for. paramErr: null `pRef` or `pInfo`, other fields, and arguments
// behind `pInfo` that are not null. fnfErr: as FSRefMakePath. [any]
OSStatus FSGetCatalogInfo(const FSRef* pRef, FSCatalogInfoBitmap uWhich, FSCatalogInfo* pInfo, HFSUniStr255* pName,
                          FSSpec* pSpec, FSRef* pParent) noexcept;

// The name of the fork that holds a file's data: empty. paramErr for null. [any]
OSStatus FSGetDataForkName(HFSUniStr255* pName) noexcept;

// An open fork; 0 is none.
using FSIORefNum = std::int32_t;
inline constexpr std::int8_t fsRdPerm = 1;
inline constexpr std::int8_t fsWrPerm = 2;
inline constexpr std::int8_t fsRdWrPerm = 3;

// Opens a file's data (the fork whose name is empty) for reading, writing or both. The caller closes it. A file that
// runs as a program cannot be opened for writing. notAFileErr: folders, pipes, devices; permErr: the system refuses;
// fnfErr: as FSRefMakePath; paramErr: null, another fork, other permissions. After a failure `*pRefNum` is 0. [any]
OSStatus FSOpenFork(const FSRef* pRef, std::uint32_t uNameLength, const char16_t* pName, std::int8_t nPermissions,
                    FSIORefNum* pRefNum) noexcept;

// Ends its use. paramErr when it is none. [any]
OSStatus FSCloseFork(FSIORefNum refNum) noexcept;

// ---------------------------------------------------------------------------------------------------------------------
// Folders that every system has.
// ---------------------------------------------------------------------------------------------------------------------

// Whose folder.
using FSVolumeRefNum = std::int16_t;
inline constexpr FSVolumeRefNum kSystemDomain = -32766;
inline constexpr FSVolumeRefNum kLocalDomain = -32765;
inline constexpr FSVolumeRefNum kUserDomain = -32763;
inline constexpr FSVolumeRefNum kClassicDomain = -32762;

// Which folder.
inline constexpr OSType kSystemFolderType = 0x6D616373;        // 'macs', of the system
inline constexpr OSType kDomainLibraryFolderType = 0x646C6962; // 'dlib', data of programs: local or the user's
inline constexpr OSType kDeveloperFolderType = 0x64657666;     // 'devf', of the system
inline constexpr OSType kApplicationsFolderType = 0x61707073;  // 'apps', of the system
inline constexpr OSType kUsersFolderType = 0x75737273;         // 'usrs', local: the homes of all users
inline constexpr OSType kCurrentUserFolderType = 0x63757372;   // 'cusr', local: the caller's home

inline constexpr Boolean kCreateFolder = 1;

// Finds a folder of the system's. A non-zero `bCreate` makes it when it is missing, but only the user's own library; a
// home is never made. fnfErr: there is no such folder here, or it is missing; memFullErr: no memory to find it;
// paramErr: null. After a failure `*pRef` is all zero. [any]
OSStatus FSFindFolder(FSVolumeRefNum domain, OSType type, Boolean bCreate, FSRef* pRef) noexcept;
} // namespace Halyon
