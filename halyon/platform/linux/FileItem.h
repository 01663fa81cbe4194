// What the calls on files share. Internal to this folder.
#pragma once

#include <climits>

#include <halyon/platform/FileManager.h>

namespace Halyon
{
// Whether the item of the reference still lies at its path; then `mode` is its file mode.
bool IsStillThere(const FSRef& ref, unsigned& mode) noexcept;

// The path as the file system takes it; false for null, the empty path, and one that is too long for the system.
bool BytesOfPath(const char16_t* path, char (&bytes)[PATH_MAX]) noexcept;

// As FSPathMakeRef, but a link at the end is the item. After a failure `ref` is all zero.
bool MakeItemRef(const char16_t* path, FSRef& ref) noexcept;
} // namespace Halyon
