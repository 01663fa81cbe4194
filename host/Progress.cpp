#include <host/Progress.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <unistd.h>

#include <host/Terminal.h>

namespace HynHost
{
using namespace std::chrono_literals;

namespace
{
constexpr auto kRedraw = 100ms;
constexpr auto kNextLine = 5s;

bool IsTerminal()
{
    const char* term = std::getenv("TERM");
    return isatty(STDERR_FILENO) != 0 && term != nullptr && std::string_view(term) != "dumb";
}

std::string TwoDigits(std::uint64_t number)
{
    return {static_cast<char>('0' + number / 10 % 10), static_cast<char>('0' + number % 10)};
}

std::string TimeText(double seconds)
{
    const auto whole = static_cast<std::uint64_t>(std::llround(seconds));
    const std::string minutesAndSeconds = TwoDigits(whole / 60 % 60) + ":" + TwoDigits(whole % 60);
    return whole < 3600 ? minutesAndSeconds : std::to_string(whole / 3600) + ":" + minutesAndSeconds;
}

double Rate(std::uint64_t done, double seconds)
{
    return seconds > 0 ? static_cast<double>(done) / seconds : 0;
}

std::string RateText(std::uint64_t done, double seconds)
{
    return std::to_string(static_cast<std::uint64_t>(Rate(done, seconds))) + "/s";
}
} // namespace

std::string ProgressBar(std::uint64_t done, std::uint64_t total, double seconds, std::size_t width)
{
    done = total == 0 ? done : std::min(done, total); // the tree may have grown since it was counted
    std::string count = std::to_string(done);
    if (total != 0)
        count += " of " + std::to_string(total);
    std::string rest = "  " + RateText(done, seconds);
    const double rate = Rate(done, seconds);
    if (total != 0 && rate > 0)
        rest += "  " + TimeText(static_cast<double>(total - done) / rate) + " left";

    constexpr std::size_t kSmallestBar = 12;
    if (count.size() + rest.size() > width)
        return count.substr(0, width);
    if (total == 0 || count.size() + rest.size() + kSmallestBar > width)
        return count + rest;
    const std::size_t cells = std::min<std::size_t>(width - count.size() - rest.size() - 4, 50);
    const auto full = static_cast<std::size_t>(done * cells / total);
    return "[" + std::string(full, '#') + std::string(cells - full, '-') + "]  " + count + rest;
}

Progress::Progress(std::string what) : m_what(std::move(what)), m_isTerminal(IsTerminal()) {}

void Progress::Start(std::uint64_t total)
{
    const Halyon::TovMutexLock lock(m_mutex);
    m_total = total;
    m_start = Clock::now();
    m_next = m_start + (m_isTerminal ? Clock::duration(kRedraw) : Clock::duration(kNextLine));
}

std::uint64_t Progress::Total()
{
    const Halyon::TovMutexLock lock(m_mutex);
    return m_total;
}

void Progress::Update(std::uint64_t done)
{
    const auto now = Clock::now();
    const Halyon::TovMutexLock lock(m_mutex);
    if (now < m_next)
        return;
    const double seconds = std::chrono::duration<double>(now - m_start).count();
    if (m_isTerminal)
    {
        // One column stays free: a full line would wrap on some terminals.
        const auto width = static_cast<std::size_t>(TerminalWidth(STDERR_FILENO).value_or(80) - 1);
        const std::string bar = ProgressBar(done, m_total, seconds, width);
        std::fprintf(stderr, "\r%s\x1b[K", bar.c_str());
        m_isDrawn = true;
        m_next = now + kRedraw;
    }
    else
    {
        std::fprintf(stderr, "%llu %s, %s\n", static_cast<unsigned long long>(done), m_what.c_str(),
                     RateText(done, seconds).c_str());
        m_next = now + kNextLine;
    }
}

void Progress::Clear()
{
    const Halyon::TovMutexLock lock(m_mutex);
    if (m_isDrawn)
        std::fputs("\r\x1b[K", stderr);
    m_isDrawn = false;
}
} // namespace HynHost
