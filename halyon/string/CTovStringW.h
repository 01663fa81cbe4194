// The wide string: UTF-16 text, counted and copied only when it is written to.
//
// For every text that is owned: paths, names, values. Not for parameters that are only read (take `const char16_t*`),
// and not for building long texts piece by piece: blocks are sized exactly, so each append allocates.
//
//     CTovStringW path = u"/home/ann/Pictures";
//     path += u"/2024";
//     CTovStringW copy = path;            // one pointer and one atomic increment
//     std::string utf8 = copy.ToUTF8();
//
// The object is one pointer wide; the empty string needs no memory. Lengths and positions are in 16-bit units and never
// count the terminator. The text may hold zero units where a length says so; operations that take a plain pointer
// measure it up to its first zero.
//
// Threads: strings that share a block may be copied, changed and destroyed on different threads; one string object is
// not protected. [any] below means so.
//
// Memory: when there is none, the operation leaves the string as it stood at that point, often empty; nothing is
// thrown and nothing is reported. A caller that must know compares the length. ToUTF8 alone throws, as its result does.
#pragma once

#include <atomic>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include <halyon/platform/CoreFoundation.h>
#include <halyon/platform/FileManager.h>
#include <halyon/platform/TovPCMac.h>

class CTovStringW
{
public:
    // The empty string.
    CTovStringW() noexcept : m_pText(tovtmpPchNilW) {}
    CTovStringW(std::nullptr_t) noexcept : CTovStringW() {}

    // A copy of a zero-terminated text; null counts as empty.
    CTovStringW(const char16_t* psz) noexcept;

    // Shares the block of `src`. A locked block is copied instead, up to its first zero unit.
    CTovStringW(const CTovStringW& src) noexcept : m_pText(src.m_pText)
    {
        CTovStringWData* data = GetData();
        if (CountOf(data) >= 0)
            Halyon::IncrementAtomic(&data->nRefCount);
        else if (data != tovtmpDataNilW)
            CopyLocked();
    }

    // Takes over the block of `src`, locked or not; `src` is empty afterwards.
    CTovStringW(CTovStringW&& src) noexcept : m_pText(src.m_pText) { src.m_pText = tovtmpPchNilW; }

    // A copy of a platform text; null counts as empty. The caller keeps its reference.
    CTovStringW(Halyon::CFStringRef str) noexcept;

    // A copy of `text`, zero units included.
    explicit CTovStringW(std::u16string_view text) noexcept;

    ~CTovStringW() { Release(GetData()); }

    // Exchanges the blocks, locked or not. [any]
    friend void swap(CTovStringW& a, CTovStringW& b) noexcept { std::swap(a.m_pText, b.m_pText); }

    // Shares the block of `src`. When this string's block or that of `src` is locked, and when `src` is empty, the
    // characters are copied as by the assignment below. [any]
    CTovStringW& operator=(const CTovStringW& src) noexcept;

    // The same, and what would be shared is taken over: `src` is empty afterwards, or unchanged where it was copied.
    // [any]
    CTovStringW& operator=(CTovStringW&& src) noexcept
    {
        CTovStringWData* data = GetData();
        if (m_pText == src.m_pText || CountOf(src.GetData()) < 0 || (CountOf(data) < 0 && data != tovtmpDataNilW))
            [[unlikely]]
            return *this = std::as_const(src);
        m_pText = std::exchange(src.m_pText, tovtmpPchNilW);
        Release(data);
        return *this;
    }

    // Copies a zero-terminated text, which may be this string's own or a part of it; null counts as empty. The block is
    // kept when it is not shared and large enough, with its capacity, else a new one takes its place. [any]
    CTovStringW& operator=(const char16_t* psz) noexcept;

    // Appends a zero-terminated text, which may be this string's own; null counts as empty. [any]
    CTovStringW& operator+=(const char16_t* psz) noexcept;

