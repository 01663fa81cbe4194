// What the string asks of memory.

#include <climits>
#include <string>

#include <gtest/gtest.h>

#include "OpenString.h"
#include "tests/support/Allocations.h"
#include "tests/support/Text.h"

using namespace HalyonTest;

namespace
{
// What the model of StringModelTest.cpp knows as capacities are bytes here.
TEST(StringMemory, ABlockIsOneArrayOfExactlyHeaderTextAndTerminator)
{
    for (const std::size_t length : {1u, 3u, 7u, 8u, 9u, 1001u})
    {
        const std::u16string units(length, u'x');
        const long long live = LiveAllocations();
        for (const bool isAppended : {false, true})
        {
            CTovStringW text(isAppended ? u"x" : units.c_str());
            if (isAppended)
                text += units.c_str();
            EXPECT_EQ(LiveAllocations(), live + 1);
            EXPECT_EQ(LastArrayBytes(), 12 + 2 * (static_cast<std::size_t>(text.GetLength()) + 1)) << length;
            EXPECT_EQ(HeaderOf(text).nCapacity, text.GetLength()) << length;
        }
        EXPECT_EQ(LiveAllocations(), live) << length;
    }
}

TEST(StringMemory, LengthsAreCountedWiderThanTheyAreStored)
{
    OpenString text(u"abc");
    {
        const FailAllocation fail(1);
        EXPECT_EQ(text.AllocBuffer(INT_MAX), 0);
        EXPECT_EQ(LastArrayBytes(), 12 + 2 * (std::size_t{INT_MAX} + 1));
    }
    EXPECT_EQ(text.AllocBuffer(-1), 0);
    // Refused before a unit is read.
    text.ConcatCopy(INT_MAX, nullptr, 1, nullptr);
    text.ConcatInPlace(INT_MAX, nullptr);
    OpenString dest;
    text.AllocCopy(dest, INT_MAX, 0, 1);
    EXPECT_EQ(U8(text), "abc");
    EXPECT_TRUE(dest.IsEmpty());
}

TEST(StringMemory, DerivedClassesManageBlocksByHand)
{
    const long long live = LiveAllocations();
    {
        OpenString a(u"abc");
        CTovStringW b = a;
        CTovStringWData* block = &HeaderOf(a);
        EXPECT_EQ(a.AllocBuffer(0), 1); // does not let go of what was held
        EXPECT_TRUE(IsEmptyBlock(a));
        EXPECT_EQ(block->nRefCount, 2);
        OpenString::Release(block);
        EXPECT_EQ(block->nRefCount, 1);
        EXPECT_EQ(a.AllocBeforeWrite(0), 1);
        EXPECT_TRUE(IsEmptyBlock(a));

        a = b;
        EXPECT_EQ(a.AllocBeforeWrite(2), 1); // shared: another block
        EXPECT_EQ(HeaderOf(a).nCapacity, 2);
        EXPECT_EQ(block->nRefCount, 1);
        const char16_t* units = a;
        a.AssignCopy(2, u"xy");
        EXPECT_EQ(a.AllocBeforeWrite(1), 1); // its own and large enough: kept as it is
        EXPECT_EQ(a.begin(), units);
        EXPECT_EQ(a.GetLength(), 2);

        OpenString part;
        OpenString(b).AllocCopy(part, 2, 1, 3);
        EXPECT_EQ(HeaderOf(part).nLength, 5);
        EXPECT_EQ(U8(part.View().substr(0, 2)), "bc");
        part.CopyBeforeWrite(); // not shared: nothing to do
        EXPECT_EQ(HeaderOf(part).nLength, 5);
        part.Release();
        part.Release();
        EXPECT_TRUE(IsEmptyBlock(part));
    }
    EXPECT_EQ(LiveAllocations(), live);
}
} // namespace
