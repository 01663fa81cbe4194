#include <halyon/tools/CHynIconHelper2.h>

#include <algorithm>
#include <new>

#include <halyon/platform/TovPCMac.h>

namespace Halyon
{
namespace
{
constexpr OSType kCreator = 0x51505257; // "QPRW"
constexpr OSType kType = 0x48594E54;    // "HYNT"

IconRef Register(std::span<const std::uint8_t> family)
{
    IconRef icon = nullptr;
    return RegisterIconRefFromIconFamily(kCreator, kType, family, &icon) == noErr ? icon : nullptr;
}
} // namespace

std::uint32_t CHynIconHelper2::SaveIcon(OpaqueIconRef* icon, unsigned char** out) noexcept
{
    if (out == nullptr)
        return 0;
    *out = nullptr;
    IconFamily family;
    if (icon == nullptr || IconRefToIconFamily(icon, kSelectorAllAvailableData, &family) != noErr)
        return 0;
    *out = new (std::nothrow) unsigned char[family.size()];
    if (*out == nullptr)
        return 0;
    std::ranges::copy(family, *out);
    return static_cast<std::uint32_t>(family.size());
}

OpaqueIconRef* CHynIconHelper2::LoadIcon(unsigned char* data, std::uint32_t size) noexcept
{
    return data != nullptr ? Register({data, size}) : nullptr;
}

OpaqueIconRef* CHynIconHelper2::LoadIcon(const char16_t* name, void* bundle) noexcept
{
    if (name == nullptr || bundle == nullptr)
        return nullptr;
    CFStringRef string = CFStringCreateWithCharacters(nullptr, name, static_cast<CFIndex>(tov_wcslen(name)));
    CFURLRef url = CFBundleCopyResourceURL(static_cast<CFBundleRef>(bundle), string, nullptr, nullptr);
    CFRelease(string);
    FSRef ref;
    const Boolean bFound = CFURLGetFSRef(url, &ref);
    CFRelease(url);
    return bFound != 0 ? CreateIconFromFile(&ref) : nullptr;
}

OpaqueIconRef* CHynIconHelper2::CreateIconFromFile(const FSRef* ref) noexcept
{
    IconFamily family;
    return ReadIconFromFSRef(ref, &family) == noErr ? Register(family) : nullptr;
}

int CHynIconHelper2::DestroyIcon(OpaqueIconRef* icon) noexcept
{
    return ReleaseIconRef(icon) == noErr ? 1 : 0;
}
} // namespace Halyon
