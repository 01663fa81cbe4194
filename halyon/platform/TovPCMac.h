// The portability layer: critical sections, events, threads, sleep, 16-bit text, paths, file references, volumes, and
// the shared empty string block.
//
// What must hold on every machine is said here; an implementation lies in one folder of its own beside this file.
// Everything stands at global scope.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include <halyon/framework/HynTypes.h>
#include <halyon/platform/TovThreadSafety.h>

namespace Halyon
{
struct FSRef; // FileManager.h
} // namespace Halyon

// ---------------------------------------------------------------------------------------------------------------------
// Critical sections: re-entrant mutual exclusion between the threads of a process.
// ---------------------------------------------------------------------------------------------------------------------

// One critical section, wholly inside its pointer-wide handle: making one takes no memory and cannot fail. It must not
// move while it is in use. In a child made by `fork`, a section that a thread was inside of stays closed.
struct HYN_LOCK alignas(void*) TovCriticalSection
{
    std::uint32_t uOwner; // identifier of the thread inside, with the top bit set when others wait; 0 when free
    std::uint32_t uDepth; // how many more times the owner has entered; guarded by uOwner
};
static_assert(sizeof(void*) != 8 || sizeof(TovCriticalSection) == sizeof(void*));

// Makes the section free. [owner]
void TovInitCriticalSection(TovCriticalSection* pSection) noexcept;

// Ends its use. Requires: no thread is inside or waits. [owner]
void TovDeleteCriticalSection(TovCriticalSection* pSection) noexcept;

// Waits, asleep, until no other thread is inside, then enters. The thread inside may enter again. Without contention it
// costs one atomic operation. [any]
void TovEnterCriticalSection(TovCriticalSection* pSection) noexcept HYN_ACQUIRE(*pSection);

// Leaves once; the section is free when the thread has left as often as it entered. Without contention it costs one
// atomic operation. Requires: the calling thread is inside. [any]
void TovLeaveCriticalSection(TovCriticalSection* pSection) noexcept HYN_RELEASE(*pSection);

// ---------------------------------------------------------------------------------------------------------------------
// Events: auto-reset signals between threads.
// ---------------------------------------------------------------------------------------------------------------------

// 0 is no event. A handle of a closed event stays safe to use: every call on it fails.
using TovEventRef = std::uintptr_t;

// A wait without limit.
inline constexpr std::int32_t kTovForever = -1;

// Makes an event. `bManualReset` must be 0: a successful wait takes the signal. A non-zero `bInitialState` makes it
// signalled from the start. Returns 0 when there is no memory. The caller closes it. [any]
[[nodiscard]] TovEventRef TovCreateEvent(int bManualReset, int bInitialState) noexcept;

// Signals the event: one waiting thread goes on; when none waits, the next that does. Each signal lets exactly one wait
// end, but at most one is kept while nobody waits. What the caller did before is seen by the thread that goes on. On a
// closed event or 0 nothing happens. Returns 0, or non-zero when there is no such event. A signal handler may call it.
// [any]
int TovSetEvent(TovEventRef event) noexcept;

// Waits, asleep, for the signal and takes it; at most `nMilliseconds`, or without limit for kTovForever. Returns 0 when
// the signal came; non-zero when the time ran out, when the event was closed before or during the wait, and, after a
// short sleep, for 0 and for closed handles, so that a loop around it does not spin. [any]
int TovWaitEvent(TovEventRef event, std::int32_t nMilliseconds) noexcept;

// Closes the event; its waiters return with a non-zero result. On a closed event or 0 nothing happens. [any]
void TovCloseEvent(TovEventRef event) noexcept;

// ---------------------------------------------------------------------------------------------------------------------
// Threads and time.
// ---------------------------------------------------------------------------------------------------------------------

// 0 is no thread.
using TovThreadRef = std::uintptr_t;
using TovThreadProc = std::uint32_t (*)(void* pArgument);

// Starts `proc(pArgument)` on a new thread. `nFlags` must be 0; `uStackSize` is in bytes, 0 for the system's usual
// size, which is also taken when the system refuses this one. Returns 0 when no thread could be made. The caller closes
// the reference; the thread runs on regardless. [any]
[[nodiscard]] TovThreadRef TovCreateThread(TovThreadProc proc, void* pArgument, int nFlags,
                                           std::uint32_t uStackSize) noexcept;

// Waits, asleep, for the thread to end; at most `nMilliseconds`, or without limit for kTovForever. Returns 0 when it
// has ended, non-zero when the time ran out or there is no such thread (a child made by `fork` has none of its
// parent's). Closing the reference does not disturb a wait that has begun. After a wait that returned 0 nothing of the
// thread runs any more: its thread-local objects are gone, and the module that holds its code may be unloaded. [any]
int TovWaitThread(TovThreadRef thread, std::int32_t nMilliseconds) noexcept;

