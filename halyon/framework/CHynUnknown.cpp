#include <halyon/framework/CHynUnknown.h>

namespace Halyon
{
CHynUnknown::~CHynUnknown() = default;

std::uint32_t CHynUnknown::DefaultAddRef()
{
    return m_count.increment();
}

std::uint32_t CHynUnknown::DefaultRelease()
{
    const std::uint32_t count = m_count.decrement();
    if (count == 0)
        delete this;
    return count;
}

HynResult CHynUnknown::DefaultQueryInterface(const HYN_GUID& /*iid*/, void** /*ppv*/)
{
    return HYN_E_NOINTERFACE;
}
} // namespace Halyon
