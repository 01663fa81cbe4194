// What may be done with an item, and what is done to many.
#pragma once

#include <halyon/platform/FileManager.h>

namespace Halyon
{
// noErr when the item is not locked: nobody, whoever may write to it, can change a locked one. fLckdErr when it is;
// fnfErr: as FSRefMakePath. [any]
OSStatus FSRefCheckLock(const FSRef* pRef) noexcept;

// Stores whether the caller may write to the item, by its permissions and its volume's. fnfErr: as FSRefMakePath;
// paramErr: null; then nothing is stored. [any]
OSStatus FSRefIsWritable(const FSRef* pRef, Boolean* pbWritable) noexcept;

// Moves the items to the desktop's trash, from where the desktop shows, restores and at last deletes them: those of the
// home volume to the user's own, those of another volume to one on that volume. A link is moved itself. Nothing is ever
// deleted or copied: an item that cannot be moved stays where it is, and the others are moved all the same. Nobody is
// asked. Returns the first failure, noErr when there was none.
// fnfErr: as FSRefMakePath. permErr: the caller may not move it, or its volume has no trash that is the caller's own.
// ioErr: the system refuses. memFullErr: no memory. paramErr: null. [any]
OSStatus FEMoveFilesToTrash(std::uint32_t uCount, const FSRef* pRefs) noexcept;
} // namespace Halyon
