// Arrays and places as the bundle calls make them. Internal to this folder.
#pragma once

#include <string_view>

#include <halyon/platform/CFHolder.h>

namespace Halyon
{
// An array of `values`; takes over their references, also when there is no memory and the result is null.
CFArrayRef CFMakeArray(CFTypeRef* values, std::size_t count) noexcept;

// The place `path`, which is absolute. Null when there is no memory.
CFURLRef CFMakeURL(std::string_view path) noexcept;

// The bytes of the path, zero-terminated. Valid as long as `url`, which may not be null.
std::string_view CFURLPath(CFURLRef url) noexcept;

// `url` followed by "/" and `component`. Null when there is no memory.
CFURLRef CFAppendToURL(CFURLRef url, std::string_view component) noexcept;
} // namespace Halyon
