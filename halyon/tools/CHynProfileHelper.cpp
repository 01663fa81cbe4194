#include <halyon/tools/CHynProfileHelper.h>

#include <halyon/platform/Interface.h>

namespace Halyon
{
CHynProfileHelper::CHynProfileHelper(const CTovStringW& label, int nValue) noexcept
    : m_uStart(TickCount()), m_label(label), m_nValue(nValue)
{
}

CHynProfileHelper::~CHynProfileHelper()
{
    PrintTimestamp();
}

// A member by its interface, though nothing of the object is read: what it printed elsewhere was the object's.
std::uint32_t
CHynProfileHelper::PrintTimestamp() const noexcept // NOLINT(readability-convert-member-functions-to-static)
{
    return TickCount();
}
} // namespace Halyon
