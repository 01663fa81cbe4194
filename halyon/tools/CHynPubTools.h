// Static tools for components: dates, the folders of bundles, programs and files, sizes, and the chores of the screen.
//
// Not for paths as text (CHynPathHelper) and versions (CHynVersionHelper). What starts programs and what needs the
// screen is in the library Tools, everything else in Core.
//
// A timestamp is a FILETIME: 1/65536 s since 1904 UTC. In a database it is a double of seconds since 2001-01-01 UTC;
// for people it is a local calendar date. The local zone is the system's (`TovTimeZoneChanged` reads it again).
//
// A bundle is a folder with `Contents/Resources` in it, and there one folder a localisation (`ja.lproj`), each with a
// folder `UI`. Paths are absolute, without a separator at the end; whether something lies there is not asked.
//
// Nothing here keeps state. What is not tagged otherwise runs on any thread.
#pragma once

#include <deque>

#include <halyon/platform/Interface.h>
#include <halyon/string/CTovStringW.h>

namespace Halyon
{
class CHynPubTools
{
public:
    // Seconds since 2001-01-01 UTC, exactly, fraction included. 0.0 for null, deliberately: a null timestamp is stored
    // as that moment and does not come back as null. [any]
    static double ConvertFromFileTime(const FILETIME* ft) noexcept;

    // The moment `seconds` after 2001-01-01 UTC, to the nearest 1/65536 s. All zero bits for not-a-number, infinities
    // and moments that a FILETIME does not hold (before 1904). Null: nothing happens. [any]
    static void ConvertToFileTime(FILETIME* ft, double seconds) noexcept;

    // The local calendar date as year * 10000 + month * 100 + day. 0 for null. [any]
    static std::uint32_t ConvertFromFileTimeDW(const FILETIME* ft) noexcept;

    // Local midnight at the start of the packed date `dw`. Month and day are not checked: what is out of range carries
    // over. Null: nothing happens. [any]
    static void ConvertToFileTimeDW(FILETIME* ft, std::uint32_t dw) noexcept;

    // The local calendar date. Returns 1, or 0 for null, and then the outputs are untouched. [any]
    static int GetDateFromFileTime(const FILETIME* ft, std::uint32_t& year, std::uint32_t& month,
                                   std::uint32_t& day) noexcept;

    // Day of the week of a calendar date, 0 (Sunday) to 6. [any]
    static std::uint16_t GetDayofweek(std::uint16_t year, std::uint16_t month, std::uint16_t day) noexcept;

    // The current moment, with its fraction. Returns the status of the platform's clock, 0 for success; also 0 for
    // null, when nothing happens. [any]
    static std::int32_t CurrentDateTime(FILETIME* ft) noexcept;

    // The local midnight at which the current local day began. Null: nothing happens. [any]
    static void CurrentDate(FILETIME* ft) noexcept;

    // Returns 1 and changes nothing, deliberately: the fraction of a second stays in the value. [any]
    static int StripFileTimeMS(FILETIME* ft) noexcept;

    // The local date and time in the caller's format, which takes year, month, day, hour, minute and second as
    // integers in that order ("%04d-%02d-%02d %02d:%02d:%02d"). At most 99 units, what is longer is cut. The empty
    // string for a format that asks for anything but integers. Requires: `ft` is not null. [any]
    static CTovStringW FileTimeToString(const char16_t* format, const FILETIME* ft) noexcept;

    // The folders of a bundle; of the running program's own bundle for null: X for a program in X/Contents/ANY, else
    // the folder that the program lies in. The localised ones are in the folder of the localisation that suits the
    // user's languages best, or in the resource folder when the bundle has no localisation. `WithName` is an item in
    // that folder. The empty string when the path has no place in 1024 bytes of UTF-8 with its terminator, or is no
    // valid text. [any]
    static CTovStringW GetBundleContentsPath(__CFBundle* bundle) noexcept;
    static CTovStringW GetBundleResourcePath(__CFBundle* bundle) noexcept;
    static CTovStringW GetBundleLocalizePath(__CFBundle* bundle) noexcept;
    static CTovStringW GetBundleLocalizeUIPath(__CFBundle* bundle) noexcept;
    static CTovStringW GetBundleContentsPathWithName(__CFBundle* bundle, const char16_t* name) noexcept;
    static CTovStringW GetBundleResourcePathWithName(__CFBundle* bundle, const char16_t* name) noexcept;
    static CTovStringW GetBundleLocalizePathWithName(__CFBundle* bundle, const char16_t* name) noexcept;
    static CTovStringW GetBundleLocalizeUIPathWithName(__CFBundle* bundle, const char16_t* name) noexcept;

    // The same for the bundle in the folder `bundlePath`. Also the empty string when there is no such folder. [any]
    static CTovStringW GetResourcePathFromBundlePath(const char16_t* bundlePath) noexcept;
    static CTovStringW GetLocalizePathFromBundlePath(const char16_t* bundlePath) noexcept;
    static CTovStringW GetLocalizeUIPathFromBundlePath(const char16_t* bundlePath) noexcept;
    static CTovStringW GetResourcePathWithNameFromBundlePath(const char16_t* bundlePath, const char16_t* name) noexcept;
    static CTovStringW GetLocalizePathWithNameFromBundlePath(const char16_t* bundlePath, const char16_t* name) noexcept;
    static CTovStringW GetLocalizeUIPathWithNameFromBundlePath(const char16_t* bundlePath,
                                                               const char16_t* name) noexcept;

