// Strings that share blocks, on several threads at once.

#include <array>
#include <atomic>
#include <barrier>
#include <functional>
#include <iterator>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "OpenString.h"
#include "tests/support/Allocations.h"
#include "tests/support/Text.h"
#include "tests/support/Threads.h"

using namespace HalyonTest;

namespace
{
constexpr int kThreads = 4;
constexpr int kRounds = 4000;

// Runs `deal()` on one thread, then `work(thread, round)` on each, and so on.
void InStep(const std::function<void()>& deal, const std::function<void(std::size_t, std::size_t)>& work)
{
    std::barrier gate(kThreads, [&deal]() noexcept { deal(); });
    HalyonTest::OnThreads(kThreads,
                          [&](std::size_t thread)
                          {
                              for (std::size_t round = 0; round < kRounds; ++round)
                              {
                                  gate.arrive_and_wait();
                                  work(thread, round);
                              }
                          });
}

// result: of " b "
const std::pair<void (*)(CTovStringW& text), const char*> kWrites[] = {
    {[](CTovStringW& text) { text.TrimLeft(); }, "b "},
    {[](CTovStringW& text) { text.TrimRight(); }, " b"},
    {[](CTovStringW& text) { text += u"!"; }, " b !"},
    {[](CTovStringW& text) { text = text + 1; }, "b "},
    {[](CTovStringW& text) { text = u"?"; }, "?"},
    {[](CTovStringW& text) { text = CTovStringW(); }, ""},
    {[](CTovStringW& text) { CTovStringW(std::move(text)); }, ""},
};

TEST(StringThreads, CopiesOfOneTextAreMadeWrittenAndDroppedIndependently)
{
    const long long live = LiveAllocations();
    {
        const CTovStringW source = u" b ";
        std::atomic<int> wrong{0};
        InStep([] {},
               [&source, &wrong](std::size_t thread, std::size_t round)
               {
                   const auto& [write, result] = kWrites[(thread + round) % std::size(kWrites)];
                   CTovStringW written = source;
                   const CTovStringW copy = written;
                   write(written);
                   wrong += written.ToUTF8() != result || copy != source;
               });
        EXPECT_EQ(wrong, 0);
        EXPECT_EQ(U8(source), " b ");
        EXPECT_EQ(HeaderOf(source).nRefCount, 1);
    }
    EXPECT_EQ(LiveAllocations(), live);
}

// Each thread owns one of the strings of a block. Who is last changes from round to round: some find the block shared
// and copy it, one may find it its own and write where the others have read until a moment ago.
TEST(StringThreads, TheLastOwnerMayWriteInPlaceAndOneOfThemFrees)
{
    std::array<CTovStringW, kThreads> texts;
    std::atomic<int> wrong{0};
    const long long live = LiveAllocations();
    InStep([&texts] { texts.fill(CTovStringW(u" b ")); },
           [&texts, &wrong](std::size_t thread, std::size_t round)
           {
               const auto& [write, result] = kWrites[(thread * round) % std::size(kWrites)];
               CTovStringW text = std::move(texts[thread]);
               write(text);
               wrong += text.ToUTF8() != result;
           });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(LiveAllocations(), live);
}

TEST(StringThreads, EmptyTextsOfAllThreadsShareTheirBlockInPeace)
{
    std::atomic<int> wrong{0};
    InStep([] {},
           [&wrong](std::size_t thread, std::size_t round)
           {
               CTovStringW a;
               CTovStringW b = a;
               kWrites[(thread + round) % 2].first(a); // trims
               a = b;
               a = u"";
               b = std::move(a);
               wrong += !b.IsEmpty() || b.GetUTF8String(nullptr, 0) != 0 || b != u"";
           });
    EXPECT_EQ(wrong, 0);
}
} // namespace
