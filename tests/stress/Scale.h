// How much the tests of this folder do: a little in every run, all of it under `./check stress`.
#pragma once

#include <cstdlib>
#include <string_view>

namespace HalyonTest
{
inline bool IsFullScale()
{
    const char* scale = std::getenv("HALYON_STRESS");
    return scale != nullptr && std::string_view(scale) == "full";
}

template <class Number>
Number Scaled(Number little, Number full)
{
    return IsFullScale() ? full : little;
}
} // namespace HalyonTest
