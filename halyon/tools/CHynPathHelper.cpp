#include <halyon/tools/CHynPathHelper.h>

#include <cstddef>
#include <memory>
#include <new>
#include <string_view>

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

// Applies one of the portability layer's calls, which may lengthen the text by `spare` units; returns its result.
int ChangeInPlace(CTovStringW& path, std::size_t spare, int (*change)(char16_t*) noexcept) noexcept
{
    if (path.IsEmpty())
        return 0;
    const Scratch copy(new (std::nothrow) char16_t[path.View().size() + spare + 1]);
    if (copy == nullptr)
        return 0;
    tov_wcscpy(copy.get(), path);
    const int changed = change(copy.get());
    if (changed != 0)
        path = copy.get();
    return changed;
}
} // namespace

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
    return ChangeInPlace(path, 0, TovPathRemoveFileSpec);
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
    return length;
}

CTovStringW CHynPathHelper::ReplaceUpLevelPath(const char16_t* path, const char16_t* oldPrefix,
                                               const char16_t* newPrefix) noexcept
{
    if (path == nullptr || oldPrefix == nullptr || newPrefix == nullptr)
        return {};
    const std::size_t length = tov_wcslen(oldPrefix);
    if (tov_wcslen(path) < length || tov_wcsnicmp(path, oldPrefix, length) != 0)
        return {};
    return CTovStringW(newPrefix) + (path + length);
}

bool CHynPathHelper::FileInSameFolder(const char16_t* a, const char16_t* b) noexcept
{
    CTovStringW parents[] = {a, b};
    for (CTovStringW& parent : parents)
    {
        RemoveBacksplash(parent);
        RemoveFileSpec(parent);
    }
    return tov_wcscmpi(parents[0], parents[1]) == 0;
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

bool CHynPathHelper::IsRecycleBinFolder(const char16_t* /*path*/) noexcept
{
    return false;
}
} // namespace Halyon
