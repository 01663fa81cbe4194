// The folders of a bundle.

#include <halyon/tools/CHynPubTools.h>

#include <string_view>

#include <halyon/platform/CFHolder.h>
#include <halyon/tools/CHynPathHelper.h>

namespace Halyon
{
namespace
{
using URL = CFHolder<CFURLRef>;

constexpr CFIndex kPathBytes = 1024;
constexpr CFIndex kPathUnits = 1024;
constexpr char16_t kUI[] = u"UI";

// The folder of the bundle, of the main bundle for null.
URL BundleFolder(CFBundleRef bundle) noexcept
{
    return URL(CFBundleCopyBundleURL(bundle != nullptr ? bundle : CFBundleGetMainBundle()));
}

URL Append(const URL& folder, std::u16string_view component) noexcept
{
    const CFHolder<CFStringRef> text(
        CFStringCreateWithCharacters(nullptr, component.data(), static_cast<CFIndex>(component.size())));
    return URL(CFURLCreateCopyAppendingPathComponent(nullptr, folder.get(), text.get(), 1));
}

// Empty for no place, for a path that does not fit into the platform's buffers, and for one that is no text.
CTovStringW PathOf(const URL& place) noexcept
{
    char path[kPathBytes] = {};
    if (!CFURLGetFileSystemRepresentation(place.get(), 1, path, kPathBytes))
        return {};
    const CFHolder<CFStringRef> text(CFStringCreateWithCString(nullptr, path, kCFStringEncodingUTF8));
    return text.get();
}

// A folder that is not known has nothing in it: its name alone would be a relative path.
CTovStringW InFolder(const CTovStringW& folder, const char16_t* name) noexcept
{
    return folder.IsEmpty() ? CTovStringW() : CHynPathHelper::MakeFullPath(folder, name);
}

// The name of the localisation's folder; empty when the bundle has none.
CTovStringW LocalizationFolder(CFBundleRef bundle) noexcept
{
    const CFHolder<CFArrayRef> all(CFBundleCopyBundleLocalizations(bundle));
    if (all == nullptr)
        return {};
    const CFHolder<CFArrayRef> preferred(CFBundleCopyPreferredLocalizationsFromArray(all.get()));
    const auto name = static_cast<CFStringRef>(CFArrayGetValueAtIndex(preferred.get(), 0));
    const CTovStringW language = name;
    return language.IsEmpty() ? CTovStringW() : language + u".lproj";
}

// What `read` gives for the bundle at a path; empty when there is none.
template <class Read>
CTovStringW WithBundleAt(const char16_t* bundlePath, Read read) noexcept
{
    const CFHolder<CFBundleRef> bundle(CHynPubTools::CreateBundleByPath(bundlePath));
    return bundle != nullptr ? read(bundle.get()) : CTovStringW();
}
} // namespace

CTovStringW CHynPubTools::GetBundleContentsPath(CFBundleRef bundle) noexcept
{
    return PathOf(Append(BundleFolder(bundle), u"Contents"));
}

CTovStringW CHynPubTools::GetBundleResourcePath(CFBundleRef bundle) noexcept
{
    return PathOf(Append(BundleFolder(bundle), u"Contents/Resources"));
}

CTovStringW CHynPubTools::GetBundleLocalizePath(CFBundleRef bundle) noexcept
{
    if (bundle == nullptr)
        bundle = CFBundleGetMainBundle();
    URL place = Append(BundleFolder(bundle), u"Contents/Resources");
    if (const CTovStringW folder = LocalizationFolder(bundle); !folder.IsEmpty())
        place = Append(place, folder);
    return PathOf(place);
}

CTovStringW CHynPubTools::GetBundleLocalizeUIPath(CFBundleRef bundle) noexcept
{
    return InFolder(GetBundleLocalizePath(bundle), kUI);
}

CTovStringW CHynPubTools::GetBundleContentsPathWithName(CFBundleRef bundle, const char16_t* name) noexcept
{
    return InFolder(GetBundleContentsPath(bundle), name);
}

CTovStringW CHynPubTools::GetBundleResourcePathWithName(CFBundleRef bundle, const char16_t* name) noexcept
{
    return InFolder(GetBundleResourcePath(bundle), name);
}

CTovStringW CHynPubTools::GetBundleLocalizePathWithName(CFBundleRef bundle, const char16_t* name) noexcept
{
    return InFolder(GetBundleLocalizePath(bundle), name);
}

CTovStringW CHynPubTools::GetBundleLocalizeUIPathWithName(CFBundleRef bundle, const char16_t* name) noexcept
{
    return InFolder(GetBundleLocalizeUIPath(bundle), name);
}

CTovStringW CHynPubTools::GetResourcePathFromBundlePath(const char16_t* bundlePath) noexcept
{
    return WithBundleAt(bundlePath, GetBundleResourcePath);
}

CTovStringW CHynPubTools::GetLocalizePathFromBundlePath(const char16_t* bundlePath) noexcept
{
    return WithBundleAt(bundlePath, GetBundleLocalizePath);
}

CTovStringW CHynPubTools::GetLocalizeUIPathFromBundlePath(const char16_t* bundlePath) noexcept
{
    return WithBundleAt(bundlePath, GetBundleLocalizeUIPath);
}

CTovStringW CHynPubTools::GetResourcePathWithNameFromBundlePath(const char16_t* bundlePath,
                                                                const char16_t* name) noexcept
{
    return InFolder(GetResourcePathFromBundlePath(bundlePath), name);
}

CTovStringW CHynPubTools::GetLocalizePathWithNameFromBundlePath(const char16_t* bundlePath,
                                                                const char16_t* name) noexcept
{
    return InFolder(GetLocalizePathFromBundlePath(bundlePath), name);
}

CTovStringW CHynPubTools::GetLocalizeUIPathWithNameFromBundlePath(const char16_t* bundlePath,
                                                                  const char16_t* name) noexcept
{
    return InFolder(GetLocalizeUIPathFromBundlePath(bundlePath), name);
}

int CHynPubTools::GetModulePath(CFBundleRef bundle, char16_t* out) noexcept
{
    if (out == nullptr)
        return 0;
    const URL folder(CFURLCreateCopyDeletingLastPathComponent(nullptr, BundleFolder(bundle).get()));
    const CFHolder<CFStringRef> path(CFURLCopyFileSystemPath(folder.get(), kCFURLPOSIXPathStyle));
    const CFIndex length = CFStringGetLength(path.get());
    if (path == nullptr || length >= kPathUnits)
        return 0;
    CFStringGetCharacters(path.get(), {0, length}, out);
    return 1;
}

int CHynPubTools::GetModuleUIPath(CFBundleRef bundle, char16_t* out) noexcept
{
    char16_t folder[kPathUnits] = {};
    if (out == nullptr || GetModulePath(bundle, folder) == 0)
        return 0;
    const CTovStringW path = CHynPathHelper::MakeFullPath(folder, kUI);
    if (path.IsEmpty() || path.GetLength() >= kPathUnits)
        return 0;
    tov_wcscpy(out, path);
    return 1;
}

CFBundleRef CHynPubTools::CreateBundleByPath(const char16_t* path) noexcept
{
    FSRef ref = {};
    if (!CTovStringW(path).MakeFSRef(&ref))
        return nullptr;
    const URL url(CFURLCreateFromFSRef(nullptr, &ref));
    return CFBundleCreate(nullptr, url.get());
}
} // namespace Halyon
