// How far a long piece of work is: a bar on a terminal, a plain line now and then elsewhere, on standard error.
//
//     Progress progress("files");
//     progress.Start(progress.WantsTotal() ? Count() : 0);
//     for (...)
//         progress.Update(++done);
//     progress.Clear();
//
// Updating costs a look at the clock; the bar is drawn at most ten times a second and fits the width that the terminal
// has at that moment. Several threads may update and clear it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include <halyon/platform/TovMutex.h>

namespace HynHost
{
class Progress
{
public:
    // `what` is counted ("files").
    explicit Progress(std::string what);
    ~Progress() { Clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Whether a total would be shown; counting it may cost something. [any]
    [[nodiscard]] bool WantsTotal() const noexcept { return m_isTerminal; }

    // The work begins now; 0 when it is not known how much it is. [any]
    void Start(std::uint64_t total);

    // What Start was told. [any]
    [[nodiscard]] std::uint64_t Total();

    // `done` of it is done. [any]
    void Update(std::uint64_t done);

    // Takes the bar off the screen; the next update draws it again. Before anything else is written. [any]
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    std::string m_what;
    bool m_isTerminal;
    Halyon::TovMutex m_mutex;
    bool m_isDrawn HYN_GUARDED_BY(m_mutex) = false;
    std::uint64_t m_total HYN_GUARDED_BY(m_mutex) = 0;
    Clock::time_point m_start HYN_GUARDED_BY(m_mutex) = Clock::now();
    Clock::time_point m_next HYN_GUARDED_BY(m_mutex) = m_start;
};

// The bar of `width` columns for `done` of `total`, without a line end: count, rate and time left beside it, and less
// of that where the room is short. A total of 0 is unknown. [any]
[[nodiscard]] std::string ProgressBar(std::uint64_t done, std::uint64_t total, double seconds, std::size_t width);
} // namespace HynHost
