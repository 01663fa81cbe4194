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
// memory, results are empty, never half a path, a string that was to be changed stays as it was, and a folder is none
// to scan.
#pragma once

#include <halyon/string/CTovStringW.h>

namespace Halyon
{
// "/Volumes/", the startup volume's name as people see it, and the path. Paths that begin with "/Volumes/" already (in
// any letter case), relative paths and the empty path come back as they are. The name is deliberate: no tilde is
// looked at. [any]
CTovStringW ExpandTildePath(const CTovStringW& path) noexcept;

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

    // Non-zero when the path is the folder that its volume is mounted in. [any]
    static int IsRoot(const char16_t* path) noexcept;

    // Non-zero when both lie on the same volume. [any]
    static int IsSameRoot(const char16_t* a, const char16_t* b) noexcept;

    // The folder that the path's volume is mounted in, as the path begins; empty on the startup volume, and for
    // relative and network paths. The path need not exist. [any]
    static CTovStringW GetPathDriver(const char16_t* path) noexcept;

    // The path without what GetPathDriver gives, with a separator at its end; a network path whole. [any]
    static CTovStringW GetRelativePath(const char16_t* path) noexcept;

    // GetRelativePath of the path without its last component. [any]
    static CTovStringW GetFileRelativePath(const char16_t* path) noexcept;

    // How two folders nest, as text: 1 when `b` lies in `a`, -1 when `a` lies in `b`, -2 for the same folder, 0 for
    // neither. So a negative result means that `a` is `b` or lies in it. The empty path contains everything. Both are
    // compared in their "/Volumes/" form (ExpandTildePath). [any]
    static int PathInPath(const char16_t* a, const char16_t* b) noexcept;

    // Whether a folder may be searched for media: on a fixed or removable volume, and not in the system's folders, nor
    // in the homes of other users or the folder that holds them. The caller's own home may be, but for its library.
    // Asking makes that library when it is missing. False for null, empty and network paths. [any]
    static bool IsValidScanFolder(const char16_t* path) noexcept;

    // Non-zero when the caller cannot write to the file: locked, no permission, a program that runs. Also for what is
    // no file: nothing, a folder, a pipe, a device. Asking changes nothing and waits for nothing. [any]
    static int IsReadOnlyFile(const char16_t* path) noexcept;

    // Always false, deliberately: the trash is no folder of this kind here. [any]
    static bool IsRecycleBinFolder(const char16_t* path) noexcept;
};
} // namespace Halyon
