// A string with its protected side open, as a class derived from it sees it.
#pragma once

#include <halyon/string/CTovStringW.h>

class OpenString : public CTovStringW
{
public:
    using CTovStringW::CTovStringW;
    using CTovStringW::operator=;
    OpenString(const CTovStringW& src) noexcept : CTovStringW(src) {}

    using CTovStringW::AllocBeforeWrite;
    using CTovStringW::AllocBuffer;
    using CTovStringW::AllocCopy;
    using CTovStringW::AssignCopy;
    using CTovStringW::ConcatCopy;
    using CTovStringW::ConcatInPlace;
    using CTovStringW::CopyBeforeWrite;
    using CTovStringW::Release;

    // Requires: the block is not shared and not the empty one.
    void Lock() noexcept { GetData()->nRefCount = -1; }
};

inline CTovStringWData& HeaderOf(const CTovStringW& text) noexcept
{
    auto* units = const_cast<char16_t*>(static_cast<const char16_t*>(text));
    return reinterpret_cast<CTovStringWData*>(units)[-1];
}

inline bool IsEmptyBlock(const CTovStringW& text) noexcept
{
    return static_cast<const char16_t*>(text) == tovtmpPchNilW;
}
