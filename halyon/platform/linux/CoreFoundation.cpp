// Counted platform texts.

#include <halyon/platform/CoreFoundation.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include <halyon/platform/TovPCMac.h>

namespace Halyon
{
// Every counted value begins with this.
struct CFObject
{
    std::int32_t nRefCount = 1;
    void (*destroy)(CFObject*) noexcept = nullptr;
};

struct __CFString : CFObject
{
    CFIndex nLength = 0;
    std::unique_ptr<char16_t[]> spCharacters;
};

namespace
{
void DestroyString(CFObject* object) noexcept
{
    delete static_cast<__CFString*>(object);
}
} // namespace

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef /*allocator*/, const char16_t* pCharacters,
                                         CFIndex nLength) noexcept
{
    if (nLength < 0 || (pCharacters == nullptr && nLength != 0))
        return nullptr;
    auto spString = std::unique_ptr<__CFString>(new (std::nothrow) __CFString);
    if (spString == nullptr)
        return nullptr;
    const auto length = static_cast<std::size_t>(nLength);
    spString->spCharacters.reset(new (std::nothrow) char16_t[length + 1]);
    if (spString->spCharacters == nullptr)
        return nullptr;
    if (length != 0)
        std::memcpy(spString->spCharacters.get(), pCharacters, length * sizeof(char16_t));
    spString->spCharacters[length] = 0;
    spString->nLength = nLength;
    spString->destroy = DestroyString;
    return spString.release();
}

CFIndex CFStringGetLength(CFStringRef string) noexcept
{
    return string != nullptr ? string->nLength : 0;
}

void CFStringGetCharacters(CFStringRef string, CFRange range, char16_t* pBuffer) noexcept
{
    if (string == nullptr || range.location < 0 || range.location >= string->nLength || range.length <= 0)
        return;
    const CFIndex count = std::min(range.length, string->nLength - range.location);
    std::memcpy(pBuffer, string->spCharacters.get() + range.location,
                static_cast<std::size_t>(count) * sizeof(char16_t));
}

Boolean CFStringGetCString(CFStringRef string, char* pBuffer, CFIndex nSize, CFStringEncoding encoding) noexcept
{
    if (pBuffer == nullptr || nSize <= 0)
        return 0;
    pBuffer[0] = 0;
    if (string == nullptr || encoding != kCFStringEncodingUTF8)
        return 0;
    const auto room = static_cast<std::size_t>(nSize - 1);
    const std::size_t size =
        TovTextToUTF8(string->spCharacters.get(), static_cast<std::size_t>(string->nLength), pBuffer, room);
    if (size > room)
        return 0;
    pBuffer[size] = 0;
    return 1;
}

CFTypeRef CFRetain(CFTypeRef value) noexcept
{
    IncrementAtomic(&static_cast<CFObject*>(const_cast<void*>(value))->nRefCount);
    return value;
}

void CFRelease(CFTypeRef value) noexcept
{
    auto* object = static_cast<CFObject*>(const_cast<void*>(value));
    if (object != nullptr && DecrementAtomic(&object->nRefCount) == 1)
        object->destroy(object);
}
} // namespace Halyon
