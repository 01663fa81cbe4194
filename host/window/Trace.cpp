#include <host/window/Trace.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>

#include <QAbstractEventDispatcher>

#include <unistd.h>

namespace HynHost
{
namespace
{
using Milliseconds = std::chrono::duration<double, std::milli>;

// The kernel tells the start in ticks since the machine's.
double SinceStartOfProcess()
{
    std::ifstream file("/proc/self/stat");
    std::string stat((std::istreambuf_iterator<char>(file)), {});
    std::istringstream fields(stat.substr(stat.rfind(')') + 2));
    std::string field;
    for (int skipped = 3; skipped < 22; ++skipped)
        fields >> field;
    double ticks = 0;
    fields >> ticks;
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    const double sinceBoot = static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
    return sinceBoot - ticks * 1e3 / static_cast<double>(sysconf(_SC_CLK_TCK));
}

double MemoryMB(const char* name)
{
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);)
    {
        if (line.starts_with(name))
            return std::strtod(line.c_str() + line.find(':') + 1, nullptr) / 1024;
    }
    return 0;
}

void Line(const char* name, double number, const char* unit)
{
    std::fprintf(stderr, "trace: %s %.1f %s\n", name, number, unit);
}
} // namespace

Trace::Trace()
{
    setenv("QT_NO_GLIB", "1", 1);
}

// The loop tells when it is about to wait, but not when it has done so: the first event after that does.
void Trace::Watch()
{
    QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance();
    m_awake = Clock::now();
    QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, dispatcher,
                     [this]
                     {
                         if (!m_waiting)
                             m_longestStretch = std::max(m_longestStretch, Clock::now() - m_awake);
                         m_waiting = true;
                     });
}

void Trace::BeginEvent()
{
    if (std::exchange(m_waiting, false))
        m_awake = Clock::now();
}

void Trace::EndEvent(Clock::time_point begun)
{
    m_longestEvent = std::max(m_longestEvent, Clock::now() - begun);
}

void Trace::NotePaint(bool complete)
{
    const Clock::time_point now = Clock::now();
    if (m_scrolling)
        m_frames.push_back(Milliseconds(now - m_lastPaint).count());
    m_lastPaint = now;
    if (m_paintMs < 0)
        m_paintMs = SinceStartOfProcess();
    if (complete && m_contentMs < 0)
        m_contentMs = SinceStartOfProcess();
}

void Trace::BeginScroll()
{
    m_scrolling = true;
    m_lastPaint = Clock::now();
}

void Trace::EndScroll()
{
    m_scrolling = false;
}

void Trace::Print() const
{
    Line("longest main-thread stretch", Milliseconds(m_longestStretch).count(), "ms");
    Line("longest event", Milliseconds(m_longestEvent).count(), "ms");
    if (m_paintMs >= 0)
        Line("first paint", m_paintMs, "ms after the start");
    if (m_contentMs >= 0)
        Line("first paint with pictures", m_contentMs, "ms after the start");
    if (!m_frames.empty())
    {
        std::vector<double> sorted = m_frames;
        std::ranges::sort(sorted);
        Line("frames", static_cast<double>(sorted.size()), "");
        Line("median frame", sorted[sorted.size() / 2], "ms");
        Line("99th frame of 100", sorted[sorted.size() * 99 / 100], "ms");
        Line("longest frame", sorted.back(), "ms");
        Line("frames over 32 ms", static_cast<double>(std::ranges::count_if(sorted, [](double ms) { return ms > 32; })),
             "");
    }
    Line("resident memory", MemoryMB("VmRSS"), "MB");
    Line("most resident memory", MemoryMB("VmHWM"), "MB");
}
} // namespace HynHost
