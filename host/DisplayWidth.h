// How wide a text stands on a terminal: Chinese, Japanese and Korean characters take two columns, marks that combine
// with the character before them none.
#pragma once

#include <string>
#include <string_view>

namespace HynHost
{
// Columns that `text` takes. Requires: UTF-8 without control characters (PrintableText makes it so). [any]
[[nodiscard]] int DisplayWidth(std::string_view text);

// `text` in at most `width` columns: what does not fit is taken out of the middle and replaced by "…". The end keeps
// the greater share, for there stands the name in a path. Requires: `width` is at least 1. [any]
[[nodiscard]] std::string ShortenMiddle(std::string_view text, int width);
} // namespace HynHost
