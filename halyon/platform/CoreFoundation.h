// Counted text values of the platform, and the calls to make, read and release them.
//
// Hosts meet them where a string crosses to the platform (`CTovStringW::StringRef`). Not for text of one's own: that is
// what CTovStringW is for.
#pragma once

#include <halyon/platform/PlatformTypes.h>

namespace Halyon
{
struct __CFString;
struct __CFBundle;

// An immutable UTF-16 text, any units, zero units included.
using CFStringRef = const __CFString*;
// A bundle folder.
using CFBundleRef = __CFBundle*;
// Any counted value.
using CFTypeRef = const void*;
// Always null: the one allocator there is.
using CFAllocatorRef = const void*;
using CFIndex = std::int64_t;
using CFStringEncoding = std::uint32_t;
// Seconds since 2001-01-01 00:00:00 UTC.
using CFAbsoluteTime = double;

inline constexpr CFStringEncoding kCFStringEncodingUTF8 = 0x08000100;

// Units `location` up to `location + length`.
struct CFRange
{
    CFIndex location;
    CFIndex length;
};

// A new text of `nLength` units, with one reference for the caller; null when there is no memory, when `nLength` is
// negative, or when `pCharacters` is null and `nLength` is not 0. The units are copied. [any]
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const char16_t* pCharacters,
                                         CFIndex nLength) noexcept;

// The same from a zero-terminated text in `encoding` (UTF-8 is the only one). Null also for null, for text that is not
// well-formed, and for other encodings: a path that is no text gives no text that would name another item. [any]
CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* psz, CFStringEncoding encoding) noexcept;

// Length in units. 0 for null. [any]
CFIndex CFStringGetLength(CFStringRef string) noexcept;

// Copies the units of `range`, without a terminator. A range that runs beyond the end is cut there; one that starts
// outside the text, and a null text, copy nothing. [any]
void CFStringGetCharacters(CFStringRef string, CFRange range, char16_t* pBuffer) noexcept;

// Writes the text in `encoding` (UTF-8 is the only one) with a terminator; returns 1, or 0 when it does not fit into
// `nSize` bytes, when it has a zero unit, which would end it early, and for null and for other encodings. Then the
// buffer holds the empty text (if it has room for a terminator), so that a cut path never names another item. An
// unpaired surrogate becomes U+FFFD. [any]
Boolean CFStringGetCString(CFStringRef string, char* pBuffer, CFIndex nSize, CFStringEncoding encoding) noexcept;

// Takes a reference; returns its argument, which may not be null. [any]
CFTypeRef CFRetain(CFTypeRef value) noexcept;

// Gives a reference back; the value goes with the last. Null is not an error. [any]
void CFRelease(CFTypeRef value) noexcept;
} // namespace Halyon
