// Sizes, of files and of pictures.

#include <halyon/tools/CHynPubTools.h>

#include <algorithm>
#include <limits>

namespace Halyon
{
namespace
{
std::int32_t Rounded(double fSize)
{
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp(fSize + 0.5, static_cast<double>(Limits::min()), static_cast<double>(Limits::max())));
}
} // namespace

int CHynPubTools::GetFileSizeStr(const long long& size, char16_t* out) noexcept
{
    if (out == nullptr)
        return 0;
    char16_t text[32];
    int nUnit = 1;
    // Adding as an unsigned number cannot overflow; negative sizes do not come so far.
    const auto nKilobytes = static_cast<long long>((static_cast<unsigned long long>(size) + 1023u) >> 10);
    if (size <= 999)
        tov_swprintf(text, u"%d", static_cast<std::int32_t>(size));
    else if (nKilobytes <= 999)
    {
        tov_swprintf(text, u"%d", nKilobytes);
        nUnit = 2;
    }
    else if (size >> 20 <= 999)
    {
        tov_swprintf(text, u"%.2f", static_cast<double>(size) * 0x1p-20);
        nUnit = 3;
    }
    else
    {
        tov_swprintf(text, u"%.2f", static_cast<double>(size) * 0x1p-30);
        nUnit = 4;
    }
    tov_wcscpy(out, text);
    return nUnit;
}

double CHynPubTools::TLFitIn(std::int32_t* width, std::int32_t* height, std::int32_t maxWidth,
                             std::int32_t maxHeight) noexcept
{
    if (width == nullptr || height == nullptr || *width == 0 || *height == 0)
        return 0.0;
    const double fScaleX = static_cast<double>(maxWidth) / *width;
    const double fScaleY = static_cast<double>(maxHeight) / *height;
    const double fScale = std::min(fScaleX, fScaleY);
    *width = Rounded(*width * fScale);
    *height = Rounded(*height * fScale);
    return fScale;
}
} // namespace Halyon
