// Says what a check is about to do, so that the report can name it when the check's process dies in it.
//
// Not for loops that are meant to be fast: the text is copied each time.
#pragma once

#include <string_view>

namespace HynValidate
{
// Remembers `text` ("calling MyDllCanUnloadNow") until the next call. [main]
void Step(std::string_view text);
} // namespace HynValidate
