// Paths as text.

#include <halyon/platform/TovPCMac.h>

#include <algorithm>
#include <cstring>

namespace
{
std::size_t LengthOf(const char16_t* path) noexcept
{
    return path != nullptr ? tov_wcslen(path) : 0;
}

// Where the text ends without the separators at its end; "/" keeps one.
std::size_t WithoutSlashes(const char16_t* path, std::size_t length) noexcept
{
    while (length > 1 && path[length - 1] == u'/')
        --length;
    return length;
}

bool EndsComponent(char16_t unit) noexcept
{
    return unit == 0 || unit == u'/';
}
} // namespace

int TovPathRemoveSlash(char16_t* pszPath) noexcept
{
    const std::size_t length = LengthOf(pszPath);
    if (length < 2 || pszPath[length - 1] != u'/')
        return 0;
    pszPath[length - 1] = 0;
    return 1;
}

int TovPathAddSlash(char16_t* pszPath) noexcept
{
    const std::size_t length = LengthOf(pszPath);
    if (pszPath == nullptr || (length != 0 && pszPath[length - 1] == u'/'))
        return 0;
    pszPath[length] = u'/';
    pszPath[length + 1] = 0;
    return 1;
}

int TovPathRemoveFileSpec(char16_t* pszPath) noexcept
{
    const std::size_t length = LengthOf(pszPath);
    const auto name = length != 0 ? static_cast<std::size_t>(TovPathFindFileName(pszPath) - pszPath) : 0;
    const std::size_t kept = WithoutSlashes(pszPath, name);
    if (kept == length)
        return 0;
    pszPath[kept] = 0;
    return 1;
}

int TovPathAppend(char16_t* pszPath, const char16_t* pszName) noexcept
{
    if (pszPath == nullptr)
        return 0;
    std::size_t length = LengthOf(pszPath);
    if (LengthOf(pszName) == 0)
        return 1;
    if (length != 0)
    {
        length = WithoutSlashes(pszPath, length);
        while (*pszName == u'/')
            ++pszName;
        if (pszPath[length - 1] != u'/')
            pszPath[length++] = u'/';
    }
    tov_wcscpy(pszPath + length, pszName);
    return 1;
}

int TovPathIsUNC(const char16_t* pszPath) noexcept
{
    if (pszPath == nullptr || (*pszPath != u'/' && *pszPath != u'\\') || pszPath[1] != *pszPath)
        return 0;
    const char16_t host = pszPath[2]; // "." and "?" begin other things than hosts there
    const bool isHost = host != 0 && host != u'/' && host != u'\\' && host != u'.' && host != u'?';
    return isHost && tov_iswspace(host) == 0 ? 1 : 0;
}

int TovPathCommonPrefix(const char16_t* pszA, const char16_t* pszB, char16_t* pszOut) noexcept
{
    *pszOut = 0;
    if (LengthOf(pszA) == 0 || LengthOf(pszB) == 0)
        return 0;
    std::size_t length = 0;
    while (pszA[length] != 0 && pszA[length] == pszB[length])
        ++length;
    // What matches may end inside a component; that component is left out.
    if (!EndsComponent(pszA[length]) || !EndsComponent(pszB[length]))
    {
        while (length != 0 && pszA[length - 1] != u'/')
            --length;
    }
    length = WithoutSlashes(pszA, length);
    if (length >= kTovPathUnits)
        return 0;
    std::memcpy(pszOut, pszA, length * sizeof(char16_t));
    pszOut[length] = 0;
    return static_cast<int>(length);
}

const char16_t* TovPathFindFileName(const char16_t* pszPath) noexcept
{
    if (pszPath == nullptr)
        return nullptr;
    const char16_t* name = pszPath + tov_wcslen(pszPath);
    while (name != pszPath && name[-1] != u'/')
        --name;
    return name;
}

const char16_t* TovPathFindExtension(const char16_t* pszPath) noexcept
{
    if (pszPath == nullptr)
        return nullptr;
    const char16_t* end = pszPath + tov_wcslen(pszPath);
    for (const char16_t* at = end; at != pszPath && at[-1] != u'/'; --at)
    {
        if (at[-1] == u'.')
            return at - 1;
    }
    return end;
}
