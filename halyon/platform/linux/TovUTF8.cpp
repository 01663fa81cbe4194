// UTF-16 to UTF-8 and back.

#include <halyon/platform/TovPCMac.h>

#include <climits>

#include <unicode/ustring.h>

namespace
{
constexpr UChar32 kReplacement = 0xFFFD;

std::size_t SizeFrom(std::int32_t needed, UErrorCode status) noexcept
{
    return U_SUCCESS(status) || status == U_BUFFER_OVERFLOW_ERROR ? static_cast<std::size_t>(needed) : 0;
}
} // namespace

std::size_t TovTextToUTF8(const char16_t* text, std::size_t uLength, char* buffer, std::size_t uSize) noexcept
{
    if (uLength > INT32_MAX / 3)
        return 0;
    std::int32_t needed = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8WithSub(nullptr, 0, &needed, text, static_cast<std::int32_t>(uLength), kReplacement, nullptr, &status);
    const std::size_t size = SizeFrom(needed, status);
    if (size != 0 && size <= uSize)
    {
        status = U_ZERO_ERROR;
        u_strToUTF8WithSub(buffer, needed, nullptr, text, static_cast<std::int32_t>(uLength), kReplacement, nullptr,
                           &status);
    }
    return size;
}

std::size_t TovTextFromUTF8(const char* text, std::size_t uBytes, char16_t* buffer, std::size_t uSize) noexcept
{
    if (uBytes > INT32_MAX)
        return 0;
    std::int32_t needed = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8WithSub(nullptr, 0, &needed, text, static_cast<std::int32_t>(uBytes), kReplacement, nullptr, &status);
    const std::size_t size = SizeFrom(needed, status);
    if (size != 0 && size <= uSize)
    {
        status = U_ZERO_ERROR;
        u_strFromUTF8WithSub(buffer, needed, nullptr, text, static_cast<std::int32_t>(uBytes), kReplacement, nullptr,
                             &status);
    }
    return size;
}
