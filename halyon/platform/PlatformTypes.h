// The small types that the platform's calls share.
#pragma once

#include <halyon/framework/HynTypes.h>

namespace Halyon
{
// Status of a platform call: noErr, or a negative number of the platform's own.
using OSStatus = std::int32_t;
// Four letters, the first in the highest byte.
using OSType = std::uint32_t;
// 0 or 1.
using Boolean = std::uint8_t;
// A set of option bits; 0 asks for the default.
using OptionBits = std::uint32_t;

inline constexpr OSStatus noErr = 0;
inline constexpr OSStatus paramErr = -50;         // an argument is null or out of range
inline constexpr OSStatus ioErr = -36;            // the system refuses, for a reason that has no code of its own
inline constexpr OSStatus fnfErr = -43;           // no such item, or another item lies at its path by now
inline constexpr OSStatus fLckdErr = -45;         // the item is locked
inline constexpr OSStatus permErr = -54;          // the caller may not open it like that
inline constexpr OSStatus notAFileErr = -1302;    // a folder, a pipe, a device: nothing that holds data of its own
inline constexpr OSStatus pathTooLongErr = -2110; // a path does not fit where it has to go
inline constexpr OSStatus memFullErr = -108;      // no memory
} // namespace Halyon
