// Random work on a few strings that share blocks, next to a model made of std::u16string and std::shared_ptr.
// HALYON_TEST_SEED repeats a run; a failure names the operation at which the two parted.

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#include "OpenString.h"
#include "tests/support/Text.h"

using HalyonTest::U8;

namespace
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kOperations = 200'000; // the sanitizers take about five times as long for each
#else
constexpr int kOperations = 1'000'000;
#endif

struct Block
{
    std::u16string text;
    std::size_t capacity = 0;
    bool locked = false;
};

// A string and what it should be; no block stands for the empty block.
struct Slot
{
    OpenString real;
    std::shared_ptr<Block> spBlock;

    [[nodiscard]] std::u16string Text() const { return spBlock != nullptr ? spBlock->text : std::u16string(); }
    [[nodiscard]] bool IsLocked() const { return spBlock != nullptr && spBlock->locked; }
    [[nodiscard]] bool FitsInPlace(std::size_t length) const
    {
        return spBlock != nullptr ? spBlock.use_count() == 1 && length <= spBlock->capacity : length == 0;
    }

    void ModelFresh(const std::u16string& text)
    {
        spBlock = text.empty() ? nullptr : std::make_shared<Block>(Block{text, text.size(), false});
    }
    void ModelAssign(const std::u16string& text)
    {
        if (!FitsInPlace(text.size()))
            ModelFresh(text);
        else if (spBlock != nullptr)
            spBlock->text = text;
    }
    void ModelAppend(const std::u16string& text)
    {
        if (text.empty())
            return;
        if (FitsInPlace(Text().size() + text.size()))
            spBlock->text += text;
        else
            ModelFresh(Text() + text);
    }
    void ModelShare(const Slot& src)
    {
        if (spBlock == src.spBlock)
            return;
        if (src.spBlock == nullptr || IsLocked() || src.IsLocked())
            ModelAssign(src.Text());
        else
            spBlock = src.spBlock;
    }
    void ModelTrim(const std::u16string& text)
    {
        if (spBlock.use_count() > 1)
            ModelFresh(Text());
        if (spBlock != nullptr)
            spBlock->text = text;
    }

    [[nodiscard]] bool Holds() const
    {
        if (spBlock == nullptr)
            return IsEmptyBlock(real) && real.IsEmpty() && real[0] == 0;
        const CTovStringWData& header = HeaderOf(real);
        return real.View() == spBlock->text && real[spBlock->text.size()] == 0 &&
               header.nCapacity == static_cast<int>(spBlock->capacity) &&
               header.nRefCount == (spBlock->locked ? -1 : static_cast<int>(spBlock.use_count()));
    }
};

constexpr std::u16string_view kAlphabet = u"ab /\u3000\xD83D";

struct World
{
    explicit World(std::uint64_t seed) : random(seed) {}

    std::mt19937_64 random;
    std::array<Slot, 6> slots;

    std::size_t Number(std::size_t below) { return static_cast<std::size_t>(random() % below); }
    int Position() { return static_cast<int>(Number(40)) - 10; }
    Slot& Any() { return slots[Number(slots.size())]; }

    // A text of up to 15 units, a zero unit among them now and then.
    std::u16string Text()
    {
        std::u16string text(Number(16), u' ');
        for (char16_t& unit : text)
            unit = kAlphabet[Number(kAlphabet.size())];
        if (!text.empty() && Number(8) == 0)
            text[Number(text.size())] = 0;
        return text;
    }
};

// The text as a plain pointer shows it.
std::u16string Plain(const std::u16string& text)
{
    return text.substr(0, text.find(u'\0'));
}

bool IsBlank(char16_t unit)
{
    return unit == u' ' || unit == u'\u3000';
}

// Makes the string of `slot` anew.
template <class... Arguments>
void Make(Slot& slot, Arguments&&... arguments)
{
    std::destroy_at(&slot.real);
    std::construct_at(&slot.real, std::forward<Arguments>(arguments)...);
}

// Assigns a string that should be new and hold `expected`.
void AssignNew(Slot& slot, const CTovStringW& made, const std::u16string& expected)
{
    Slot model;
    model.ModelFresh(expected);
    slot.real = made;
    slot.ModelShare(model);
}

