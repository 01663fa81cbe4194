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
} // namespace Halyon
