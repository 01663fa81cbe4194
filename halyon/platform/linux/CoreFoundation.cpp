// Counted platform texts.

#include <halyon/platform/CoreFoundation.h>

#include <algorithm>
#include <cstring>

#include <unicode/ustring.h>

#include <halyon/platform/TovPCMac.h>

#include "CFObject.h"

namespace Halyon
{
// The characters and a terminator follow it in the same allocation.
struct __CFString : CFObject
{
    CFIndex nLength = 0;

    [[nodiscard]] const char16_t* Characters() const noexcept { return reinterpret_cast<const char16_t*>(this + 1); }
    [[nodiscard]] char16_t* Characters() noexcept { return reinterpret_cast<char16_t*>(this + 1); }
};

namespace
{
constexpr CFIndex kMaxLength = PTRDIFF_MAX / CFIndex{sizeof(char16_t)} - CFIndex{sizeof(__CFString)};

// A text whose characters are yet to be written; null when there is no memory. Requires: 0 <= `length` <= kMaxLength.
__CFString* NewString(CFIndex length) noexcept
{
    auto* string = CFMakeObject<__CFString>((static_cast<std::size_t>(length) + 1) * sizeof(char16_t));
    if (string == nullptr)
        return nullptr;
    string->nLength = length;
    string->Characters()[length] = 0;
    return string;
}
} // namespace

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef /*allocator*/, const char16_t* pCharacters,
                                         CFIndex nLength) noexcept
{
    if (nLength < 0 || nLength > kMaxLength || (pCharacters == nullptr && nLength != 0))
        return nullptr;
    __CFString* string = NewString(nLength);
    if (string != nullptr && nLength != 0)
        std::memcpy(string->Characters(), pCharacters, static_cast<std::size_t>(nLength) * sizeof(char16_t));
    return string;
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef /*allocator*/, const char* psz, CFStringEncoding encoding) noexcept
{
    if (psz == nullptr || encoding != kCFStringEncodingUTF8)
        return nullptr;
    std::int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(nullptr, 0, &length, psz, -1, &status); // asks for the length and refuses what is ill-formed
    if (U_FAILURE(status) && status != U_BUFFER_OVERFLOW_ERROR)
        return nullptr;
    __CFString* string = NewString(length);
    status = U_ZERO_ERROR;
    if (string != nullptr)
        u_strFromUTF8(string->Characters(), length + 1, nullptr, psz, -1, &status);
    return string;
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
    std::memcpy(pBuffer, string->Characters() + range.location, static_cast<std::size_t>(count) * sizeof(char16_t));
}

Boolean CFStringGetCString(CFStringRef string, char* pBuffer, CFIndex nSize, CFStringEncoding encoding) noexcept
{
    if (pBuffer == nullptr || nSize <= 0)
        return 0;
    pBuffer[0] = 0;
    if (string == nullptr || encoding != kCFStringEncodingUTF8)
        return 0;
    const auto length = static_cast<std::size_t>(string->nLength);
    if (tov_wcslen(string->Characters()) != length)
        return 0;
    const auto room = static_cast<std::size_t>(nSize - 1);
    const std::size_t size = TovTextToUTF8(string->Characters(), length, pBuffer, room);
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
