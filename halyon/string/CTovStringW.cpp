#include <halyon/string/CTovStringW.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

using Halyon::CFStringRef;
using Halyon::FSRef;

namespace
{
constexpr std::int64_t kMaxLength = (std::numeric_limits<std::int32_t>::max() - std::int64_t{sizeof(CTovStringWData)}) /
                                        std::int64_t{sizeof(char16_t)} -
                                    1;

void CopyUnits(char16_t* dest, const char16_t* src, int count) noexcept
{
    std::memcpy(dest, src, static_cast<std::size_t>(count) * sizeof(char16_t));
}

// A length as the headers hold it; texts beyond that are refused as if there were no memory.
int LengthOf(const char16_t* psz) noexcept
{
    if (psz == nullptr)
        return 0;
    const std::size_t length = tov_wcslen(psz);
    return length <= static_cast<std::size_t>(kMaxLength) ? static_cast<int>(length) : -1;
}
} // namespace

CTovStringW::CTovStringW(const char16_t* psz) noexcept : CTovStringW()
{
    const int length = LengthOf(psz);
    if (length > 0 && AllocBuffer(length) != 0)
        CopyUnits(m_pText, psz, length);
}

CTovStringW::CTovStringW(const CTovStringW& src) noexcept : CTovStringW()
{
    CTovStringWData* data = src.GetData();
    if (data->nRefCount < 0)
    {
        AssignCopy(data->nLength, src.m_pText);
        return;
    }
    m_pText = src.m_pText;
    Halyon::IncrementAtomic(&data->nRefCount);
}

CTovStringW::CTovStringW(CFStringRef str) noexcept : CTovStringW()
{
    const Halyon::CFIndex length = CFStringGetLength(str);
    if (length != 0 && length <= kMaxLength && AllocBuffer(static_cast<int>(length)) != 0)
        CFStringGetCharacters(str, {0, length}, m_pText);
}

CTovStringW::CTovStringW(std::u16string_view text) noexcept : CTovStringW()
{
    if (!text.empty() && text.size() <= static_cast<std::size_t>(kMaxLength) &&
        AllocBuffer(static_cast<int>(text.size())) != 0)
        CopyUnits(m_pText, text.data(), GetLength());
}

// Equal text pointers are the test for the same block, the string itself included.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
CTovStringW& CTovStringW::operator=(const CTovStringW& src) noexcept
{
    if (m_pText == src.m_pText)
        return *this;
    CTovStringWData* data = src.GetData();
    const bool locked = GetData()->nRefCount < 0 && GetData() != tovtmpDataNilW;
    if (locked || data->nRefCount < 0)
    {
        AssignCopy(data->nLength, src.m_pText);
        return *this;
    }
    Release();
    m_pText = src.m_pText;
    Halyon::IncrementAtomic(&data->nRefCount);
    return *this;
}

CTovStringW& CTovStringW::operator=(CTovStringW&& src) noexcept
{
    if (this != &src)
    {
        Release();
        m_pText = src.m_pText;
        src.m_pText = tovtmpPchNilW;
    }
    return *this;
}

CTovStringW& CTovStringW::operator=(const char16_t* psz) noexcept
{
    const int length = LengthOf(psz);
    if (length < 0)
        Release();
    else
        AssignCopy(length, psz);
    return *this;
}

CTovStringW& CTovStringW::operator+=(const char16_t* psz) noexcept
{
    const int length = LengthOf(psz);
    if (length > 0)
        ConcatInPlace(length, psz);
    return *this;
}

CTovStringW operator+(const CTovStringW& a, const CTovStringW& b) noexcept
{
    CTovStringW result;
    result.ConcatCopy(a.GetLength(), a.m_pText, b.GetLength(), b.m_pText);
    return result;
}

CTovStringW CTovStringW::Mid(int nFirst, int nCount) const noexcept
{
    const std::int64_t length = GetLength();
    const std::int64_t first = nFirst < 0 ? 0 : nFirst;
    std::int64_t count = nCount < 0 ? 0 : nCount;
    if (first > length)
        count = 0;
    else if (first + count > length)
        count = length - first;
    CTovStringW result;
    AllocCopy(result, static_cast<int>(count), static_cast<int>(first), 0);
    return result;
}

CTovStringW CTovStringW::Mid(int nFirst) const noexcept
{
    const std::int64_t count = std::int64_t{GetLength()} - nFirst;
    return Mid(nFirst, static_cast<int>(std::min<std::int64_t>(count, std::numeric_limits<int>::max())));
}

CTovStringW CTovStringW::Left(int nCount) const noexcept
{
    CTovStringW result;
    AllocCopy(result, std::clamp(nCount, 0, GetLength()), 0, 0);
    return result;
}

int CTovStringW::FindOneOf(const char16_t* pszCharSet) const noexcept
{
    const char16_t* found = _cstrpbrk(m_pText, pszCharSet);
    return found != nullptr ? static_cast<int>(found - m_pText) : -1;
}

const char16_t* CTovStringW::_cstrpbrk(const char16_t* str, const char16_t* set) noexcept
{
    for (; *str != 0; ++str)
    {
        for (const char16_t* unit = set; *unit != 0; ++unit)
        {
            if (*unit == *str)
                return str;
        }
    }
    return nullptr;
}

void CTovStringW::TrimLeft() noexcept
{
    CopyBeforeWrite();
    CTovStringWData* data = GetData();
    int skipped = 0;
    while (tov_iswspace(m_pText[skipped]) != 0)
        ++skipped;
    data->nLength -= skipped;
    std::memmove(m_pText, m_pText + skipped, (static_cast<std::size_t>(data->nLength) + 1) * sizeof(char16_t));
}