    // Writes the folder that holds the bundle (not the bundle itself); null means the program's own bundle. Returns 1,
    // or 0 for a null `out`, for the root folder, and for paths of 1024 units or more; then `out` is untouched.
    // Requires: `out` has 1024 units, all zero: no terminator is written, deliberately. [any]
    static int GetModulePath(__CFBundle* bundle, char16_t* out) noexcept;

    // Writes the path of "UI" in that folder, with a terminator. Returns 1 or 0 as above. Requires: `out` has 1024
    // units. [any]
    static int GetModuleUIPath(__CFBundle* bundle, char16_t* out) noexcept;

    // A bundle for the folder `path`, which the caller releases with CFRelease; null when there is no such folder.
    // [any]
    [[nodiscard]] static __CFBundle* CreateBundleByPath(const char16_t* path) noexcept;

    // Opens `documents` with an application: a program, a desktop entry or a bundle folder. A document that does not
    // exist is left out. Returns 1 when the application was started, else 0. In the library Tools. [any]
    static int Execute(const char16_t* application, const std::deque<CTovStringW>& documents) noexcept;

    // Starts the application of a command line: its path in double quotes, one separating character, parameters. They
    // become separate arguments at blanks, double quotes group, nothing is expanded. Returns 1 when it was started,
    // else 0: also when there is no pair of quotes, or a part has 1024 units or more. The other arguments are ignored.
    // In the library Tools. [any]
    static int Execute(const char16_t* operation, char16_t* commandLine, int show, void* reserved) noexcept;

    // Moves the items to the desktop's trash when `toTrash` is not 0; returns 1, deliberately also when nothing could
    // be moved, but 0 for no paths at all. Else deletes them for good, one after the other, and stops at the first path
    // that names nothing; returns 1 when any was deleted, else 0. A folder with content is not deleted for good, a link
    // is acted on itself. Nobody is asked; `parent` and `reserved` are ignored. [any]
    static int DeleteFile(const std::deque<CTovStringW>& paths, OpaqueWindowPtr* parent, int toTrash,
                          int reserved) noexcept;

    // The same for one path. 0 for null. [any]
    static int DeleteFile(const char16_t* path, OpaqueWindowPtr* parent, int toTrash, int reserved) noexcept;

    // ---- Sizes --------------------------------------------------------------------------------------------------

    // Writes a number of bytes as people read it, with its terminator: whole up to 999 kilobytes, then with two
    // decimals. Returns the unit, which is not written: 1 bytes, 2 kilobytes (rounded up), 3 megabytes, 4 gigabytes;
    // 0 for null. The change to the next unit comes after 999 of one, so that 0.98 of a unit may be seen, deliberately.
    // Requires: room for 16 units at `out`. [any]
    static int GetFileSizeStr(const long long& size, char16_t* out) noexcept;

    // Scales a size, up or down, until it touches the box from inside, and returns the scale. Returns 0.0 and changes
    // nothing for a width or height of 0 and for null. [any]
    static double TLFitIn(std::int32_t* width, std::int32_t* height, std::int32_t maxWidth,
                          std::int32_t maxHeight) noexcept;

    // ---- The screen: in the library Tools, with the rest of what needs a display ------------------------------------

    // The black pixels of a picture as a region; the caller disposes of it (DisposeRgn). Null when there is no such
    // file or no picture in it (GraphicsImportDraw says which). [any]
    static RgnHandle CreateRgnFromFile(const char16_t* path) noexcept;

    // Each of these returns 1, or 0 for a null argument and for a window that is not there; the outputs are untouched
    // then. Positions are in pixels of the desktop, 16 bits wide.

    // The pointer's position, as far as the window system tells it. [main]
    static int GetCursorPos(POINT* point) noexcept;

    // Moves the pointer, if the window system lets a program do so; returns 1 when it does not, too. [main]
    static int SetCursorPos(POINT* point) noexcept;

    // The window with its frame, and without. Both are on the desktop, deliberately: the second does not start at
    // (0, 0). [main]
    static int GetWindowRect(OpaqueWindowPtr* window, SRect32* rect) noexcept;
    static int GetClientRect(OpaqueWindowPtr* window, SRect32* rect) noexcept;

    // Between points of the desktop and points that count from the corner of the window's frame, deliberately: not
    // from the corner that GetClientRect gives. [main]
    static int ScreenToClient(OpaqueWindowPtr* window, POINT* point) noexcept;
    static int ClientToScreen(OpaqueWindowPtr* window, POINT* point) noexcept;

    // 1 when the point lies in the rectangle, whose right and bottom edges are outside, else 0. Of every number the low
    // 16 bits count. [any]
    static int PtInRect(SRect32* rect, POINT point) noexcept;
};
} // namespace Halyon
