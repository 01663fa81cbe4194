// Icons: from files and bundles, and to bytes and back.
//
// For icons that are kept, in a database for instance. What only shows an icon on screen takes the toolkit's
// (`QIconFromIconRef`).
#pragma once

#include <halyon/platform/Interface.h>

namespace Halyon
{
class CHynIconHelper2
{
public:
    // Writes the whole icon, every size of it, into a new array at `*out`, which the caller frees with `delete[]`.
    // Returns its length in bytes; 0 for null and when there is no memory, and then `*out` is null, if there is one.
    // [any]
    static std::uint32_t SaveIcon(OpaqueIconRef* icon, unsigned char** out) noexcept;

    // A new icon from what SaveIcon wrote, pixel for pixel; the caller gives it back with DestroyIcon. Null for damaged
    // data. [any]
    static OpaqueIconRef* LoadIcon(unsigned char* data, std::uint32_t size) noexcept;

    // A new icon from the resource of that name, suffix included, in a bundle (a CFBundleRef). Null for null, for no
    // such resource, and for one that is no icon. [any]
    static OpaqueIconRef* LoadIcon(const char16_t* name, void* bundle) noexcept;

    // A new icon from an icon file or from a picture of at most 1,024 pixels a side. Null when it is none
    // (ReadIconFromFSRef says why). [any]
    static OpaqueIconRef* CreateIconFromFile(const FSRef* ref) noexcept;

    // Gives an icon back. 1, or 0 for null. [any]
    static int DestroyIcon(OpaqueIconRef* icon) noexcept;
};
} // namespace Halyon
