// Parameters of a command line. Internal to the platform.
#pragma once

#include <string>
#include <vector>

namespace Halyon
{
// The words of `text`, in UTF-8: split at blanks (space, tab); double quotes group, and may stand inside a word;
// nothing is expanded. Throws std::bad_alloc.
std::vector<std::string> CommandWords(const char16_t* text);
} // namespace Halyon
