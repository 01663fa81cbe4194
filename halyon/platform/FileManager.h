// References to items of the file system.
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
// paramErr: null or empty path, null `pRef`. After a failure `*pRef` is all zero and `*pIsDirectory` as it was. [any]
OSStatus FSPathMakeRef(const char* pszPath, FSRef* pRef, Boolean* pIsDirectory) noexcept;

// Writes the item's path with its terminator into `uSize` bytes.
// fnfErr: all zero, gone, or another item by now. pathTooLongErr: it does not fit. paramErr: a null argument, or a size
// of 0. After a failure the buffer holds the empty text, if it has room for a terminator. [any]
OSStatus FSRefMakePath(const FSRef* pRef, char* pBuffer, std::uint32_t uSize) noexcept;
} // namespace Halyon
