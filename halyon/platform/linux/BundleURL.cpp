// Places in the file system, and arrays.

#include <algorithm>
#include <cstring>
#include <string>

#include <halyon/platform/FileManager.h>
#include <halyon/platform/TovPCMac.h>

#include "BundleFolder.h"
#include "CFObject.h"

namespace Halyon
{
// The values follow it in the same allocation.
struct __CFArray : CFObject
{
    CFIndex nCount = 0;

    [[nodiscard]] CFTypeRef* Values() noexcept { return reinterpret_cast<CFTypeRef*>(this + 1); }
};
static_assert(sizeof(__CFArray) % alignof(CFTypeRef) == 0);

// The bytes of the path and a terminator follow it in the same allocation.
struct __CFURL : CFObject
{
    std::size_t uLength = 0;

    [[nodiscard]] const char* Path() const noexcept { return reinterpret_cast<const char*>(this + 1); }
    [[nodiscard]] char* Path() noexcept { return reinterpret_cast<char*>(this + 1); }
};

namespace
{
void DestroyArray(CFObject* object) noexcept
{
    auto* array = static_cast<__CFArray*>(object);
    std::for_each_n(array->Values(), array->nCount, CFRelease);
    CFFreeObject(object);
}

// A path of this length is longer than any system takes.
constexpr std::size_t kMaxPathBytes = 1u << 20;
} // namespace

CFArrayRef CFMakeArray(CFTypeRef* values, std::size_t count) noexcept
{
    auto* array = CFMakeObject<__CFArray>(count * sizeof(CFTypeRef), DestroyArray);
    if (array == nullptr)
    {
        std::for_each_n(values, count, CFRelease);
        return nullptr;
    }
    array->nCount = static_cast<CFIndex>(count);
    std::copy_n(values, count, array->Values());
    return array;
}

CFIndex CFArrayGetCount(CFArrayRef array) noexcept
{
    return array != nullptr ? array->nCount : 0;
}

CFTypeRef CFArrayGetValueAtIndex(CFArrayRef array, CFIndex nIndex) noexcept
{
    if (nIndex < 0 || nIndex >= CFArrayGetCount(array))
        return nullptr;
    return const_cast<__CFArray*>(array)->Values()[nIndex];
}

std::string_view CFURLPath(CFURLRef url) noexcept
{
    return {url->Path(), url->uLength};
}

CFURLRef CFMakeURL(std::string_view path) noexcept
{
    auto* url = CFMakeObject<__CFURL>(path.size() + 1);
    if (url == nullptr)
        return nullptr;
    url->uLength = path.size();
    *std::ranges::copy(path, url->Path()).out = 0;
    return url;
}

CFURLRef CFAppendToURL(CFURLRef url, std::string_view component) noexcept
{
    const std::string_view folder = CFURLPath(url);
    const bool needsSlash = !folder.ends_with('/');
    auto* joined = CFMakeObject<__CFURL>(folder.size() + component.size() + 2);
    if (joined == nullptr)
        return nullptr;
    char* end = std::ranges::copy(folder, joined->Path()).out;
    if (needsSlash)
        *end++ = '/';
    end = std::ranges::copy(component, end).out;
    *end = 0;
    joined->uLength = static_cast<std::size_t>(end - joined->Path());
    return joined;
}

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef /*allocator*/, const FSRef* pRef) noexcept
{
    char path[sizeof pRef->szPath];
    return FSRefMakePath(pRef, path, sizeof path) == noErr ? CFMakeURL(path) : nullptr;
}

Boolean CFURLGetFSRef(CFURLRef url, FSRef* pRef) noexcept
{
    return url != nullptr && FSPathMakeRef(url->Path(), pRef, nullptr) == noErr ? 1 : 0;
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef /*allocator*/, CFURLRef url, CFStringRef component,
                                               Boolean /*bIsDirectory*/) noexcept
{
    const CFIndex length = CFStringGetLength(component);
    if (url == nullptr || component == nullptr || length > CFIndex{kMaxPathBytes})
        return nullptr;
    try
    {
        std::string bytes(static_cast<std::size_t>(length) * 3 + 1, '\0');
        if (!CFStringGetCString(component, bytes.data(), static_cast<CFIndex>(bytes.size()), kCFStringEncodingUTF8))
            return nullptr;
        std::string_view text = bytes.c_str();
        text.remove_prefix(std::min(text.find_first_not_of('/'), text.size()));
        text = text.substr(0, text.find_last_not_of('/') + 1);
        return text.empty() ? CFMakeURL(CFURLPath(url)) : CFAppendToURL(url, text);
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef /*allocator*/, CFURLRef url) noexcept
{
    if (url == nullptr || CFURLPath(url) == "/")
        return nullptr;
    const std::string_view path = CFURLPath(url);
    return CFMakeURL(path.substr(0, std::max<std::size_t>(path.rfind('/'), 1)));
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean /*bResolve*/, char* pBuffer, CFIndex nSize) noexcept
{
    if (pBuffer == nullptr || nSize <= 0)
        return 0;
    pBuffer[0] = 0;
    if (url == nullptr || url->uLength >= static_cast<std::size_t>(nSize))
        return 0;
    std::memcpy(pBuffer, url->Path(), url->uLength + 1);
    return 1;
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFIndex nStyle) noexcept
{
    if (url == nullptr || nStyle != kCFURLPOSIXPathStyle)
        return nullptr;
    return CFStringCreateWithCString(nullptr, url->Path(), kCFStringEncodingUTF8);
}
} // namespace Halyon
