// Text between the runtime's strings and the toolkit's.
#pragma once

#include <string>
#include <string_view>

#include <QString>

#include <halyon/string/CTovStringW.h>

namespace HynHost
{
inline QString FromWide(const CTovStringW& text)
{
    return QString::fromUtf16(static_cast<const char16_t*>(text), text.GetLength());
}

inline CTovStringW ToWide(const QString& text)
{
    return CTovStringW(
        std::u16string_view(reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())));
}

inline QString FromText(const std::string& text)
{
    return QString::fromStdString(text);
}
} // namespace HynHost
