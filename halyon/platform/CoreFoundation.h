// Counted values of the platform: texts, arrays, places in the file system, bundles; the calls to make, read and
// release them.
//
// Hosts meet them where a string crosses to the platform (`CTovStringW::StringRef`) and where a bundle is handed over.
// Not for text and paths of one's own: those are CTovStringW's and CHynPathHelper's, and CHynPubTools knows the folders
// of a bundle. A call whose name says Create or Copy gives one reference, which the caller releases.
#pragma once

#include <halyon/platform/PlatformTypes.h>

namespace Halyon
{
struct FSRef; // FileManager.h
struct __CFString;
struct __CFArray;
struct __CFURL;
struct __CFBundle;

// An immutable UTF-16 text, any units, zero units included.
using CFStringRef = const __CFString*;
// An immutable list of counted values, which it keeps alive.
using CFArrayRef = const __CFArray*;
// An absolute path, in the bytes that the file system uses, whether something lies there or not.
using CFURLRef = const __CFURL*;
// A bundle: a folder with the folder Contents in it, and there the folder Resources with one folder NAME.lproj for each
// localisation. NAME is an identifier of a language with script, region or variant as it has them (ja, pt_BR, zh-Hant,
// ca_ES@valencia), or the language's English name (Japanese).
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

// Number of values. 0 for null. [any]
CFIndex CFArrayGetCount(CFArrayRef array) noexcept;

// The value at `nIndex`; the array keeps its reference. Null for a null array and out of range. [any]
CFTypeRef CFArrayGetValueAtIndex(CFArrayRef array, CFIndex nIndex) noexcept;

// The place of an item; null when it is gone or another item by now, and when there is no memory. [any]
CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* pRef) noexcept;

// Makes a reference to the item that lies there; returns 1, or 0 when there is none. [any]
Boolean CFURLGetFSRef(CFURLRef url, FSRef* pRef) noexcept;

// The place below `url` that `component` leads to; it may have several components. `bIsDirectory` changes nothing here.
// Null for a null argument, a component that no path can hold, and when there is no memory. [any]
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url, CFStringRef component,
                                               Boolean bIsDirectory) noexcept;

// The folder that holds the place. Null for null and for the root folder. [any]
CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef allocator, CFURLRef url) noexcept;

// Writes the path, without a separator at its end, with a terminator; returns 1, or 0 when it does not fit into `nSize`
// bytes and for null. Then the buffer holds the empty text, if it has room for a terminator. There are no relative
// places, so `bResolve` changes nothing. [any]
Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean bResolve, char* pBuffer, CFIndex nSize) noexcept;

// The path as text in `nStyle` (0, slashes, is the only one). Null for null, for a path that is no text, and for other
// styles. [any]
inline constexpr CFIndex kCFURLPOSIXPathStyle = 0;
CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFIndex nStyle) noexcept;

// The bundle in the folder at `url`; any folder is one. Null when there is no folder. [any]
CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef url) noexcept;

// The bundle that the running program lies in: the folder X for a program in X/Contents/ANY, else the program's own
// folder. Not the caller's to release. Null when the system does not say where the program lies. [any]
CFBundleRef CFBundleGetMainBundle() noexcept;

// The bundle's folder. Null for null. [any]
CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle) noexcept;

// The names (texts) of the bundle's localisations, sorted. Null when there is none. [any]
CFArrayRef CFBundleCopyBundleLocalizations(CFBundleRef bundle) noexcept;

// Of the given names the one that suits the user best, as an array of one. The user's languages are asked each time.
// What a user can read counts before what nobody asked for: a close relative or another region of the language, then
// English, then the first. Null for null or an empty array. [any]
CFArrayRef CFBundleCopyPreferredLocalizationsFromArray(CFArrayRef localizations) noexcept;

// The place of the resource `name`, with `type` as its extension where given, in the folder `subFolder` where given:
// in Resources, else in the folder of the preferred localisation. Null when neither has it. [any]
CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef name, CFStringRef type,
                                 CFStringRef subFolder) noexcept;

// Takes a reference; returns its argument, which may not be null. [any]
CFTypeRef CFRetain(CFTypeRef value) noexcept;

// Gives a reference back; the value goes with the last. Null is not an error. [any]
void CFRelease(CFTypeRef value) noexcept;
} // namespace Halyon
