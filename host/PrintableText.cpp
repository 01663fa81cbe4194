#include <host/PrintableText.h>

#include <array>
#include <cstddef>
#include <cstdio>

#include <halyon/string/CTovStringW.h>

namespace HynHost
{
namespace
{
// Bytes of the well-formed character at the start of `text`; 0 when there is none.
std::size_t CharacterSize(std::string_view text)
{
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x80)
        return 1;
    const std::size_t size = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    return size <= text.size() && IsUTF8(text.substr(0, size)) ? size : 0;
}

bool IsControl(std::string_view character)
{
    const auto first = static_cast<unsigned char>(character.front());
    const bool c1 = first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
    return first < 0x20 || first == 0x7F || c1;
}

void AppendEscaped(std::string& out, char byte)
{
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
    out += text.data();
}
} // namespace

bool IsUTF8(std::string_view text)
{
    // What is ill-formed does not come back as it was.
    return CTovStringW::FromUTF8(text).ToUTF8() == text;
}

std::string PrintableText(std::string_view text)
{
    std::string out;
    while (!text.empty())
    {
        const std::size_t size = CharacterSize(text);
        if (size == 0 || IsControl(text))
        {
            for (const char byte : text.substr(0, size == 0 ? 1 : size))
                AppendEscaped(out, byte);
        }
        else
        {
            out += text.substr(0, size);
        }
        text.remove_prefix(size == 0 ? 1 : size);
    }
    return out;
}
} // namespace HynHost
