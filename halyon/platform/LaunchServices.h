// Items as the desktop shows them.
#pragma once

#include <halyon/platform/CoreFoundation.h>
#include <halyon/platform/FileManager.h>

namespace Halyon
{
// The name that people see for the item, in `*pName`, which the caller releases: the startup volume's label for "/"
// (`System` when it has none), else the last component, where what is not text becomes U+FFFD.
// fnfErr: as FSRefMakePath. memFullErr: no memory. paramErr: null. After a failure `*pName` is null. [any]
OSStatus LSCopyDisplayNameForRef(const FSRef* pRef, CFStringRef* pName) noexcept;
} // namespace Halyon
