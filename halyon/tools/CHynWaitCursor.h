// A guard that shows the busy cursor over the program's windows, from construction to destruction.
//
// Not for work on other threads, and not to be nested: the first that ends takes the busy cursor back for all,
// deliberately, together with any other shape that the program has set over its windows.
#pragma once

#include <halyon/platform/Interface.h>

namespace Halyon
{
class CHynWaitCursor
{
public:
    // [main]
    CHynWaitCursor() noexcept;

    // Each window shows its own cursor again, whatever was shown before. [main]
    ~CHynWaitCursor();

    CHynWaitCursor(const CHynWaitCursor&) = delete;
    CHynWaitCursor& operator=(const CHynWaitCursor&) = delete;
};
} // namespace Halyon