// Gives the reference back; the thread itself is not touched. On 0 and on a reference closed before nothing happens.
// [any]
void TovCloseThreadRef(TovThreadRef thread) noexcept;

// Names the calling thread for debuggers and system monitors, as far as they show it. Null is ignored. [any]
void TovSetCurrentThreadName(const char* pszName) noexcept;

// Sets the thread's priority relative to the process's usual one: 0 is usual, lower is more patient. Returns 0, or
// non-zero when there is no such thread or the system refuses: it may let only a privileged process take patience back.
// [any]
int TovSetThreadPriority(TovThreadRef thread, int nPriority) noexcept;

// The calling thread's identifier: the kernel's, so it is what the system's own tools show. Never 0. Cheap enough to
// ask each time. [any]
[[nodiscard]] std::uint32_t GetCurrentTovThreadID() noexcept;

// Counts the forks that lie between the program's start and this process; what a process inherited from another can
// so be told from what it made itself. Cheap enough to ask each time. Forks are not counted in a process that had no
// memory to ask for their notice when it loaded this code. [any]
[[nodiscard]] std::uint32_t TovGetForkCount() noexcept;

// Makes every thread of the process pass a full memory fence before it returns, so that the others need none of their
// own. What they save, this call costs: microseconds. Does nothing where TovCanFenceThreads is false. [any]
void TovFenceThreads() noexcept;

// Whether TovFenceThreads reaches other threads here; the answer never changes. [any]
[[nodiscard]] bool TovCanFenceThreads() noexcept;

// Puts the calling thread to sleep; never returns early. [any]
void TovSleep(std::uint32_t uMilliseconds) noexcept;
void TovUSleep(std::uint32_t uMicroseconds) noexcept;

// What TovSleep and TovUSleep do, for programs that must not wait in real time: tests of long waits, simulations.
using TovSleepProc = void (*)(std::uint64_t uMicroseconds);

// Replaces what sleeping does in this process (null restores the real sleep); returns what it replaced, null for the
// real sleep. [any]
TovSleepProc TovSetSleepProc(TovSleepProc proc) noexcept;

// Reads the system's time zone again. The zone is read at first use; a host calls this after the user has changed it,
// or after setting `TZ`. Conversions that run meanwhile use the old zone or the new one. [any]
void TovTimeZoneChanged() noexcept;

// ---------------------------------------------------------------------------------------------------------------------
// 16-bit text. Every text argument is zero-terminated and not null unless said otherwise; it may lie at an odd address.
// ---------------------------------------------------------------------------------------------------------------------

// Length in units, without the terminator. [any]
[[nodiscard]] std::size_t tov_wcslen(const char16_t* psz) noexcept;

// Copies with the terminator; returns `dest`. Requires: room for tov_wcslen(src) + 1 units. [any]
char16_t* tov_wcscpy(char16_t* dest, const char16_t* src) noexcept;

// Copies at most `uCount` units; when the text is shorter the rest becomes zeros, when it is not shorter no terminator
// is written. Returns `dest`. [any]
char16_t* tov_wcsncpy(char16_t* dest, const char16_t* src, std::size_t uCount) noexcept;

// Compares without regard to letter case: simple Unicode case folding by code point, the same in every locale. Returns
// 0, or a number with the sign of the order of the folded code points. An unpaired surrogate stands for itself. [any]
[[nodiscard]] int tov_wcscmpi(const char16_t* a, const char16_t* b) noexcept;

// Whether `psz` is, unit by unit, the `uLength` units at `known` and then ends. For looking up short text again and
// again: it never measures. `known` is zero-terminated there too. [any]
[[nodiscard]] bool tov_wcssame(const char16_t* psz, const char16_t* known, std::size_t uLength) noexcept;

// The same as tov_wcscmpi over at most the first `uCount` units of each. [any]
[[nodiscard]] int tov_wcsnicmp(const char16_t* a, const char16_t* b, std::size_t uCount) noexcept;

// Non-zero for Unicode white space (the ideographic and the no-break space too). [any]
[[nodiscard]] int tov_iswspace(char16_t unit) noexcept;

// The number at the start of the text: white space, one sign, ASCII digits; it ends at the first other unit, and is 0
// when there is none. Modulo 2^32. [any]
[[nodiscard]] std::int32_t tov_wtoi(const char16_t* psz) noexcept;

// An argument of tov_swprintf.
struct TovFormatArgument
{
    enum class Kind
    {
        Signed,
        Unsigned,
        Double
    };
    Kind kind;
    std::uint32_t uBytes; // size of the integer as it was passed
    union
    {
        std::int64_t nValue;
        std::uint64_t uValue;
        double fValue;
    };

