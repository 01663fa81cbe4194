// Counts the words of a text. This header is all that a host and the component share.
#pragma once

#include <halyon/framework/IHynUnknown.h>

// Made for this component alone (uuidgen); one's own are needed for each interface and each class.
inline constexpr Halyon::HYN_GUID IID_IWordCounter = {
    0xFE207190, 0x6D74, 0x4EF4, {0xA7, 0xCA, 0x23, 0x74, 0xB2, 0x8C, 0xA9, 0x45}};
inline constexpr Halyon::HYN_GUID CLSID_WordCounter = {
    0x93F33EA1, 0xAEA5, 0x48C7, {0x82, 0xC3, 0x8F, 0x7A, 0xB3, 0x7A, 0x23, 0x37}};

// No data, no virtual destructor, results through out pointers; once others use it, it never changes.
class IWordCounter : public Halyon::IHynUnknown
{
public:
    // Adds the words of `text`, zero-terminated, to the count. HYN_E_FAIL: `text` is null. [owner]
    virtual Halyon::HynResult AddText(const char16_t* text) = 0;

    // The words so far. HYN_E_FAIL: `pCount` is null. [owner]
    virtual Halyon::HynResult GetCount(std::uint32_t* pCount) = 0;

protected:
    ~IWordCounter() = default;
};
