// Formatting of numbers into 16-bit text.

#include <halyon/platform/TovPCMac.h>

int TovFormat(std::span<char16_t> buffer, const char16_t* /*format*/,
              std::span<const TovFormatArgument> /*arguments*/) noexcept
{
    if (!buffer.empty())
        buffer[0] = 0;
    return 0;
}
