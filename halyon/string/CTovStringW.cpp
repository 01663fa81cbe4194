#include <halyon/string/CTovStringW.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <new>
#include <utility>

using Halyon::CFStringRef;
using Halyon::FSRef;

namespace
{
constexpr int kMaxLength = std::numeric_limits<int>::max();

// Texts up to this many bytes are converted by way of the stack, in one pass.
constexpr std::size_t kLocalBytes = 512;

void CopyUnits(char16_t* dest, const char16_t* src, int count) noexcept
{
    std::memcpy(dest, src, static_cast<std::size_t>(count) * sizeof(char16_t));
}

// A length as the headers hold it, or -1: longer texts are refused as if there were no memory.
int LengthOf(std::size_t length) noexcept
{
    return length <= std::size_t{kMaxLength} ? static_cast<int>(length) : -1;
}

int LengthOf(const char16_t* psz) noexcept
{
    return psz != nullptr ? LengthOf(tov_wcslen(psz)) : 0;
}
} // namespace

CTovStringW::CTovStringW(const char16_t* psz) noexcept : CTovStringW()
{
    const int length = LengthOf(psz);
    if (length > 0 && AllocBuffer(length) != 0)
        CopyUnits(m_pText, psz, length);
}

CTovStringW::CTovStringW(CFStringRef str) noexcept : CTovStringW()
{
    const Halyon::CFIndex length = CFStringGetLength(str);
    if (length > 0 && length <= kMaxLength && AllocBuffer(static_cast<int>(length)) != 0)
        CFStringGetCharacters(str, {0, length}, m_pText);
}

CTovStringW::CTovStringW(std::u16string_view text) noexcept : CTovStringW()
{
    const int length = LengthOf(text.size());
    if (length > 0 && AllocBuffer(length) != 0)
        CopyUnits(m_pText, text.data(), length);
}