    // The one followed by the other, zero units of strings included; a null pointer counts as empty. [any]
    friend CTovStringW operator+(const CTovStringW& a, const CTovStringW& b) noexcept;
    friend CTovStringW operator+(const CTovStringW& a, const char16_t* b) noexcept;
    friend CTovStringW operator+(const char16_t* a, const CTovStringW& b) noexcept;

    // Length in units. [any]
    [[nodiscard]] int GetLength() const noexcept { return GetData()->nLength; }
    // Whether there is no unit. [any]
    [[nodiscard]] bool IsEmpty() const noexcept { return GetData()->nLength == 0; }

    // The text, zero-terminated. Valid until the string is changed or destroyed. [any]
    operator const char16_t*() const noexcept { return m_pText; }

    // The unit at `nIndex`; the terminator at the length. Requires: 0 <= nIndex <= GetLength(). [any]
    template <std::integral Index>
    [[nodiscard]] char16_t operator[](Index nIndex) const noexcept
    {
        return m_pText[nIndex];
    }

    // The units, without the terminator, as a range and as a view. Valid until the string is changed or destroyed.
    // [any]
    [[nodiscard]] const char16_t* begin() const noexcept { return m_pText; }
    [[nodiscard]] const char16_t* end() const noexcept { return m_pText + GetLength(); }
    [[nodiscard]] std::u16string_view View() const noexcept { return {m_pText, static_cast<std::size_t>(GetLength())}; }
    operator std::u16string_view() const noexcept { return View(); }

    // Comparison by code units, over the whole length; a null pointer counts as empty. [any]
    friend bool operator==(const CTovStringW& a, const CTovStringW& b) noexcept
    {
        return a.m_pText == b.m_pText || a == b.View();
    }
    friend bool operator==(const CTovStringW& a, const char16_t* b) noexcept { return a == ViewOf(b); }
    friend bool operator==(const CTovStringW& a, std::u16string_view b) noexcept
    {
        return a.View().size() == b.size() &&
               (b.empty() || std::memcmp(a.m_pText, b.data(), b.size() * sizeof(char16_t)) == 0);
    }
    friend std::strong_ordering operator<=>(const CTovStringW& a, const CTovStringW& b) noexcept
    {
        return Compare(a.View(), b.View());
    }
    friend std::strong_ordering operator<=>(const CTovStringW& a, const char16_t* b) noexcept
    {
        return Compare(a.View(), ViewOf(b));
    }
    friend std::strong_ordering operator<=>(const CTovStringW& a, std::u16string_view b) noexcept
    {
        return Compare(a.View(), b);
    }

    // The units from `nFirst` on, at most `nCount`; arguments out of range are clamped. The result never shares this
    // string's block, deliberately: a caller may rely on a block of its own. [any]
    [[nodiscard]] CTovStringW Mid(int nFirst, int nCount) const noexcept;

    // Mid(nFirst, GetLength() - nFirst), from `nFirst` as given. [any]
    [[nodiscard]] CTovStringW Mid(int nFirst) const noexcept;

    // The first `nCount` units, clamped; a block of its own, as with Mid. [any]
    [[nodiscard]] CTovStringW Left(int nCount) const noexcept;

    // Position of the first unit, before any zero unit, that occurs in `pszCharSet`; -1 when there is none. Null counts
    // as no unit. Units are compared exactly. [any]
    [[nodiscard]] int FindOneOf(const char16_t* pszCharSet) const noexcept;

    // The first unit of `str` that equals any unit of `set`, or null when `str` ends first. [any]
    [[nodiscard]] static const char16_t* _cstrpbrk(const char16_t* str, const char16_t* set) noexcept;

    // Remove white space, in place, at the start and at the end. A shared block is copied first; the capacity stays.
    // [any]
    void TrimLeft() noexcept;
    void TrimRight() noexcept;

    // A new platform text, which the caller releases with CFRelease; null when there is no memory. [any]
    [[nodiscard]] Halyon::CFStringRef StringRef() const noexcept;