    template <class T>
    requires std::is_arithmetic_v<T>
    constexpr TovFormatArgument(T value) noexcept : kind{}, uBytes(sizeof(T)), nValue{}
    {
        if constexpr (std::is_floating_point_v<T>)
        {
            kind = Kind::Double;
            fValue = static_cast<double>(value);
        }
        else if constexpr (std::is_signed_v<T>)
        {
            kind = Kind::Signed;
            nValue = value;
        }
        else
        {
            kind = Kind::Unsigned;
            uValue = value;
        }
    }
};

// Formats into `buffer`, terminator always included; returns the length written, without it. What does not fit is cut
// at the last whole character. The conversions are d i u x X o for integers and f F e E g G for doubles, with flags,
// width and precision (numbers, or `*` for the next argument), and %%; the decimal point is "." in every locale. An
// integer has the size that it was passed with: h and hh cut it, l and ll are accepted and change nothing. A format
// that asks for another conversion, for one of the wrong kind, or for more arguments than there are, yields the empty
// text and 0. An empty span is left alone. `format` is at an even address. [any]
int TovFormat(std::span<char16_t> buffer, const char16_t* format,
              std::span<const TovFormatArgument> arguments) noexcept;

// The same in the usual form. The buffer's size travels inside its type, so that no call can write past it.
template <std::size_t N, class... Arguments>
int tov_swprintf(char16_t (&buffer)[N], const char16_t* format, Arguments... arguments) noexcept
{
    if constexpr (sizeof...(Arguments) == 0)
    {
        return TovFormat(buffer, format, {});
    }
    else
    {
        const TovFormatArgument list[] = {TovFormatArgument(arguments)...};
        return TovFormat(buffer, format, list);
    }
}

// Converts to UTF-8, without a terminator. An unpaired surrogate becomes U+FFFD. Returns the number of bytes that the
// whole text takes; writes only when that is at most `uSize`, so (nullptr, 0) asks for the size. No text is too long;
// with room for three bytes a unit it is not measured first. [any]
std::size_t TovTextToUTF8(const char16_t* text, std::size_t uLength, char* buffer, std::size_t uSize) noexcept;

// Converts from UTF-8, without a terminator. Each maximal ill-formed sequence becomes U+FFFD. Returns the number of
// units that the whole text takes; writes only when that is at most `uSize` units. [any]
std::size_t TovTextFromUTF8(const char* text, std::size_t uBytes, char16_t* buffer, std::size_t uSize) noexcept;

// ---------------------------------------------------------------------------------------------------------------------
// Paths as text. Nothing here looks at the file system. Text lies at an even address; null counts as the empty text and
// is never written to. The separator is "/" alone, and "/" itself is never shortened.
// ---------------------------------------------------------------------------------------------------------------------

// Room, in units with the terminator, of every buffer that a path call fills by itself.
inline constexpr std::size_t kTovPathUnits = 1024;

// Removes one separator at the end. Returns 1 when there was one to remove, else 0. [any]
int TovPathRemoveSlash(char16_t* pszPath) noexcept;

// Appends a separator unless the text ends with one; the empty text becomes "/". Returns 1 when it did, else 0.
// Requires: room for one more unit. [any]
int TovPathAddSlash(char16_t* pszPath) noexcept;

// Cuts the last component with the separators before it: "/a/b" becomes "/a", "/a" becomes "/", "/a/b/" becomes "/a/b",
// "abc" becomes the empty text. Returns 1 when something was cut, else 0. [any]
int TovPathRemoveFileSpec(char16_t* pszPath) noexcept;

// Joins `pszName` on as a further component, with exactly one separator at the seam; onto the empty text it is copied
// as it is. An empty name changes nothing. Returns 1, or 0 for a null path. Requires: room for both texts, a separator
// and a terminator. [any]
int TovPathAppend(char16_t* pszPath, const char16_t* pszName) noexcept;

// Non-zero for a network path: two slashes, or two backslashes, and a host name. "///a" and "//./a" are none. [any]
[[nodiscard]] int TovPathIsUNC(const char16_t* pszPath) noexcept;

// Writes the longest leading path that both share: whole components, letter case counts, no separator at its end (but
// "/"). Returns its length in units; 0 and the empty text when there is none, or when it does not fit. Requires:
// `pszOut` has kTovPathUnits units and is neither of the two. [any]
int TovPathCommonPrefix(const char16_t* pszA, const char16_t* pszB, char16_t* pszOut) noexcept;

// Points at what follows the last separator: at the terminator for a path that ends with one. Null for null. [any]
[[nodiscard]] const char16_t* TovPathFindFileName(const char16_t* pszPath) noexcept;

// Points at the last "." of what TovPathFindFileName gives, else at the terminator. Null for null. [any]
[[nodiscard]] const char16_t* TovPathFindExtension(const char16_t* pszPath) noexcept;

