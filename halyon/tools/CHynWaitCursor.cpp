#include <halyon/tools/CHynWaitCursor.h>

namespace Halyon
{
CHynWaitCursor::CHynWaitCursor() noexcept
{
    SetCursor(GetCursor(watchCursor));
}

CHynWaitCursor::~CHynWaitCursor()
{
    InitCursor();
}
} // namespace Halyon
