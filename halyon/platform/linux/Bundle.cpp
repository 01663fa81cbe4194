// Bundles: folders with a known shape.

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <unicode/ustring.h>

#include "BundleFolder.h"
#include "CFObject.h"

namespace Halyon
{
struct __CFBundle : CFObject
{
    CFURLRef url = nullptr;
};

namespace
{
constexpr std::string_view kResources = "Contents/Resources";
constexpr std::string_view kLocalization = ".lproj";

void DestroyBundle(CFObject* object) noexcept
{
    CFRelease(static_cast<__CFBundle*>(object)->url);
    CFFreeObject(object);
}

// Takes over the reference.
CFBundleRef MakeBundle(CFURLRef url) noexcept
{
    if (url == nullptr)
        return nullptr;
    auto* bundle = CFMakeObject<__CFBundle>(0, DestroyBundle);
    if (bundle == nullptr)
        CFRelease(url);
    else
        bundle->url = url;
    return bundle;
}

// Cuts the last component; the root folder's own is the empty text.
std::string_view Parent(std::string_view path) noexcept
{
    return path.substr(0, std::min(path.rfind('/'), path.size()));
}

// The bundle folder of the program at `path`. A program that was replaced while it runs has a mark of the system behind
// its name, which is cut here with the name.
std::string_view BundleOfProgram(std::string_view path) noexcept
{
    const std::string_view folder = Parent(path);
    const std::string_view contents = Parent(folder);
    const bool isInBundle = contents.size() < folder.size() && contents.ends_with("/Contents");
    const std::string_view bundle = isInBundle ? Parent(contents) : folder;
    return bundle.empty() ? "/" : bundle;
}

CFBundleRef MakeMainBundle() noexcept
{
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    // A name that fills the buffer may have been cut.
    if (length <= 0 || path[0] != '/' || static_cast<std::size_t>(length) >= sizeof path)
        return nullptr;
    return MakeBundle(CFMakeURL(BundleOfProgram({path, static_cast<std::size_t>(length)})));
}

bool IsFolder(const char* path) noexcept
{
    struct stat info = {};
    return stat(path, &info) == 0 && S_ISDIR(info.st_mode);
}

struct CloseFolder
{
    void operator()(DIR* folder) const noexcept { closedir(folder); }
};

// The names of the localisation folders, without their ending, sorted.
std::vector<std::string> LocalizationsIn(CFURLRef resources)
{
    std::vector<std::string> names;
    const std::unique_ptr<DIR, CloseFolder> folder(opendir(CFURLPath(resources).data()));
    if (folder == nullptr && errno == ENOMEM)
        throw std::bad_alloc();
    if (folder == nullptr)
        return names;
    while (const dirent* entry = readdir(folder.get()))
    {
        const std::string_view name = entry->d_name;
        if (!name.ends_with(kLocalization) || name.size() == kLocalization.size())
            continue;
        const CFHolder<CFURLRef> place(CFAppendToURL(resources, name));
        if (place == nullptr)
            throw std::bad_alloc();
        if (IsFolder(CFURLPath(place.get()).data()))
            names.emplace_back(name.substr(0, name.size() - kLocalization.size()));
    }
    std::ranges::sort(names);
    return names;
}

bool IsText(const std::string& name)
{
    char16_t units[NAME_MAX + 1];
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(units, NAME_MAX + 1, nullptr, name.data(), static_cast<int32_t>(name.size()), &status);
    return U_SUCCESS(status);
}

// Names that are no text are left out: no language is called so. A name is never left out for want of memory: another
// language would be taken.
CFArrayRef ArrayOfTexts(const std::vector<std::string>& names)
{
    std::vector<CFHolder<CFStringRef>> texts;
    texts.reserve(names.size());
    for (const std::string& name : names)
    {
        if (!IsText(name))
            continue;
        texts.emplace_back(CFStringCreateWithCString(nullptr, name.c_str(), kCFStringEncodingUTF8));
        if (texts.back() == nullptr)
            throw std::bad_alloc();
    }
    std::vector<CFTypeRef> values;
    values.reserve(texts.size());
    for (CFHolder<CFStringRef>& text : texts)
        values.push_back(text.release());
    return values.empty() ? nullptr : CFMakeArray(values.data(), values.size());
}

// The folder of the preferred localisation; null when there is none.
CFHolder<CFURLRef> LocalizedResources(CFBundleRef bundle, CFURLRef resources)
{
    const CFHolder<CFArrayRef> all(CFBundleCopyBundleLocalizations(bundle));
    const CFHolder<CFArrayRef> preferred(CFBundleCopyPreferredLocalizationsFromArray(all.get()));
    const auto name = static_cast<CFStringRef>(CFArrayGetValueAtIndex(preferred.get(), 0));
    char folder[NAME_MAX + 1];
    if (!CFStringGetCString(name, folder, sizeof folder, kCFStringEncodingUTF8))
        return nullptr;
    return CFHolder<CFURLRef>(CFAppendToURL(resources, std::string(folder).append(kLocalization)));
}

// Appends the text as UTF-8, and `after` unless it is 0; false for a text that no path can hold.
bool AppendText(std::string& bytes, CFStringRef text, char after = 0)
{
    char buffer[PATH_MAX];
    if (!CFStringGetCString(text, buffer, sizeof buffer, kCFStringEncodingUTF8))
        return false;
    bytes += buffer;
    if (after != 0)
        bytes += after;
    return true;
}

CFURLRef ExistingPlace(CFURLRef folder, std::string_view path) noexcept
{
    CFHolder<CFURLRef> place(CFAppendToURL(folder, path));
    const bool exists = place != nullptr && access(CFURLPath(place.get()).data(), F_OK) == 0;
    return exists ? place.release() : nullptr;
}

CFURLRef FindResource(CFBundleRef bundle, CFStringRef name, CFStringRef type, CFStringRef subFolder)
{
    std::string path;
    if (subFolder != nullptr && !AppendText(path, subFolder, '/'))
        return nullptr;
    if (!AppendText(path, name) || (type != nullptr && !AppendText(path += '.', type)))
        return nullptr;
    const CFHolder<CFURLRef> resources(CFAppendToURL(bundle->url, kResources));
    if (resources == nullptr)
        return nullptr;
    if (CFURLRef place = ExistingPlace(resources.get(), path))
        return place;
    const CFHolder<CFURLRef> localized = LocalizedResources(bundle, resources.get());
    return localized != nullptr ? ExistingPlace(localized.get(), path) : nullptr;
}
} // namespace

CFBundleRef CFBundleCreate(CFAllocatorRef /*allocator*/, CFURLRef url) noexcept
{
    if (url == nullptr || !IsFolder(CFURLPath(url).data()))
        return nullptr;
    return MakeBundle(static_cast<CFURLRef>(CFRetain(url)));
}

CFBundleRef CFBundleGetMainBundle() noexcept
{
    static std::atomic<CFBundleRef> main = nullptr;
    CFBundleRef bundle = main.load();
    if (bundle != nullptr)
        return bundle;
    // Made by two threads at once, one is kept. Without memory the next call tries again.
    CFBundleRef made = MakeMainBundle();
    if (main.compare_exchange_strong(bundle, made))
        return made;
    CFRelease(made);
    return bundle;
}

CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle) noexcept
{
    return bundle != nullptr ? static_cast<CFURLRef>(CFRetain(bundle->url)) : nullptr;
}

CFArrayRef CFBundleCopyBundleLocalizations(CFBundleRef bundle) noexcept
{
    if (bundle == nullptr)
        return nullptr;
    try
    {
        const CFHolder<CFURLRef> resources(CFAppendToURL(bundle->url, kResources));
        return resources != nullptr ? ArrayOfTexts(LocalizationsIn(resources.get())) : nullptr;
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef name, CFStringRef type, CFStringRef subFolder) noexcept
{
    if (bundle == nullptr || name == nullptr)
        return nullptr;
    try
    {
        return FindResource(bundle, name, type, subFolder);
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}
} // namespace Halyon
