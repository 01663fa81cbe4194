#include <algorithm>
#include <array>
#include <memory>

#include <halyon/platform/Interface.h>

#include "ScreenSupport.h"

using namespace Halyon;

namespace
{
auto Fields(const Rect& rect)
{
    return std::tuple(rect.left, rect.top, rect.right, rect.bottom);
}
} // namespace

TEST(Region, HoldsExactlyTheSetPixelsOfItsMap)
{
    // 130 pixels wide: two whole words and two pixels of a third.
    BitMap map;
    map.uRowWords = 3;
    map.bounds = {-10, 100, -7, 230};
    map.spWords = std::make_unique<std::uint64_t[]>(9);
    std::ranges::copy(std::array{0ull, 0ull, 0ull, 1ull << 63 | 1ull << 5, 0ull, 2ull, 0ull, 1ull, 0ull},
                      map.spWords.get());
    RgnHandle rgn = NewRgn();
    ASSERT_EQ(BitMapToRegion(rgn, map), noErr);
    std::vector<std::pair<int, int>> seen;
    for (int v = -12; v < -4; ++v)
        for (int h = 90; h < 250; ++h)
            if (PtInRgn({static_cast<std::int16_t>(v), static_cast<std::int16_t>(h)}, rgn) != 0)
                seen.emplace_back(h, v);
    EXPECT_EQ(seen, (std::vector<std::pair<int, int>>{{105, -9}, {163, -9}, {229, -9}, {164, -8}}));
    Rect bounds = {};
    EXPECT_EQ(GetRegionBounds(rgn, &bounds), &bounds);
    EXPECT_EQ(Fields(bounds), std::tuple(105, -9, 230, -7));

    map.spWords = std::make_unique<std::uint64_t[]>(9);
    ASSERT_EQ(BitMapToRegion(rgn, map), noErr);
    GetRegionBounds(rgn, &bounds);
    EXPECT_EQ(Fields(bounds), std::tuple(0, 0, 0, 0));
    EXPECT_EQ(PtInRgn({0, 0}, rgn), 0);
    DisposeRgn(rgn);
}

TEST(Region, NoRegionHoldsNothing)
{
    Rect bounds = {1, 2, 3, 4};
    EXPECT_EQ(PtInRgn({0, 0}, nullptr), 0);
    GetRegionBounds(nullptr, &bounds);
    EXPECT_EQ(Fields(bounds), std::tuple(0, 0, 0, 0));
    EXPECT_EQ(BitMapToRegion(nullptr, {}), paramErr);
    DisposeRgn(nullptr);
}
