// The terminal behind a descriptor.
#pragma once

#include <optional>

namespace HynHost
{
// Its columns at this moment; nothing when the descriptor is no terminal. [any]
[[nodiscard]] std::optional<int> TerminalWidth(int descriptor) noexcept;
} // namespace HynHost
