// Text on its way into the interfaces: zero-terminated UTF-16, borrowed where the caller's text is that already.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <halyon/client/HynSQForms.h>
#include <halyon/string/CTovStringW.h>

namespace Halyon::Client
{
inline namespace HALYON_CLIENT_FORMS
{
// A parameter for SQL texts and paths. UTF-16 is borrowed, UTF-8 (`char`) converted. Not for keeping: it lives as long
// as the call. A text with a zero unit in it, which would be cut there, and a null pointer are null here, and the
// interface then refuses them with HYN_E_FAIL.
class Text
{
public:
    Text(const char16_t* text) noexcept : m_text(text) {}
    Text(const std::u16string& text) noexcept : m_text(Whole(text.c_str(), text.size())) {}
    Text(const CTovStringW& text) noexcept : m_text(Whole(text, text.View().size())) {}
    Text(std::string_view utf8) noexcept
        : m_own(CTovStringW::FromUTF8(utf8)),
          // An empty result of a text that is not empty means that there was no memory.
          m_text(m_own.IsEmpty() && !utf8.empty() ? nullptr : Whole(m_own, m_own.View().size()))
    {
    }
    Text(const std::string& utf8) noexcept : Text(std::string_view(utf8)) {}
    Text(const char* utf8) noexcept : Text(utf8 != nullptr ? std::string_view(utf8) : std::string_view())
    {
        if (utf8 == nullptr)
            m_text = nullptr;
    }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;

    [[nodiscard]] const char16_t* c_str() const noexcept { return m_text; }

private:
    [[nodiscard]] static const char16_t* Whole(const char16_t* text, std::size_t length) noexcept
    {
        return tov_wcslen(text) == length ? text : nullptr;
    }

    CTovStringW m_own;
    const char16_t* m_text;
};
} // namespace HALYON_CLIENT_FORMS
} // namespace Halyon::Client
