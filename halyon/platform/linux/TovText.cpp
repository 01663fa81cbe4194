// 16-bit text: length, copies, comparison, numbers.

#include <halyon/platform/TovPCMac.h>

#include <cstring>

#include <unicode/uchar.h>
#include <unicode/utf16.h>

std::size_t tov_wcslen(const char16_t* psz) noexcept
{
    std::size_t length = 0;
    while (psz[length] != 0)
        ++length;
    return length;
}

char16_t* tov_wcscpy(char16_t* dest, const char16_t* src) noexcept
{
    std::memcpy(dest, src, (tov_wcslen(src) + 1) * sizeof(char16_t));
    return dest;
}

char16_t* tov_wcsncpy(char16_t* dest, const char16_t* src, std::size_t uCount) noexcept
{
    std::size_t i = 0;
    for (; i < uCount && src[i] != 0; ++i)
        dest[i] = src[i];
    for (; i < uCount; ++i)
        dest[i] = 0;
    return dest;
}

namespace
{
// The code point at `text[i]`, within `count` units; an unpaired surrogate stands for itself. Moves `i` past it.
char32_t NextFolded(const char16_t* text, std::size_t& i, std::size_t count) noexcept
{
    char32_t c = text[i++];
    if (c < 0x80)
        return c >= u'A' && c <= u'Z' ? c + 0x20 : c;
    if (U16_IS_LEAD(c) && i < count && U16_IS_TRAIL(text[i]))
        c = static_cast<char32_t>(U16_GET_SUPPLEMENTARY(c, text[i++]));
    return static_cast<char32_t>(u_foldCase(static_cast<UChar32>(c), U_FOLD_CASE_DEFAULT));
}

int CompareFolded(const char16_t* a, const char16_t* b, std::size_t count) noexcept
{
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < count && j < count)
    {
        const char32_t x = NextFolded(a, i, count);
        const char32_t y = NextFolded(b, j, count);
        if (x != y)
            return x < y ? -1 : 1;
        if (x == 0)
            return 0;
    }
    return 0;
}
} // namespace

int tov_wcscmpi(const char16_t* a, const char16_t* b) noexcept
{
    return CompareFolded(a, b, SIZE_MAX);
}

int tov_wcsnicmp(const char16_t* a, const char16_t* b, std::size_t uCount) noexcept
{
    return CompareFolded(a, b, uCount);
}

int tov_iswspace(char16_t unit) noexcept
{
    return u_isUWhiteSpace(unit) ? 1 : 0;
}

std::int32_t tov_wtoi(const char16_t* psz) noexcept
{
    while (tov_iswspace(*psz) != 0)
        ++psz;
    const bool negative = *psz == u'-';
    if (negative || *psz == u'+')
        ++psz;
    std::uint32_t value = 0;
    for (; *psz >= u'0' && *psz <= u'9'; ++psz)
        value = value * 10 + static_cast<std::uint32_t>(*psz - u'0');
    return static_cast<std::int32_t>(negative ? 0 - value : value);
}
