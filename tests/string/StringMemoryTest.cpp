// What the string asks of memory.

#include <algorithm>
#include <climits>
#include <memory>
#include <string_view>

#include <gtest/gtest.h>

#include "OpenString.h"
#include "tests/support/Allocations.h"
#include "tests/support/Text.h"

using namespace HalyonTest;

namespace
{
// Ways to make a string of a text, behind whose terminator nothing may be read; the model of StringModelTest.cpp holds
// the capacities of all the others.
const struct
{
    CTovStringW (*make)(const char16_t* text, std::size_t length);
    const char* name;
} kMakers[] = {
    {[](const char16_t* text, std::size_t) -> CTovStringW { return text; }, "plain text"},
    {[](const char16_t* text, std::size_t length) { return CTovStringW(std::u16string_view(text, length)); }, "view"},
    {[](const char16_t* text, std::size_t) { return CTovStringW::FromUTF8(U8(text)); }, "UTF-8"},
    {[](const char16_t* text, std::size_t) { return CTovStringW() + text; }, "sum"},
    {[](const char16_t* text, std::size_t)
     {
         CTovStringW result = CTovStringW(text).Left(1);
         result += text + 1;
         return result;
     },
     "append"},
};

TEST(StringMemory, ABlockIsOneArrayOfExactlyHeaderTextAndTerminator)
{
    const long long live = LiveAllocations();
    for (const auto& maker : kMakers)
    {
        // Among them those whose text, and those whose block, ends exactly at its page's end.
        for (const std::size_t length : {1u, 3u, 7u, 8u, 9u, 57u, 60u, 63u, 1001u, 1007u})
        {
            const GuardedAllocations guarded;
            const auto spText = std::make_unique<char16_t[]>(length + 1);
            std::fill_n(spText.get(), length, u'x');
            const CTovStringW text = maker.make(spText.get(), length);
            const CTovStringWData& header = HeaderOf(text);
            ASSERT_TRUE(text == spText.get()) << maker.name << ": " << U8(text);
            ASSERT_EQ(header.nRefCount, 1) << maker.name;
            ASSERT_EQ(header.nCapacity, static_cast<int>(length)) << maker.name;
            ASSERT_EQ(LastArrayBytes(), 12 + 2 * (length + 1)) << maker.name;
            ASSERT_EQ(text[length], 0) << maker.name;
            ASSERT_EQ(text.FindOneOf(spText.get()), 0) << maker.name;
        }
    }
    EXPECT_EQ(LiveAllocations(), live);
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
