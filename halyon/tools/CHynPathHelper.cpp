#include <halyon/tools/CHynPathHelper.h>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include <halyon/platform/BaseFunction.h>
#include <halyon/platform/CoreFoundation.h>
#include <halyon/platform/FileManager.h>
#include <halyon/platform/LaunchServices.h>
#include <halyon/platform/TovPCMac.h>

namespace Halyon
{
namespace
{
using Scratch = std::unique_ptr<char16_t[]>;

std::u16string_view ViewOf(const char16_t* path) noexcept
{
    return path != nullptr ? std::u16string_view(path, tov_wcslen(path)) : std::u16string_view();
}

// The whole or, without memory, the empty string: half a path would name another item.
CTovStringW Concat(std::initializer_list<std::u16string_view> parts) noexcept
{
    std::size_t length = 0;
    for (const std::u16string_view part : parts)
        length += part.size();
    const Scratch text(new (std::nothrow) char16_t[length]);
    if (text == nullptr)
        return {};
    char16_t* end = text.get();
    for (const std::u16string_view part : parts)
        end += part.copy(end, part.size());
    return CTovStringW(std::u16string_view(text.get(), length));
}

// The path without a separator at its end, its last component and the separators before that.
std::u16string_view ParentOf(const char16_t* path) noexcept
{
    std::u16string_view parent = ViewOf(path);
    if (parent.size() > 1 && parent.ends_with(u'/'))
        parent.remove_suffix(1);
    parent = parent.substr(0, parent.rfind(u'/') + 1);
    while (parent.size() > 1 && parent.ends_with(u'/'))
        parent.remove_suffix(1);
    return parent;
}

constexpr int kNoMemory = -1;

// Applies one of the portability layer's calls, which may lengthen the text by `spare` units; returns its result, or
// kNoMemory, and then the path is as it was.
int ChangeInPlace(CTovStringW& path, std::size_t spare, int (*change)(char16_t*) noexcept) noexcept
{
    if (path.IsEmpty())
        return 0;
    const Scratch copy(new (std::nothrow) char16_t[path.View().size() + spare + 1]);
    if (copy == nullptr)
        return kNoMemory;
    tov_wcscpy(copy.get(), path);
    const int changed = change(copy.get());
    if (changed == 0)
        return 0;
    CTovStringW result = copy.get();
    if (result.IsEmpty() && copy[0] != 0)
        return kNoMemory;
    path = std::move(result);
    return changed;
}

// The volume of a path, empty for the startup volume; false when there is no memory to find out.
bool FindDriver(const char16_t* path, CTovStringW& driver) noexcept
{
    char16_t folder[kTovPathUnits];
    const int found = TovGetPathDriver(path, folder);
    if (found > 0)
        driver = folder;
    return found == 0 || (found > 0 && !driver.IsEmpty());
}

constexpr std::u16string_view kVolumes = u"/Volumes/";

bool BeginsWithVolumes(const char16_t* path) noexcept
{
    return tov_wcsnicmp(path, kVolumes.data(), kVolumes.size()) == 0;
}

// A path of the startup volume that does not say so.
bool IsShort(const char16_t* path) noexcept
{
    return *path == u'/' && !BeginsWithVolumes(path);
}

// How two texts nest that both end with a separator or are empty; a separator that is missing is thought on.
int Nesting(const char16_t* a, const char16_t* b) noexcept
{
    const std::u16string_view paths[] = {ViewOf(a), ViewOf(b)};
    const auto fullLength = [](std::u16string_view path) noexcept
    {
        return path.size() + (path.empty() || path.back() == u'/' ? 0 : 1);
    };
    const std::size_t lengths[] = {fullLength(paths[0]), fullLength(paths[1])};
    const std::size_t common = std::min(lengths[0], lengths[1]);
    const std::size_t written = std::min(paths[0].size(), paths[1].size());
    if (tov_wcsnicmp(a, b, written) != 0)
        return 0;
    const auto endsThere = [=](std::u16string_view path) noexcept
    {
        return path.size() <= written || path[written] == u'/';
    };
    if (written < common && !(endsThere(paths[0]) && endsThere(paths[1])))
        return 0;
    if (lengths[0] == lengths[1])
        return -2;
    return lengths[0] < lengths[1] ? 1 : -1;
}

// Finds one of the system's folders; `path` stays empty when there is none or its path is no text. False: there is no
// memory to find out.
bool FindPlatformFolder(FSVolumeRefNum domain, OSType type, CTovStringW& path) noexcept
{
    FSRef ref = {};
    char bytes[sizeof FSRef::szPath] = {};
    const OSStatus status = FSFindFolder(domain, type, kCreateFolder, &ref);
    if (status != noErr || FSRefMakePath(&ref, bytes, sizeof bytes) != noErr)
        return status != memFullErr;
    path = CTovStringW::FromUTF8(bytes);
    const bool isKnown = !path.IsEmpty();
    if (path.View().find(u'\uFFFD') != std::u16string_view::npos)
        path = CTovStringW();
    return isKnown;
}

// Also when there is no memory to find out.
bool MayLieInSystemFolder(const char16_t* path) noexcept
{
    constexpr std::pair<FSVolumeRefNum, OSType> kProtected[] = {
        {kSystemDomain, kSystemFolderType},      {kLocalDomain, kDomainLibraryFolderType},
        {kSystemDomain, kDeveloperFolderType},   {kSystemDomain, kApplicationsFolderType},
        {kUserDomain, kDomainLibraryFolderType}, {kClassicDomain, kApplicationsFolderType},
        {kClassicDomain, kSystemFolderType},
    };
    return std::ranges::any_of(kProtected,
                               [=](const auto& kind)
                               {
                                   CTovStringW folder;
                                   return !FindPlatformFolder(kind.first, kind.second, folder) ||
                                          (!folder.IsEmpty() && CHynPathHelper::PathInPath(path, folder) < 0);
                               });
}
} // namespace

CTovStringW ExpandTildePath(const CTovStringW& path) noexcept
{
    if (!IsShort(path))
        return path;
    FSRef root = {};
    CFStringRef shown = nullptr;
    if (FSPathMakeRef("/", &root, nullptr) == noErr)
        LSCopyDisplayNameForRef(&root, &shown);
    const CTovStringW name = shown;
    CFRelease(shown);
    return name.IsEmpty() ? CTovStringW() : Concat({kVolumes, name, path});
}

int CHynPathHelper::RemoveBacksplash(char16_t* path) noexcept
{
    return TovPathRemoveSlash(path);
}

int CHynPathHelper::AddBackslash(char16_t* path) noexcept
{
    return TovPathAddSlash(path);
}

int CHynPathHelper::RemoveFileSpec(char16_t* path) noexcept
{
    return TovPathRemoveFileSpec(path);
}

void CHynPathHelper::RemoveBacksplash(CTovStringW& path) noexcept
{
    ChangeInPlace(path, 0, TovPathRemoveSlash);
}

void CHynPathHelper::AddBackslash(CTovStringW& path) noexcept
{
    ChangeInPlace(path, 1, TovPathAddSlash);
}

int CHynPathHelper::RemoveFileSpec(CTovStringW& path) noexcept
{
    return std::max(ChangeInPlace(path, 0, TovPathRemoveFileSpec), 0);
}

CTovStringW CHynPathHelper::MakeFullPath(const char16_t* dir, const char16_t* name) noexcept
{
    const std::u16string_view folder = ViewOf(dir);
    const Scratch joined(new (std::nothrow) char16_t[folder.size() + ViewOf(name).size() + 3]);
    if (joined == nullptr)
        return {};
    folder.copy(joined.get(), folder.size());
    joined[folder.size()] = 0;
    TovPathAppend(joined.get(), name);
    return joined.get();
}

CTovStringW CHynPathHelper::FindExtension(const char16_t* path) noexcept
{
    return TovPathFindExtension(path);
}

CTovStringW CHynPathHelper::FindFileName(const char16_t* path) noexcept
{
    // A separator at the end is passed over where it stands, which saves a copy.
    std::u16string_view name = ViewOf(path);
    if (name.ends_with(u'/'))
        name.remove_suffix(1);
    return CTovStringW(name.substr(name.rfind(u'/') + 1));
}

int CHynPathHelper::CommonPrefix(const char16_t* a, const char16_t* b, char16_t* out) noexcept
{
    return TovPathCommonPrefix(a, b, out);
}

int CHynPathHelper::CommonPrefix(const char16_t* a, const char16_t* b, CTovStringW& out) noexcept
{
    const Scratch prefix(new (std::nothrow) char16_t[kTovPathUnits]);
    if (prefix == nullptr)
        return 0;
    const int length = TovPathCommonPrefix(a, b, prefix.get());
    out = prefix.get();
    return out.GetLength() == length ? length : 0;
}

CTovStringW CHynPathHelper::ReplaceUpLevelPath(const char16_t* path, const char16_t* oldPrefix,
                                               const char16_t* newPrefix) noexcept
{
    if (path == nullptr || oldPrefix == nullptr || newPrefix == nullptr)
        return {};
    const std::size_t length = tov_wcslen(oldPrefix);
    if (tov_wcslen(path) < length || tov_wcsnicmp(path, oldPrefix, length) != 0)
        return {};
    return Concat({ViewOf(newPrefix), ViewOf(path + length)});
}

bool CHynPathHelper::FileInSameFolder(const char16_t* a, const char16_t* b) noexcept
{
    // Folding letter case never changes the length.
    const std::u16string_view parents[] = {ParentOf(a), ParentOf(b)};
    return parents[0].size() == parents[1].size() && (parents[0].empty() || tov_wcsnicmp(a, b, parents[0].size()) == 0);
}

int CHynPathHelper::IsDirectory(const char16_t* path) noexcept
{
    return TovPathIsDirectory(path);
}

int CHynPathHelper::IsFileExists(const char16_t* path) noexcept
{
    return TovPathFileExists(path);
}

int CHynPathHelper::IsUNC(const char16_t* path) noexcept
{
    return TovPathIsUNC(path);
}

int CHynPathHelper::IsRoot(const char16_t* path) noexcept
{
    return TovPathIsRoot(path);
}

int CHynPathHelper::IsSameRoot(const char16_t* a, const char16_t* b) noexcept
{
    return TovPathIsSameRoot(a, b);
}

CTovStringW CHynPathHelper::GetPathDriver(const char16_t* path) noexcept
{
    CTovStringW driver;
    FindDriver(path, driver);
    return driver;
}

CTovStringW CHynPathHelper::GetRelativePath(const char16_t* path) noexcept
{
    CTovStringW whole = path;
    CTovStringW driver;
    if (ChangeInPlace(whole, 1, TovPathAddSlash) == kNoMemory)
        return {};
    if (TovPathIsUNC(whole) != 0)
        return whole;
    if (!FindDriver(path, driver))
        return {};
    return driver.IsEmpty() ? whole : whole.Mid(driver.GetLength());
}

CTovStringW CHynPathHelper::GetFileRelativePath(const char16_t* path) noexcept
{
    CTovStringW folder = path;
    if (ChangeInPlace(folder, 0, TovPathRemoveFileSpec) == kNoMemory)
        return {};
    return GetRelativePath(folder);
}

int CHynPathHelper::PathInPath(const char16_t* a, const char16_t* b) noexcept
{
    if (a == nullptr || b == nullptr)
        return PathInPath(a != nullptr ? a : u"", b != nullptr ? b : u"");
    const bool expandsA = IsShort(a) && BeginsWithVolumes(b);
    const bool expandsB = IsShort(b) && BeginsWithVolumes(a);
    // The startup volume's name matters only when one path has it and the other does not: before both, it changes no
    // answer, and to ask for it costs more than the comparison.
    if (!expandsA && !expandsB)
        return Nesting(a, b);
    const CTovStringW whole = ExpandTildePath(expandsA ? a : b);
    if (whole.IsEmpty()) // no memory; the empty path would contain everything
        return 0;
    return expandsA ? Nesting(whole, b) : Nesting(a, whole);
}

bool CHynPathHelper::IsValidScanFolder(const char16_t* path) noexcept
{
    if (path == nullptr || *path == 0 || TovPathIsUNC(path) != 0)
        return false;
    CTovStringW driver;
    if (!FindDriver(path, driver))
        return false;
    const std::uint32_t drive = TovGetDriveType(driver);
    if (drive != kTovDriveRemovable && drive != kTovDriveFixed)
        return false;
    if (MayLieInSystemFolder(path))
        return false;
    CTovStringW users;
    CTovStringW home;
    if (!FindPlatformFolder(kLocalDomain, kUsersFolderType, users) ||
        !FindPlatformFolder(kLocalDomain, kCurrentUserFolderType, home))
        return false;
    return users.IsEmpty() || home.IsEmpty() || PathInPath(path, home) < 0 || PathInPath(path, users) >= 0;
}

int CHynPathHelper::IsReadOnlyFile(const char16_t* path) noexcept
{
    FSRef ref = {};
    FSCatalogInfo info = {};
    if (!CTovStringW(path).MakeFSRef(&ref) ||
        FSGetCatalogInfo(&ref, kFSCatInfoUserPrivs, &info, nullptr, nullptr, nullptr) != noErr ||
        FSRefCheckLock(&ref) != noErr)
        return 1;
    Boolean writable = 0;
    if (FSRefIsWritable(&ref, &writable) == noErr && writable == 0)
        return 1;
    HFSUniStr255 fork = {};
    FSGetDataForkName(&fork);
    FSIORefNum file = 0;
    if (FSOpenFork(&ref, fork.length, fork.unicode, fsRdWrPerm, &file) != noErr)
        return 1;
    FSCloseFork(file);
    return info.userPrivileges & kioACUserNoMakeChangesMask;
}

bool CHynPathHelper::IsRecycleBinFolder(const char16_t* /*path*/) noexcept
{
    return false;
}
} // namespace Halyon
