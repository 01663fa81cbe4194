// Operations on paths. The separator is "/"; comparison is without regard to letter case unless said otherwise.
//
// For paths as hosts hold them. Not for opening or changing files: nothing here writes to the file system, but for
// IsValidScanFolder, which may make the user's own library folder.
//
//     CTovStringW picture = CHynPathHelper::MakeFullPath(u"/home/ann/Pictures", u"beach.jpg");
//     CHynPathHelper::FindFileName(picture);  // beach.jpg
//     CHynPathHelper::RemoveFileSpec(picture); // 1, and picture is /home/ann/Pictures
//
// Nothing here keeps state, so every operation runs on any thread. Null counts as the empty path. When there is no
// memory, results are empty and a string that was to be changed stays as it was, or becomes empty when it shares its
// text with another.
#pragma once

#include <halyon/string/CTovStringW.h>

namespace Halyon
{
class CHynPathHelper
{
public:
    // In place. The buffer of AddBackslash needs room for one more unit; the others never lengthen. Each returns 1 when
    // it changed the text, else 0; how they treat "/" and the empty text stands with the portability layer's calls
    // (TovPathRemoveSlash, TovPathAddSlash, TovPathRemoveFileSpec). The name RemoveBacksplash is deliberate. [any]
    static int RemoveBacksplash(char16_t* path) noexcept;
    static int AddBackslash(char16_t* path) noexcept;
    static int RemoveFileSpec(char16_t* path) noexcept;

    // The same for strings. The empty string stays empty, deliberately: it never becomes "/". [any]
    static void RemoveBacksplash(CTovStringW& path) noexcept;
    static void AddBackslash(CTovStringW& path) noexcept;
    static int RemoveFileSpec(CTovStringW& path) noexcept;

    // The folder, one separator, the name. An empty folder gives the name alone, an empty name the folder. [any]
    static CTovStringW MakeFullPath(const char16_t* dir, const char16_t* name) noexcept;

    // The extension with its dot, else the empty string. [any]
    static CTovStringW FindExtension(const char16_t* path) noexcept;

    // The last component, also of a folder with a separator at its end. Empty for "/". [any]
    static CTovStringW FindFileName(const char16_t* path) noexcept;

    // The longest leading path of whole components, letter case counts; returns its length. 0 and the empty text when
    // there is none or it has 1024 units or more. The plain buffer has 1024 units. [any]
    static int CommonPrefix(const char16_t* a, const char16_t* b, char16_t* out) noexcept;
    static int CommonPrefix(const char16_t* a, const char16_t* b, CTovStringW& out) noexcept;

    // `path` with `newPrefix` in place of `oldPrefix`, nothing added at the seam. Empty when it does not begin with
    // `oldPrefix`, and when an argument is null. A prefix may end inside a component. [any]
    static CTovStringW ReplaceUpLevelPath(const char16_t* path, const char16_t* oldPrefix,
                                          const char16_t* newPrefix) noexcept;

    // Whether the parents of both are equal as text. [any]
    static bool FileInSameFolder(const char16_t* a, const char16_t* b) noexcept;

    // Non-zero when the path names an existing folder, an existing item. Links are followed. [any]
    static int IsDirectory(const char16_t* path) noexcept;
    static int IsFileExists(const char16_t* path) noexcept;

    // Non-zero for a network path: //host/share, \\host\share. [any]
    static int IsUNC(const char16_t* path) noexcept;

    // Always false, deliberately: the trash is no folder of this kind here. [any]
    static bool IsRecycleBinFolder(const char16_t* path) noexcept;
};
} // namespace Halyon
