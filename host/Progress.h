// How far a long piece of work is: a bar on a terminal, a plain line now and then elsewhere, on standard error.
//
//     Progress progress("files");
//     progress.Start(progress.WantsTotal() ? Count() : 0);
//     for (...)
//         progress.Update(++done);
//     progress.Clear();
//
// Updating costs a look at the clock; the bar is drawn at most ten times a second and fits the width that the terminal
// has at that moment.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

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

    // The work begins now; 0 when it is not known how much it is. [owner]
    void Start(std::uint64_t total);

    // `done` of it is done. [owner]
    void Update(std::uint64_t done);

    // Takes the bar off the screen; the next update draws it again. Before anything else is written. [owner]
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    std::string m_what;
    bool m_isTerminal;
    bool m_isDrawn = false;
    std::uint64_t m_total = 0;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_next = m_start;
};

// The bar of `width` columns for `done` of `total`, without a line end: count, rate and time left beside it, and less
// of that where the room is short. A total of 0 is unknown. [any]
[[nodiscard]] std::string ProgressBar(std::uint64_t done, std::uint64_t total, double seconds, std::size_t width);
} // namespace HynHost
