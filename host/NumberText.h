// Numbers as people read them.
#pragma once

#include <concepts>
#include <cstddef>
#include <string>

namespace HynHost
{
// 1234567 as 1,234,567. [any]
template <std::integral Integer>
[[nodiscard]] std::string NumberText(Integer value)
{
    std::string text = std::to_string(value);
    const std::ptrdiff_t sign = text.front() == '-' ? 1 : 0;
    for (auto at = static_cast<std::ptrdiff_t>(text.size()) - 3; at > sign; at -= 3)
        text.insert(static_cast<std::size_t>(at), 1, ',');
    return text;
}
} // namespace HynHost
