#include <halyon/tools/CHynVersionHelper.h>

#include <halyon/platform/TovPCMac.h>
#include <halyon/string/CTovStringW.h>

namespace Halyon
{
// Parts are read where they stand: the conversion passes over leading white space and ends before any separator.
int CHynVersionHelper::GetVersion(const char16_t* text, tagHYN_VERSION& version) noexcept
{
    if (text == nullptr)
        return 0;
    tagHYN_VERSION read = {};
    for (std::uint32_t* number : {&read.first, &read.second, &read.third})
    {
        const char16_t* separator = CTovStringW::_cstrpbrk(text, u".,");
        if (separator == nullptr || separator == text)
            return 0;
        *number = static_cast<std::uint32_t>(tov_wtoi(text));
        text = separator + 1;
    }
    if (*text == 0)
        return 0;
    read.fourth = static_cast<std::uint32_t>(tov_wtoi(text));
    version = read;
    return 1;
}

int CHynVersionHelper::CompareVersion(const tagHYN_VERSION& a, const tagHYN_VERSION& b) noexcept
{
    for (const auto number : {&tagHYN_VERSION::first, &tagHYN_VERSION::second, &tagHYN_VERSION::fourth})
    {
        if (a.*number != b.*number)
            return a.*number > b.*number ? 1 : -1;
    }
    return 0;
}
} // namespace Halyon