void CTovStringW::TrimRight() noexcept
{
    CopyBeforeWrite();
    int length = GetLength();
    while (length > 0 && tov_iswspace(m_pText[length - 1]) != 0)
        --length;
    GetData()->nLength = length;
    m_pText[length] = 0;
}

CFStringRef CTovStringW::StringRef() const noexcept
{
    return Halyon::CFStringCreateWithCharacters(nullptr, m_pText, GetLength());
}

int CTovStringW::GetUTF8String(char* buf, int size) const noexcept
{
    const std::size_t length = tov_wcslen(m_pText);
    if (buf != nullptr && size > 0)
    {
        const auto room = static_cast<std::size_t>(size - 1);
        const std::size_t bytes = TovTextToUTF8(m_pText, length, buf, room);
        buf[bytes <= room ? bytes : 0] = 0;
    }
    return static_cast<int>(length);
}

bool CTovStringW::MakeFSRef(FSRef* ref) const noexcept
{
    char path[1024] = {};
    return GetUTF8String(path, sizeof path) > 0 && Halyon::FSPathMakeRef(path, ref, nullptr) == Halyon::noErr;
}

std::string CTovStringW::ToUTF8() const
{
    const auto length = static_cast<std::size_t>(GetLength());
    std::string text(TovTextToUTF8(m_pText, length, nullptr, 0), '\0');
    TovTextToUTF8(m_pText, length, text.data(), text.size());
    return text;
}

CTovStringW CTovStringW::FromUTF8(std::string_view text) noexcept
{
    CTovStringW result;
    const std::size_t length = TovTextFromUTF8(text.data(), text.size(), nullptr, 0);
    if (length != 0 && length <= static_cast<std::size_t>(kMaxLength) &&
        result.AllocBuffer(static_cast<int>(length)) != 0)
        TovTextFromUTF8(text.data(), text.size(), result.m_pText, length);
    return result;
}

int CTovStringW::AllocBuffer(int nLen) noexcept
{
    if (nLen == 0)
    {
        m_pText = tovtmpPchNilW;
        return 1;
    }
    if (nLen > kMaxLength)
        return 0;
    const std::size_t bytes = sizeof(CTovStringWData) + (static_cast<std::size_t>(nLen) + 1) * sizeof(char16_t);
    auto* block = new (std::nothrow) char[bytes];
    if (block == nullptr)
        return 0;
    auto* data = new (block) CTovStringWData{1, nLen, nLen};
    m_pText = reinterpret_cast<char16_t*>(data + 1);
    m_pText[nLen] = 0;
    return 1;
}

int CTovStringW::AllocBeforeWrite(int nLen) noexcept
{
    const CTovStringWData* data = GetData();
    if (data->nRefCount < 2 && nLen <= data->nCapacity)
        return 1;
    Release();
    return AllocBuffer(nLen);
}

void CTovStringW::AssignCopy(int nSrcLen, const char16_t* src) noexcept
{
    if (AllocBeforeWrite(nSrcLen) == 0)
        return;
    if (nSrcLen != 0)
        std::memmove(m_pText, src, static_cast<std::size_t>(nSrcLen) * sizeof(char16_t));
    GetData()->nLength = nSrcLen;
    m_pText[nSrcLen] = 0;
}

void CTovStringW::AllocCopy(CTovStringW& dest, int nCopyLen, int nCopyIndex, int nExtraLen) const noexcept
{
    if (nCopyLen + nExtraLen == 0)
    {
        dest.m_pText = tovtmpPchNilW;
        return;
    }
    if (dest.AllocBuffer(nCopyLen + nExtraLen) != 0)
        CopyUnits(dest.m_pText, m_pText + nCopyIndex, nCopyLen);
}

void CTovStringW::ConcatCopy(int nSrc1Len, const char16_t* src1, int nSrc2Len, const char16_t* src2) noexcept
{
    const std::int64_t length = std::int64_t{nSrc1Len} + nSrc2Len;
    if (length == 0 || length > kMaxLength || AllocBuffer(static_cast<int>(length)) == 0)
        return;
    CopyUnits(m_pText, src1, nSrc1Len);
    CopyUnits(m_pText + nSrc1Len, src2, nSrc2Len);
}

void CTovStringW::ConcatInPlace(int nSrcLen, const char16_t* src) noexcept
{
    if (nSrcLen == 0)
        return;
    CTovStringWData* data = GetData();
    if (data->nRefCount < 2 && std::int64_t{data->nLength} + nSrcLen <= data->nCapacity)
    {
        CopyUnits(m_pText + data->nLength, src, nSrcLen);
        data->nLength += nSrcLen;
        m_pText[data->nLength] = 0;
        return;
    }
    // The old block is let go only when the new one exists: `src` may lie in it.
    ConcatCopy(data->nLength, m_pText, nSrcLen, src);
    if (GetData() != data)
        Release(data);
}

void CTovStringW::CopyBeforeWrite() noexcept
{
    CTovStringWData* data = GetData();
    if (data->nRefCount < 2)
        return;
    // Copied before the count is given back: until then no other thread can free the block.
    const char16_t* text = m_pText;
    m_pText = tovtmpPchNilW;
    if (AllocBuffer(data->nLength) != 0)
        CopyUnits(m_pText, text, data->nLength + 1);
    Release(data);
}

void CTovStringW::Release() noexcept
{
    CTovStringWData* data = GetData();
    m_pText = tovtmpPchNilW;
    Release(data);
}

void CTovStringW::Release(CTovStringWData* data) noexcept
{
    if (data == tovtmpDataNilW)
        return;
    if (Halyon::DecrementAtomic(&data->nRefCount) - 1 <= 0)
        delete[] reinterpret_cast<char*>(data);
}