// ---------------------------------------------------------------------------------------------------------------------
// Items and volumes. Paths as above; those that are too long for the system name nothing. Links are followed
// unless said otherwise.
// ---------------------------------------------------------------------------------------------------------------------

// Non-zero when the path names an existing folder. [any]
[[nodiscard]] int TovPathIsDirectory(const char16_t* pszPath) noexcept;

// Non-zero when the path names an existing item. A link that leads nowhere names none. [any]
[[nodiscard]] int TovPathFileExists(const char16_t* pszPath) noexcept;

// A reference to one item, for calls that act on the item itself. Null is none.
struct Tov0FSR;
using Tov0FSRRef = Tov0FSR*;

// Makes a reference to the item at `pszPath`; a link at the end is the item, what it leads to is not. Returns null for
// null, the empty path, a missing item, and a resolved path longer than 1023 bytes. The caller releases it. [any]
[[nodiscard]] Tov0FSRRef Tov0FSRCreateWithPath(const char16_t* pszPath) noexcept;

// Turns the reference into the file system's own; `nFlags` must be 0. Returns 1, or 0 and all zero bytes when another
// item lies there by now, or none. [any]
int Tov0FSRToAbs(Tov0FSRRef ref, Halyon::FSRef* pRef, int nFlags) noexcept;

// Gives the reference back; null is not an error. [any]
void Tov0FSRRelease(Tov0FSRRef ref) noexcept;

// Deletes the item for good: a file, a link (not what it leads to) or an empty folder. Returns 1, or 0 for a folder
// with content, an item that is gone or has changed places, and when the caller may not. [any]
int TovFileDeleteExt(Tov0FSRRef ref) noexcept;

// A volume is what is mounted in one folder. A path lies on the volume that a walk along its text meets last; links on
// the way are not followed, repeated separators and ".." are not resolved, and it need not exist.

// Writes the folder that the path's volume is mounted in, as the path begins, without a separator at its end, and
// returns 1. On the startup volume, and for relative and network paths: writes the empty text, returns 0. Requires:
// `pszDriver` has kTovPathUnits units; when the folder does not fit, the path is taken to be on the startup volume.
// Without memory to find out: writes the empty text, returns -1. [any]
int TovGetPathDriver(const char16_t* pszPath, char16_t* pszDriver) noexcept;

// Kinds of volumes.
inline constexpr std::uint32_t kTovDriveUnknown = 1;
inline constexpr std::uint32_t kTovDriveRemovable = 2;
inline constexpr std::uint32_t kTovDriveFixed = 3;
inline constexpr std::uint32_t kTovDriveRemote = 4;
inline constexpr std::uint32_t kTovDriveOptical = 5;
inline constexpr std::uint32_t kTovDriveMemory = 6;

// The kind of the volume that the path lies on; the empty path is the startup volume. kTovDriveUnknown for volumes that
// the system makes up (lists of processes, settings) and for a path that does not exist. [any]
[[nodiscard]] std::uint32_t TovGetDriveType(const char16_t* pszPath) noexcept;

// Non-zero when both paths lie on the same volume, or name the same share of the same host. [any]
[[nodiscard]] int TovPathIsSameRoot(const char16_t* pszA, const char16_t* pszB) noexcept;

// Non-zero when the path is the folder that its volume is mounted in, with or without a separator at its end. [any]
[[nodiscard]] int TovPathIsRoot(const char16_t* pszPath) noexcept;

// ---------------------------------------------------------------------------------------------------------------------
// The shared empty string.
// ---------------------------------------------------------------------------------------------------------------------

// The header before the characters of every string block; `nCapacity` + 1 units follow it without a gap.
struct CTovStringWData
{
    std::int32_t nRefCount; // strings that share the block; negative: locked, never shared
    std::int32_t nLength;   // units in use, without the terminator
    std::int32_t nCapacity; // units that fit, without the terminator
};
static_assert(sizeof(CTovStringWData) == 12);

// The empty block (count negative, length and capacity 0) and its characters. It lies in writable memory: assigning an
// empty text to an empty string writes its length and its terminator anew. It is never freed and never counted. Strings
// read both pointers each time. [any]
extern CTovStringWData* tovtmpDataNilW;
extern char16_t* tovtmpPchNilW;

namespace Halyon
{
// Atomic counters. Each returns the value before the change. [any]
inline std::int32_t IncrementAtomic(std::int32_t* pCount) noexcept
{
    return std::atomic_ref(*pCount).fetch_add(1, std::memory_order_acq_rel);
}

inline std::int32_t DecrementAtomic(std::int32_t* pCount) noexcept
{
    return std::atomic_ref(*pCount).fetch_sub(1, std::memory_order_acq_rel);
}
} // namespace Halyon
