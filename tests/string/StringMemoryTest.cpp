// What the string asks of memory, and what is left when there is none.

#include <algorithm>
#include <climits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#include "Arrays.h"
#include "OpenString.h"
#include "tests/support/Text.h"

using namespace HalyonTest;

namespace
{
CTovStringW FromPlatform(std::u16string_view text)
{
    const Halyon::CFStringRef platform =
        Halyon::CFStringCreateWithCharacters(nullptr, text.data(), static_cast<Halyon::CFIndex>(text.size()));
    CTovStringW result(platform);
    Halyon::CFRelease(platform);
    return result;
}

CTovStringW Appended(std::u16string_view text)
{
    CTovStringW result(text.substr(0, 1));
    result += text.data() + 1;
    return result;
}

CTovStringW Detached(std::u16string_view text)
{
    const CTovStringW shared(text);
    CTovStringW result = shared;
    result.TrimLeft();
    return result;
}

// Ways to make a string of a text, behind whose terminator nothing may be read.
const struct
{
    const char* name;
    CTovStringW (*make)(std::u16string_view text);
} kMakers[] = {
    {"plain text",
     [](std::u16string_view text)
     {
         return CTovStringW(text.data());
     }},
    {"view",
     [](std::u16string_view text)
     {
         return CTovStringW(text);
     }},
    {"platform text", FromPlatform},
    {"UTF-8",
     [](std::u16string_view text)
     {
         return CTovStringW::FromUTF8(CTovStringW(text).ToUTF8());
     }},
    {"Mid",
     [](std::u16string_view text)
     {
         return (u"ab" + CTovStringW(text)).Mid(2);
     }},
    {"Left",
     [](std::u16string_view text)
     {
         return (CTovStringW(text) + u"ab").Left(static_cast<int>(text.size()));
     }},
    {"sum",
     [](std::u16string_view text)
     {
         return CTovStringW() + text.data();
     }},
    {"append", Appended},
    {"detaching", Detached},
};

TEST(StringMemory, ABlockIsOneArrayOfExactlyHeaderTextAndTerminator)
{
    const int live = LiveArrays();
    for (const auto& maker : kMakers)
    {
        for (const std::size_t length : {1u, 3u, 7u, 8u, 59u, 60u, 61u, 1001u})
        {
            const GuardedArrays guarded;
            // Where it ends, memory ends.
            const auto spText = std::make_unique<char16_t[]>(length + 1);
            std::fill_n(spText.get(), length, u'x');
            const CTovStringW text = maker.make({spText.get(), length});
            const CTovStringWData& header = HeaderOf(text);
            ASSERT_TRUE(text == spText.get()) << maker.name << ": " << U8(text);
            ASSERT_EQ(header.nRefCount, 1) << maker.name;
            ASSERT_EQ(header.nCapacity, static_cast<int>(length)) << maker.name;
            ASSERT_EQ(LastArrayBytes(), 12 + 2 * (length + 1)) << maker.name;
            ASSERT_EQ(text[length], 0) << maker.name;
            ASSERT_EQ(text.FindOneOf(spText.get()), 0) << maker.name;
        }
    }
    EXPECT_EQ(LiveArrays(), live);
}

struct FailingCase
{
    const char* name;
    void (*run)(CTovStringW& text);
    const char* left; // the text after a failure
    const char* done;
};

const FailingCase kFailing[] = {
    {"assign", [](CTovStringW& text) { text = u"a longer text"; }, "", "a longer text"},
    {"assign its own part", [](CTovStringW& text) { text = text + 1; }, "", "ab "},
    {"append", [](CTovStringW& text) { text += u"c"; }, " ab ", " ab c"},
    {"append itself", [](CTovStringW& text) { text += text; }, " ab ", " ab  ab "},
    {"sum", [](CTovStringW& text) { text = text + text; }, "", " ab  ab "},
    {"Mid", [](CTovStringW& text) { text = text.Mid(1, 2); }, "", "ab"},
    {"Left", [](CTovStringW& text) { text = text.Left(2); }, "", " a"},
    {"TrimLeft", [](CTovStringW& text) { text.TrimLeft(); }, "", "ab "},
    {"TrimRight", [](CTovStringW& text) { text.TrimRight(); }, "", " ab"},
    {"view", [](CTovStringW& text) { text = CTovStringW(std::u16string_view(u"v")); }, "", "v"},
    {"UTF-8", [](CTovStringW& text) { text = CTovStringW::FromUTF8("u"); }, "", "u"},
    {"copy of a locked text",
     [](CTovStringW& text)
     {
         OpenString locked(text.View());
         if (!locked.IsEmpty())
             locked.Lock();
         text = CTovStringW(locked);
     },
     "", " ab "},
    {"platform text",
     [](CTovStringW& text)
     {
         const Halyon::CFStringRef platform = text.StringRef();
         text = CTovStringW(platform);
         Halyon::CFRelease(platform);
     },
     "", " ab "},
};

// Fails the first allocation, the second, and so on, until the work succeeds.
void FailEachAllocationOf(const FailingCase& c, bool shared)
{
    const int live = LiveArrays();
    bool failed = true;
    for (int nth = 1; failed; ++nth)
    {
        CTovStringW text = u" ab ";
        CTovStringW other = shared ? text : CTovStringW();
        FailArray(nth);
        c.run(text);
        failed = ArrayHasFailed();
        FailArray(0);
        EXPECT_EQ(U8(text), failed ? c.left : c.done) << c.name << ", allocation " << nth;
        EXPECT_EQ(U8(other), shared ? " ab " : "") << c.name << ", allocation " << nth;
        text += u"!"; // still of use
        text = u"again and again";
        EXPECT_EQ(U8(text), "again and again") << c.name << ", allocation " << nth;
    }
    EXPECT_EQ(LiveArrays(), live) << c.name;
}

TEST(StringMemory, WithoutItEveryStringStaysUsableAndNothingLeaks)
{
    for (const FailingCase& c : kFailing)
    {
        FailEachAllocationOf(c, true);
        // An unshared string trims, and takes a part of itself, where it is.
        const std::string_view name = c.name;
        if (name != "TrimLeft" && name != "TrimRight" && name != "assign its own part")
            FailEachAllocationOf(c, false);
    }
}

TEST(StringMemory, LengthsAreCountedWiderThanTheyAreStored)
{
    OpenString text(u"abc");
    FailArray(1);
    EXPECT_EQ(text.AllocBuffer(INT_MAX), 0);
    FailArray(0);
    EXPECT_EQ(LastArrayBytes(), 12 + 2 * (std::size_t{INT_MAX} + 1));
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
    const int live = LiveArrays();
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
    EXPECT_EQ(LiveArrays(), live);
}
} // namespace
