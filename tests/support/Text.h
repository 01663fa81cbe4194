// Wide text in tests: compared and printed as UTF-8, so that a failure can be read.
#pragma once

#include <string>
#include <string_view>

#include <halyon/string/CTovStringW.h>

namespace HalyonTest
{
inline std::string U8(const char16_t* text)
{
    return text == nullptr ? "(null)" : CTovStringW(text).ToUTF8();
}

inline std::string U8(const CTovStringW& text)
{
    return text.ToUTF8();
}

inline std::string U8(std::u16string_view text)
{
    return CTovStringW(text).ToUTF8();
}
} // namespace HalyonTest
