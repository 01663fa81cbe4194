// Items as the desktop shows them, and starting applications. The latter is in the library Tools.
#pragma once

#include <halyon/platform/CoreFoundation.h>
#include <halyon/platform/FileManager.h>

namespace Halyon
{
// The name that people see for the item, in `*pName`, which the caller releases: the startup volume's label for "/"
// (`System` when it has none), else the last component, where what is not text becomes U+FFFD.
// fnfErr: as FSRefMakePath. memFullErr: no memory. paramErr: null. After a failure `*pName` is null. [any]
OSStatus LSCopyDisplayNameForRef(const FSRef* pRef, CFStringRef* pName) noexcept;

// What to start.
struct LSLaunchFSRefSpec
{
    const FSRef* appRef;            // the application
    std::uint32_t numDocs;          // number of items
    const FSRef* itemRefs;          // the documents to open; null for none
    const char16_t* passThruParams; // parameters in one text; null for none
    OptionBits launchFlags;         // 1, the usual launch
    void* asyncRefCon;              // not used
};

inline constexpr OSStatus kLSUnknownErr = -10810;          // the system refuses to start it
inline constexpr OSStatus kLSNotAnApplicationErr = -10811; // nothing here that could be started

// Starts an application: a file that may be executed, an application's desktop entry (`.desktop`, with its field codes
// filled in), or a bundle folder (the program in Contents/Linux, else in Contents/MacOS, that is called like the folder
// or is the only one). The documents become its arguments, as paths or as the entry asks for them; an entry that takes
// one document is started once for each. Items that are gone or all zero bytes are left out. The parameters follow,
// split at blanks (space, tab), with double quotes to group; nothing is expanded. With parameters, an item that is the
// application itself is no document.
//
// The application is not the caller's child, outlives it, and is never waited for, but that it could be started is
// known when the call returns. `*pLaunched`, where asked for, becomes the application.
// fnfErr: as FSRefMakePath. kLSNotAnApplicationErr: it is nothing of the kind, an entry's program is missing, or needs
// a terminal and there is none. kLSUnknownErr: the system cannot start it. memFullErr: no memory. paramErr: null. [any]
OSStatus LSOpenFromRefSpec(const LSLaunchFSRefSpec* pSpec, FSRef* pLaunched) noexcept;
} // namespace Halyon