    // Writes the text up to its first zero unit as UTF-8 with a terminator into `size` bytes; when it does not fit,
    // `buf` holds the empty text. Returns the number of UTF-16 units, deliberately, whether it fitted or not: the
    // result only tells whether there was anything to convert. [any]
    int GetUTF8String(char* buf, int size) const noexcept;

    // Makes a reference to the item that this text names. True (1) on success; false for the empty text, a path longer
    // than 1023 bytes of UTF-8, and a path that names nothing. [any]
    bool MakeFSRef(Halyon::FSRef* ref) const noexcept;

    // The whole text as UTF-8 and back, for hosts; ill-formed parts become U+FFFD. ToUTF8 throws std::bad_alloc. [any]
    [[nodiscard]] std::string ToUTF8() const;
    [[nodiscard]] static CTovStringW FromUTF8(std::string_view text) noexcept;

protected:
    // Blocks. A block is one array new[] of exactly the header, its units and a terminator. A negative count locks it:
    // it is written in place by its one string and copied by all others. The int results are 1 for success, 0 for no
    // memory.

    // Points at a fresh block of `nLen` units, or at the empty block for 0; what was held is not released. After a
    // failure nothing has changed.
    int AllocBuffer(int nLen) noexcept;
    // Makes the block ready for `nLen` units of new text: kept when it is unshared and large enough, else replaced.
    // After a failure the string is empty.
    int AllocBeforeWrite(int nLen) noexcept;
    // `src` may lie in this string's own block.
    void AssignCopy(int nSrcLen, const char16_t* src) noexcept;
    // Requires: `dest` is empty.
    void AllocCopy(CTovStringW& dest, int nCopyLen, int nCopyIndex, int nExtraLen) const noexcept;
    // What was held is not released.
    void ConcatCopy(int nSrc1Len, const char16_t* src1, int nSrc2Len, const char16_t* src2) noexcept;
    // `src` may lie in this string's own text. After a failure nothing has changed.
    void ConcatInPlace(int nSrcLen, const char16_t* src) noexcept;
    // Detaches from a shared block; the new one has no spare capacity. After a failure the string is empty.
    void CopyBeforeWrite() noexcept;
    // Lets go of the block and becomes empty.
    void Release() noexcept;
    static void Release(CTovStringWData* data) noexcept
    {
        if (data == tovtmpDataNilW)
            return;
        // Who sees itself as the only owner need not count down: nobody else holds the block.
        if (CountOf(data) <= 1 || Halyon::DecrementAtomic(&data->nRefCount) <= 1)
            delete[] reinterpret_cast<char*>(data);
    }

    // The header of the block.
    [[nodiscard]] CTovStringWData* GetData() const noexcept { return reinterpret_cast<CTovStringWData*>(m_pText) - 1; }

    char16_t* m_pText; // never null

private:
    // The count as it is now. What others did with the block before they let go of it has happened before.
    [[nodiscard]] static std::int32_t CountOf(CTovStringWData* data) noexcept
    {
        return std::atomic_ref(data->nRefCount).load(std::memory_order_acquire);
    }
    [[nodiscard]] static std::u16string_view ViewOf(const char16_t* psz) noexcept
    {
        return psz == nullptr ? std::u16string_view() : std::u16string_view(psz, tov_wcslen(psz));
    }
    [[nodiscard]] static std::strong_ordering Compare(std::u16string_view a, std::u16string_view b) noexcept;
    [[nodiscard]] bool FitsInPlace(std::int64_t nLen) const noexcept;
    void CopyLocked() noexcept;
    void SetLength(int nLen) noexcept;
};

static_assert(sizeof(CTovStringW) == sizeof(void*));

template <>
struct std::hash<CTovStringW>
{
    std::size_t operator()(const CTovStringW& text) const noexcept
    {
        return std::hash<std::u16string_view>()(text.View());
    }
};
