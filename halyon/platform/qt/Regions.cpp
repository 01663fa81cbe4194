// Regions: one bit a pixel. A photograph in black and white is mostly grain; lists of spans would take more room than
// the bits do, and a point would have to be searched for.

#include <halyon/platform/Interface.h>

#include <algorithm>
#include <bit>
#include <new>

namespace Halyon
{
struct OpaqueRgn
{
    BitMap map;
    Rect bounds = {}; // of the set pixels
};

namespace
{
std::size_t Rows(const BitMap& map)
{
    return static_cast<std::size_t>(map.bounds.bottom - map.bounds.top);
}

// The smallest rectangle around the set bits. `columns` is room for one row.
Rect Around(const BitMap& map, std::uint64_t* columns)
{
    // The rows one upon the other: what is set in any row is then seen in one pass.
    std::fill_n(columns, map.uRowWords, 0u);
    std::size_t uTop = Rows(map);
    std::size_t uBottom = 0;
    for (std::size_t y = 0; y < Rows(map); ++y)
    {
        const std::uint64_t* row = &map.spWords[y * map.uRowWords];
        std::uint64_t uAny = 0;
        for (std::size_t i = 0; i < map.uRowWords; ++i)
        {
            columns[i] |= row[i];
            uAny |= row[i];
        }
        if (uAny == 0)
            continue;
        uTop = std::min(uTop, y);
        uBottom = y + 1;
    }
    if (uBottom == 0)
        return {};
    const auto isSet = [](std::uint64_t uWord)
    {
        return uWord != 0;
    };
    const std::uint64_t* first = std::find_if(columns, columns + map.uRowWords, isSet);
    const std::uint64_t* last = columns + map.uRowWords - 1;
    while (*last == 0)
        --last;
    const auto nLeft = (first - columns) * 64 + std::countr_zero(*first);
    const auto nRight = (last - columns + 1) * 64 - std::countl_zero(*last);
    const Rect& whole = map.bounds;
    return {static_cast<std::int16_t>(whole.top + static_cast<int>(uTop)),
            static_cast<std::int16_t>(whole.left + nLeft),
            static_cast<std::int16_t>(whole.top + static_cast<int>(uBottom)),
            static_cast<std::int16_t>(whole.left + nRight)};
}
} // namespace

RgnHandle NewRgn() noexcept
{
    return new (std::nothrow) OpaqueRgn;
}

void DisposeRgn(RgnHandle rgn) noexcept
{
    delete rgn;
}

OSStatus BitMapToRegion(RgnHandle rgn, const BitMap& map) noexcept
{
    if (rgn == nullptr)
        return paramErr;
    const std::size_t uWords = Rows(map) * map.uRowWords;
    // One more row serves the measuring.
    std::unique_ptr<std::uint64_t[]> spWords(new (std::nothrow) std::uint64_t[uWords + map.uRowWords]);
    if (spWords == nullptr)
        return memFullErr;
    std::copy_n(map.spWords.get(), uWords, spWords.get());
    rgn->bounds = Around(map, &spWords[uWords]);
    rgn->map = {std::move(spWords), map.uRowWords, map.bounds};
    return noErr;
}

Boolean PtInRgn(Point point, RgnHandle rgn) noexcept
{
    if (rgn == nullptr || PtInRect(point, &rgn->bounds) == 0)
        return 0;
    const auto uColumn = static_cast<std::size_t>(point.h - rgn->map.bounds.left);
    const auto uRow = static_cast<std::size_t>(point.v - rgn->map.bounds.top);
    return (rgn->map.spWords[uRow * rgn->map.uRowWords + uColumn / 64] >> (uColumn % 64) & 1u) != 0;
}

Rect* GetRegionBounds(RgnHandle rgn, Rect* pBounds) noexcept
{
    if (pBounds != nullptr)
        *pBounds = rgn != nullptr ? rgn->bounds : Rect{};
    return pBounds;
}
} // namespace Halyon