const struct
{
    const char* name;
    void (*work)(World&, Slot& a, Slot& b);
} kWorks[] = {
    {"make",
     [](World& world, Slot& a, Slot&)
     {
         const std::u16string text = world.Text();
         const bool plain = world.Number(2) == 0;
         if (plain)
             Make(a, text.c_str());
         else
             Make(a, std::u16string_view(text));
         a.ModelFresh(plain ? Plain(text) : text);
     }},
    {"copy",
     [](World&, Slot& a, Slot& b)
     {
         if (&a == &b)
             return;
         Make(a, b.real);
         if (b.IsLocked())
             a.ModelFresh(Plain(b.Text()));
         else
             a.spBlock = b.spBlock;
     }},
    {"move",
     [](World&, Slot& a, Slot& b)
     {
         if (&a == &b)
             return;
         Make(a, std::move(b.real));
         a.spBlock = std::move(b.spBlock);
     }},
    {"swap",
     [](World&, Slot& a, Slot& b)
     {
         swap(static_cast<CTovStringW&>(a.real), static_cast<CTovStringW&>(b.real));
         std::swap(a.spBlock, b.spBlock);
     }},
    {"assign",
     [](World&, Slot& a, Slot& b)
     {
         a.real = b.real;
         a.ModelShare(b);
     }},
    {"assign moving",
     [](World&, Slot& a, Slot& b)
     {
         const bool taken = a.spBlock != b.spBlock && b.spBlock != nullptr && !a.IsLocked() && !b.IsLocked();
         a.real = std::move(b.real);
         a.ModelShare(b);
         if (taken)
             b.spBlock = nullptr;
     }},
    {"assign plain text",
     [](World& world, Slot& a, Slot&)
     {
         const std::u16string text = world.Text();
         a.real = text.c_str();
         a.ModelAssign(Plain(text));
     }},
    {"assign its own part",
     [](World& world, Slot& a, Slot&)
     {
         const std::u16string text = a.Text();
         const std::size_t from = world.Number(text.size() + 1);
         a.real = a.real + from;
         a.ModelAssign(Plain(text.substr(from)));
     }},
    {"append plain text",
     [](World& world, Slot& a, Slot&)
     {
         const std::u16string text = world.Text();
         a.real += text.c_str();
         a.ModelAppend(Plain(text));
     }},
    {"append its own part",
     [](World& world, Slot& a, Slot&)
     {
         const std::u16string text = a.Text();
         const std::size_t from = text.size() - world.Number(std::min<std::size_t>(text.size(), 20) + 1);
         a.real += a.real + from;
         a.ModelAppend(Plain(text.substr(from)));
     }},
    {"sum",
     [](World& world, Slot& a, Slot& b)
     {
         const std::u16string text = world.Text();
         EXPECT_TRUE(a.real + text.c_str() == a.Text() + Plain(text));
         EXPECT_TRUE(text.c_str() + a.real == Plain(text) + a.Text());
         if (a.Text().size() + b.Text().size() < 1000) // chance could double it for ever
             AssignNew(a, a.real + b.real, a.Text() + b.Text());
     }},
    {"Mid",
     [](World& world, Slot& a, Slot& b)
     {
         const int first = world.Position();
         const int count = world.Position();
         const std::u16string text = b.Text();
         const std::u16string rest = text.substr(std::min(static_cast<std::size_t>(std::max(first, 0)), text.size()));
         EXPECT_TRUE(b.real.Mid(first) == rest);
         AssignNew(a, b.real.Mid(first, count), rest.substr(0, static_cast<std::size_t>(std::max(count, 0))));
     }},
    {"Left",
     [](World& world, Slot& a, Slot& b)
     {
         const int count = world.Position();
         AssignNew(a, b.real.Left(count), b.Text().substr(0, static_cast<std::size_t>(std::max(count, 0))));
     }},
    {"trim",
     [](World& world, Slot& a, Slot&)
     {
         const std::u16string text = a.Text();
         auto first = text.begin();
         auto last = text.end();
         if (world.Number(2) == 0)
         {
             a.real.TrimLeft();
             first = std::find_if_not(first, last, IsBlank);
         }
         else
         {
             a.real.TrimRight();
             last = std::find_if_not(text.rbegin(), text.rend(), IsBlank).base();
         }
         a.ModelTrim({first, last});
     }},
    {"look",
     [](World& world, Slot& a, Slot& b)
     {
         const std::u16string set = Plain(world.Text());
         const std::size_t found = Plain(a.Text()).find_first_of(set);
         EXPECT_EQ(a.real.FindOneOf(set.c_str()), found == std::u16string::npos ? -1 : static_cast<int>(found));
         EXPECT_EQ(a.real <=> b.real, a.Text() <=> b.Text());
         EXPECT_EQ(a.real == b.real, a.Text() == b.Text());
     }},
    {"lock or unlock",
     [](World&, Slot& a, Slot&)
     {
         if (a.spBlock == nullptr || a.spBlock.use_count() != 1)
             return;
         a.spBlock->locked = !a.spBlock->locked;
         HeaderOf(a.real).nRefCount = a.spBlock->locked ? -1 : 1;
     }},
};

std::uint64_t Seed()
{
    const char* given = std::getenv("HALYON_TEST_SEED");
    return given != nullptr ? std::strtoull(given, nullptr, 10) : std::random_device()();
}

TEST(StringModel, RandomWorkKeepsTextsCountsAndCapacities)
{
    const std::uint64_t seed = Seed();
    std::printf("HALYON_TEST_SEED=%llu\n", static_cast<unsigned long long>(seed));
    World world(seed);
    for (int operation = 1; operation <= kOperations; ++operation)
    {
        const auto& work = kWorks[world.Number(std::size(kWorks))];
        Slot& a = world.Any();
        Slot& b = world.Any();
        work.work(world, a, b);
        for (const Slot& slot : world.slots)
        {
            ASSERT_TRUE(slot.Holds() && !testing::Test::HasFailure())
                << "operation " << operation << " (" << work.name << ", " << &a - world.slots.data() << " with "
                << &b - world.slots.data() << ") of seed " << seed << ": string " << &slot - world.slots.data()
                << " is \"" << U8(slot.real) << "\", not \"" << U8(slot.Text()) << "\"; count "
                << HeaderOf(slot.real).nRefCount << ", capacity " << HeaderOf(slot.real).nCapacity;
        }
    }
}
} // namespace
