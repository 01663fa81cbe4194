// Brackets a scope whose time is to be told.
//
// Not a profiler: on this platform it prints nothing, so that it may stay in the code that ships.
#pragma once

#include <halyon/string/CTovStringW.h>

namespace Halyon
{
class CHynProfileHelper
{
public:
    // Copies `label` and reads the clock. `nValue` is kept beside it for a debugger. [any]
    CHynProfileHelper(const CTovStringW& label, int nValue) noexcept;

    // Calls PrintTimestamp. [owner]
    ~CHynProfileHelper();

    CHynProfileHelper(const CHynProfileHelper&) = delete;
    CHynProfileHelper& operator=(const CHynProfileHelper&) = delete;

    // Returns the current time in ticks (TickCount) and prints nothing. [owner]
    std::uint32_t PrintTimestamp() const noexcept;

private:
    [[maybe_unused]] std::uint32_t m_uStart;
    CTovStringW m_label;
    [[maybe_unused]] int m_nValue;
};
} // namespace Halyon
