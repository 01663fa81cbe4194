// Ctrl-C, asked for instead of dying of.
//
// While an object of this class lives, the first SIGINT or SIGTERM only raises a flag that the work asks for between
// two steps. The second one ends the program as usual.
#pragma once

#include <array>
#include <csignal>
#include <cstddef>

namespace HynHost
{
class Interrupt
{
public:
    // The exit status of a program that was interrupted.
    static constexpr int kExitStatus = 130;

    Interrupt();
    ~Interrupt(); // the signals do again what they did before
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    // Whether a signal came. [any]
    [[nodiscard]] static bool Requested() noexcept;

private:
    std::array<struct sigaction, 2> m_before = {};
};
} // namespace HynHost
