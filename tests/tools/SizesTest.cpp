#include <gtest/gtest.h>

#include <limits>

#include <halyon/tools/CHynPubTools.h>

#include "tests/support/Text.h"

using Halyon::CHynPubTools;
using HalyonTest::U8;

TEST(FileSize, UnitsChangeAfter999OfTheOneBefore)
{
    constexpr long long nGreatest = std::numeric_limits<long long>::max();
    const struct
    {
        long long nSize;
        int nUnit;
        const char* text;
    } cases[] = {
        {0, 1, "0"},
        {999, 1, "999"},
        {-5, 1, "-5"},
        {-5'000'000'000, 1, "-705032704"}, // the low 32 bits
        {1000, 2, "1"},
        {1024, 2, "1"},
        {1025, 2, "2"},
        {1'022'976, 2, "999"},
        {1'022'977, 3, "0.98"},
        {1'048'575, 3, "1.00"},
        {1'048'575'999, 3, "1000.00"},
        {1'048'576'000, 4, "0.98"},
        {nGreatest, 4, "8589934592.00"},
        {-nGreatest - 1, 1, "0"},
    };
    for (const auto& c : cases)
    {
        char16_t text[16];
        EXPECT_EQ(CHynPubTools::GetFileSizeStr(c.nSize, text), c.nUnit) << c.nSize;
        EXPECT_EQ(U8(text), c.text) << c.nSize;
    }
    EXPECT_EQ(CHynPubTools::GetFileSizeStr(5, nullptr), 0);
}

TEST(FitIn, TouchesTheBoxFromInsideUpAndDown)
{
    constexpr std::int32_t nGreatest = std::numeric_limits<std::int32_t>::max();
    const struct
    {
        std::int32_t size[2], box[2], fitted[2];
        double fScale;
    } cases[] = {
        {{400, 300}, {200, 200}, {200, 150}, 0.5},
        {{300, 400}, {200, 200}, {150, 200}, 0.5},
        {{100, 50}, {300, 300}, {300, 150}, 3.0},
        {{64, 64}, {64, 64}, {64, 64}, 1.0},
        {{3, 1000}, {100, 100}, {0, 100}, 0.1},
        {{0, 300}, {200, 200}, {0, 300}, 0.0},
        {{300, 0}, {200, 200}, {300, 0}, 0.0},
        {{nGreatest, 1}, {1, -nGreatest}, {-nGreatest - 1, -nGreatest + 1}, -2147483647.0},
    };
    for (const auto& c : cases)
    {
        std::int32_t nWidth = c.size[0];
        std::int32_t nHeight = c.size[1];
        EXPECT_DOUBLE_EQ(CHynPubTools::TLFitIn(&nWidth, &nHeight, c.box[0], c.box[1]), c.fScale);
        EXPECT_EQ(std::pair(nWidth, nHeight), std::pair(c.fitted[0], c.fitted[1])) << c.size[0] << " x " << c.size[1];
    }
    std::int32_t nSide = 5;
    EXPECT_EQ(CHynPubTools::TLFitIn(&nSide, nullptr, 1, 1), 0.0);
    EXPECT_EQ(CHynPubTools::TLFitIn(nullptr, &nSide, 1, 1), 0.0);
}
