// Measures how quick the window is, for `--trace`: what the main thread was busy with, frames, memory.
//
// Lines on standard error at the end, "trace: NAME NUMBER UNIT". Without a trace nothing is measured.
#pragma once

#include <chrono>
#include <vector>

namespace HynHost
{
class Trace
{
public:
    using Clock = std::chrono::steady_clock;

    // To be made before the application object: the loop of the toolkit's own is used then, which says when it waits.
    Trace();

    // [main], all of them.

    // To be called when there is an application object.
    void Watch();
    // Around the handling of an event.
    void BeginEvent();
    void EndEvent(Clock::time_point begun);
    // The timeline was drawn; `complete` when pictures are seen in it.
    void NotePaint(bool complete);
    [[nodiscard]] bool HasContent() const noexcept { return m_contentMs >= 0; }
    // Frames are told from here on.
    void BeginScroll();
    void EndScroll();

    void Print() const;

private:
    bool m_waiting = true; // the loop waits, or has not handled anything since
    Clock::time_point m_awake{};
    Clock::duration m_longestStretch{};
    Clock::duration m_longestEvent{};
    Clock::time_point m_lastPaint{};
    bool m_scrolling = false;
    std::vector<double> m_frames; // ms
    double m_paintMs = -1;        // from the start of the process
    double m_contentMs = -1;
};
} // namespace HynHost
