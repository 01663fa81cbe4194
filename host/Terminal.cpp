#include <host/Terminal.h>

#include <sys/ioctl.h>
#include <unistd.h>

namespace HynHost
{
std::optional<int> TerminalWidth(int descriptor) noexcept
{
    constexpr int kUsual = 80; // where it does not know itself
    if (isatty(descriptor) == 0)
        return std::nullopt;
    winsize size{};
    return ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 ? size.ws_col : kUsual;
}
} // namespace HynHost
