// Result codes: the one table, with the names that programs print.
#pragma once

#include <halyon/framework/HynTypes.h>

namespace Halyon
{
// Success.
inline constexpr HynResult HYN_S_OK = 0;
// Success with nothing more to deliver: a cursor stepped past its last row.
inline constexpr HynResult HYN_S_FALSE = 1;

// A handler has dealt with the event: handlers registered after it do not see it.
inline constexpr HynResult HYN_S_EVENT_HANDLED = 0x01020001;

// The caller's text buffer is too small; nothing was copied.
inline constexpr HynResult HYN_E_BUFFERTOOSMALL = static_cast<HynResult>(0x80000002u);
// General failure: an argument that is null or out of range, an object that is not ready, no memory, or any engine
// failure without a code of its own.
inline constexpr HynResult HYN_E_FAIL = static_cast<HynResult>(0x80000008u);
// The identifier is not answered: an unknown interface, or an unknown class.
inline constexpr HynResult HYN_E_NOINTERFACE = static_cast<HynResult>(0x81000001u);
// An answered identifier was asked for with a null object or a null out pointer.
inline constexpr HynResult HYN_E_POINTER = static_cast<HynResult>(0x81000002u);
// The thread does not run.
inline constexpr HynResult HYN_E_THREADNOTRUNNING = static_cast<HynResult>(0x81010001u);
// The thread's wake-up event could not be made.
inline constexpr HynResult HYN_E_THREADNOEVENT = static_cast<HynResult>(0x81010002u);
// The thread itself could not be made.
inline constexpr HynResult HYN_E_THREADNOTHREAD = static_cast<HynResult>(0x81010003u);
// The thread runs already.
inline constexpr HynResult HYN_E_THREADRUNNING = static_cast<HynResult>(0x81010004u);
// No handler is registered for the event's identifier.
inline constexpr HynResult HYN_E_NOHANDLER = static_cast<HynResult>(0x81020003u);
// The engine failed to step a statement: a constraint, a trigger, a changed schema, an error in the statement.
inline constexpr HynResult HYN_E_SQSTEP = static_cast<HynResult>(0x81040001u);
// A text column holds NULL.
inline constexpr HynResult HYN_E_SQNULLVALUE = static_cast<HynResult>(0x81040002u);

// Whether a code means success; HYN_S_FALSE does. [any]
[[nodiscard]] constexpr bool HynSucceeded(HynResult result) noexcept
{
    return result >= 0;
}

// Whether a code means failure. [any]
[[nodiscard]] constexpr bool HynFailed(HynResult result) noexcept
{
    return result < 0;
}

// The constant's name ("HYN_E_FAIL"), or "unknown result" for a code outside the table. Never null; the text lives
// as long as the program. [any]
[[nodiscard]] const char* HynResultName(HynResult result) noexcept;
} // namespace Halyon
