// Names as they may be shown on a terminal or in a log.
#pragma once

#include <string>
#include <string_view>

namespace HynHost
{
// Whether `text` is well-formed UTF-8; only such names can be stored. [any]
[[nodiscard]] bool IsUTF8(std::string_view text);

// The text with control characters and what is no UTF-8 written as \xNN, so that no name can break a line or send
// commands to a terminal. [any]
[[nodiscard]] std::string PrintableText(std::string_view text);
} // namespace HynHost