// Equal text pointers are the test for the same block, the string itself included.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
CTovStringW& CTovStringW::operator=(const CTovStringW& src) noexcept
{
    if (m_pText == src.m_pText)
        return *this;
    CTovStringWData* data = src.GetData();
    const bool locked = CountOf(GetData()) < 0 && GetData() != tovtmpDataNilW;
    if (locked || CountOf(data) < 0)
    {
        AssignCopy(data->nLength, src.m_pText);
        return *this;
    }
    Halyon::IncrementAtomic(&data->nRefCount);
    Release();
    m_pText = src.m_pText;
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

CTovStringW operator+(const CTovStringW& a, const char16_t* b) noexcept
{
    CTovStringW result;
    result.ConcatCopy(a.GetLength(), a.m_pText, LengthOf(b), b);
    return result;
}

CTovStringW operator+(const char16_t* a, const CTovStringW& b) noexcept
{
    CTovStringW result;
    result.ConcatCopy(LengthOf(a), a, b.GetLength(), b.m_pText);
    return result;
}

CTovStringW CTovStringW::Mid(int nFirst, int nCount) const noexcept
{
    const int first = std::clamp(nFirst, 0, GetLength());
    CTovStringW result;
    AllocCopy(result, std::clamp(nCount, 0, GetLength() - first), first, 0);
    return result;
}

CTovStringW CTovStringW::Mid(int nFirst) const noexcept
{
    const std::int64_t count = std::int64_t{GetLength()} - nFirst;
    return Mid(nFirst, static_cast<int>(std::min<std::int64_t>(count, kMaxLength)));
}

CTovStringW CTovStringW::Left(int nCount) const noexcept
{
    CTovStringW result;
    AllocCopy(result, std::clamp(nCount, 0, GetLength()), 0, 0);
    return result;
}

int CTovStringW::FindOneOf(const char16_t* pszCharSet) const noexcept
{
    const char16_t* found = pszCharSet != nullptr ? _cstrpbrk(m_pText, pszCharSet) : nullptr;
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
    int skipped = 0;
    while (tov_iswspace(m_pText[skipped]) != 0)
        ++skipped;
    const int length = GetLength() - skipped;
    if (skipped != 0)
        std::memmove(m_pText, m_pText + skipped, static_cast<std::size_t>(length) * sizeof(char16_t));
    SetLength(length);
}

void CTovStringW::TrimRight() noexcept
{
    CopyBeforeWrite();
    int length = GetLength();
    while (length > 0 && tov_iswspace(m_pText[length - 1]) != 0)
        --length;
    SetLength(length);
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
    const std::u16string_view units = View();
    char local[kLocalBytes];
    const std::size_t bytes = TovTextToUTF8(units.data(), units.size(), local, sizeof local);
    if (bytes <= sizeof local)
        return {local, bytes};
    std::string text(bytes, '\0');
    TovTextToUTF8(units.data(), units.size(), text.data(), text.size());
    return text;
}

CTovStringW CTovStringW::FromUTF8(std::string_view text) noexcept
{
    char16_t local[kLocalBytes];
    const std::size_t units = TovTextFromUTF8(text.data(), text.size(), local, std::size(local));
    if (units <= std::size(local))
        return CTovStringW(std::u16string_view(local, units));
    CTovStringW result;
    const int length = LengthOf(units);
    if (length > 0 && result.AllocBuffer(length) != 0)
        TovTextFromUTF8(text.data(), text.size(), result.m_pText, units);
    return result;
}

std::strong_ordering CTovStringW::Compare(std::u16string_view a, std::u16string_view b) noexcept
{
    // Texts that are sorted tend to begin alike: paths of one folder, names of one series.
    constexpr std::size_t kStep = 8;
    const std::size_t common = std::min(a.size(), b.size());
    std::size_t i = 0;
    while (i + kStep <= common && std::memcmp(a.data() + i, b.data() + i, kStep * sizeof(char16_t)) == 0)
        i += kStep;
    while (i < common && a[i] == b[i])
        ++i;
    return i < common ? a[i] <=> b[i] : a.size() <=> b.size();
}

int CTovStringW::AllocBuffer(int nLen) noexcept
{
    if (nLen == 0)
    {
        m_pText = tovtmpPchNilW;
        return 1;
    }
    if (nLen < 0)
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

bool CTovStringW::FitsInPlace(std::int64_t nLen) const noexcept
{
    return CountOf(GetData()) < 2 && nLen <= GetData()->nCapacity;
}

int CTovStringW::AllocBeforeWrite(int nLen) noexcept
{
    if (FitsInPlace(nLen))
        return 1;
    Release();
    return AllocBuffer(nLen);
}

void CTovStringW::AssignCopy(int nSrcLen, const char16_t* src) noexcept
{
    // A block that makes way is kept until the copy is made: `src` may lie in it.
    CTovStringW old;
    if (!FitsInPlace(nSrcLen))
        std::swap(m_pText, old.m_pText);
    if (AllocBeforeWrite(nSrcLen) == 0)
        return;
    if (nSrcLen > 0)
        std::memmove(m_pText, src, static_cast<std::size_t>(nSrcLen) * sizeof(char16_t));
    SetLength(nSrcLen);
}

// As the assignment of plain text does it, so only up to the first zero unit.
void CTovStringW::CopyLocked() noexcept
{
    const char16_t* text = std::exchange(m_pText, tovtmpPchNilW);
    *this = text;
}

void CTovStringW::AllocCopy(CTovStringW& dest, int nCopyLen, int nCopyIndex, int nExtraLen) const noexcept
{
    const std::int64_t length = std::int64_t{nCopyLen} + nExtraLen;
    if (length <= kMaxLength && dest.AllocBuffer(static_cast<int>(length)) != 0)
        CopyUnits(dest.m_pText, m_pText + nCopyIndex, nCopyLen);
}

void CTovStringW::ConcatCopy(int nSrc1Len, const char16_t* src1, int nSrc2Len, const char16_t* src2) noexcept
{
    const std::int64_t length = std::int64_t{nSrc1Len} + nSrc2Len;
    if (nSrc1Len < 0 || nSrc2Len < 0 || length == 0 || length > kMaxLength ||
        AllocBuffer(static_cast<int>(length)) == 0)
        return;
    std::copy_n(src1, nSrc1Len, m_pText);
    std::copy_n(src2, nSrc2Len, m_pText + nSrc1Len);
}

void CTovStringW::ConcatInPlace(int nSrcLen, const char16_t* src) noexcept
{
    if (nSrcLen == 0)
        return;
    CTovStringWData* data = GetData();
    const std::int64_t length = std::int64_t{data->nLength} + nSrcLen;
    if (FitsInPlace(length))
    {
        CopyUnits(m_pText + data->nLength, src, nSrcLen);
        SetLength(static_cast<int>(length));
        return;
    }
    // The old block goes only when the new one exists: `src` may lie in it, and without a new one it stays in use.
    ConcatCopy(data->nLength, m_pText, nSrcLen, src);
    if (GetData() != data)
        Release(data);
}

void CTovStringW::CopyBeforeWrite() noexcept
{
    CTovStringWData* data = GetData();
    if (CountOf(data) < 2)
        return;
    // Copied before the count is given back: until then no other thread can free the block.
    const char16_t* text = std::exchange(m_pText, tovtmpPchNilW);
    if (AllocBuffer(data->nLength) != 0)
        CopyUnits(m_pText, text, data->nLength);
    Release(data);
}

void CTovStringW::Release() noexcept
{
    CTovStringWData* data = GetData();
    m_pText = tovtmpPchNilW;
    Release(data);
}

// The empty block belongs to every thread: where it is in order already it is only read.
void CTovStringW::SetLength(int nLen) noexcept
{
    if (GetData()->nLength != nLen)
        GetData()->nLength = nLen;
    if (m_pText[nLen] != 0)
        m_pText[nLen] = 0;
}
