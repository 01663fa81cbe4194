// The counting base, its counter, the holding pointer and the result codes.

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <halyon/database/CHynSQCommand.h>
#include <halyon/database/CHynSQConnection.h>
#include <halyon/database/CHynSQRecordSet.h>
#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/CHynComponent.h>
#include <halyon/framework/HynIdentifiers.h>

#include "tests/support/Slots.h"
#include "tests/support/Threads.h"
#include <validate/Frozen.h>

using namespace Halyon;
using HalyonTest::SlotOf;

namespace
{
TEST(LockCounter, HandsEachThreadTheCountThatItMade)
{
    constexpr std::size_t kThreads = 4;
    constexpr std::size_t kSteps = 5000;
    LockCounter<CHynLock> counter;
    std::vector<std::uint32_t> up(kThreads * kSteps);
    std::vector<std::uint32_t> down(kThreads * kSteps);
    const auto run = [&](auto step, std::vector<std::uint32_t>& results)
    {
        HalyonTest::OnThreads(kThreads,
                              [&](std::size_t thread) { std::generate_n(&results[thread * kSteps], kSteps, step); });
        std::sort(results.begin(), results.end());
    };
    run([&] { return counter.increment(); }, up);
    run([&] { return counter.decrement(); }, down);

    std::vector<std::uint32_t> expected(kThreads * kSteps);
    std::iota(expected.begin(), expected.end(), 1u);
    EXPECT_EQ(up, expected);
    std::iota(expected.begin(), expected.end(), 0u);
    EXPECT_EQ(down, expected);
}

// A component with an interface of its own, which tells when it dies.
class Part : public CHynComponent<IHynUnknown, &IID_IHynViewer>
{
public:
    explicit Part(bool& gone) : m_gone(gone) {}
    ~Part() override { m_gone = true; }

private:
    bool& m_gone;
};

class Unmakeable : public CHynComponent<IHynUnknown, &IID_IHynViewer>
{
public:
    Unmakeable() { throw std::runtime_error("no"); }
};

TEST(Component, WhoseConstructorThrowsGivesACodeInstead)
{
    void* out = nullptr;
    EXPECT_EQ(HynMakeObject<Unmakeable>(IID_IHynViewer, &out), HYN_E_FAIL);
    EXPECT_EQ(out, nullptr);
}

TEST(CountingBase, AnswersNoInterfaceByItself)
{
    CHynUnknown base;
    int marker = 0;
    void* out = &marker;
    EXPECT_EQ(base.DefaultQueryInterface(IID_IHynUnknown, &out), HYN_E_NOINTERFACE);
    EXPECT_EQ(base.DefaultQueryInterface(IID_IHynUnknown, nullptr), HYN_E_NOINTERFACE);
    EXPECT_EQ(out, &marker);
}

TEST(CountingBase, StartsAtZeroAnswersByTheRulesAndDestroysWithTheLastRelease)
{
    bool gone = false;
    auto* part = new Part(gone);
    const auto answer = [](IHynUnknown* self, const HYN_GUID& iid, void** ppv)
    {
        return HynAnswerInterface<&IID_IHynViewer, &IID_IHynUnknown>(self, iid, ppv);
    };
    void* out = nullptr;
    EXPECT_EQ(answer(nullptr, IID_IHynBrowser, nullptr), HYN_E_NOINTERFACE) << "the identifier is tested first";
    EXPECT_EQ(answer(nullptr, IID_IHynViewer, &out), HYN_E_POINTER);
    EXPECT_EQ(answer(part, IID_IHynUnknown, nullptr), HYN_E_POINTER);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(answer(part, IID_IHynViewer, &out), HYN_S_OK);
    EXPECT_EQ(out, part);
    EXPECT_EQ(part->AddRef(), 2u);
    EXPECT_EQ(part->Release(), 1u);
    EXPECT_FALSE(gone);
    EXPECT_EQ(part->Release(), 0u);
    EXPECT_TRUE(gone);
}

// The two destructors come first of what follows the interface, and of the base.
TEST(CountingBase, GoesOnInItsSlotsBehindTheInterfaceAndInATableOfItsOwn)
{
    using Query = HynResult(const HYN_GUID&, void**);
    using Count = std::uint32_t();
    EXPECT_EQ(SlotOf<Query>(&CHynSQConnection::DefaultQueryInterface), Frozen::kConnectionEnd + 2);
    EXPECT_EQ(SlotOf<Query>(&CHynSQCommand::DefaultQueryInterface), Frozen::kCommandEnd + 2);
    EXPECT_EQ(SlotOf<Query>(&CHynSQRecordSet::DefaultQueryInterface), Frozen::kRecordSetEnd + 2);
    EXPECT_EQ(SlotOf<Count>(&CHynUnknown::DefaultAddRef), 2);
    EXPECT_EQ(SlotOf<Count>(&CHynUnknown::DefaultRelease), 3);
    EXPECT_EQ(SlotOf<Query>(&CHynUnknown::DefaultQueryInterface), 4);
    bool gone = false;
    const CHynAutoPtr<Part> part = new Part(gone);
    const CHynUnknown& base = *part;
    EXPECT_EQ(reinterpret_cast<const void* const*>(&base), reinterpret_cast<const void* const*>(&*part) + 1);
}

TEST(Identifiers, DifferInAnyByte)
{
    for (std::size_t i = 0; i < sizeof(HYN_GUID); ++i)
    {
        HYN_GUID id = IID_IHynUnknown;
        EXPECT_EQ(id, IID_IHynUnknown);
        reinterpret_cast<std::uint8_t*>(&id)[i] ^= 0x80;
        EXPECT_NE(id, IID_IHynUnknown) << i;
    }
}

// Writes each call down, so that the order of calls on several objects shows.
struct Logged
{
    char name;
    std::string& log;
    void AddRef() { log += {'+', name}; }
    void Release() { log += {'-', name}; }
};

class AutoPtr : public testing::Test
{
protected:
    // Checks what has happened since the last step.
    void step(const char* expected)
    {
        EXPECT_EQ(log, expected);
        log.clear();
    }

    std::string log;
    Logged a{'a', log};
    Logged b{'b', log};
};

TEST_F(AutoPtr, ReleasesTheOldBeforeItAddsToTheNew)
{
    {
        CHynAutoPtr<Logged> sp;
        sp = nullptr;
        step("");
        sp = &a;
        step("+a");
        sp = &a;
        step("");
        sp = &b;
        step("-a+b");
        sp = nullptr;
        step("-b");
        EXPECT_EQ(sp, nullptr);
        sp = &a;
        log.clear();
    }
    step("-a");
}

TEST_F(AutoPtr, CountsEachHolderOnce)
{
    {
        CHynAutoPtr<Logged> first(&a);
        CHynAutoPtr<Logged> second(first);
        step("+a+a");
        CHynAutoPtr<Logged> third(std::move(second));
        step("");
        EXPECT_EQ(third->name, 'a');
        third = std::move(first);
        step("-a");
        first = third;
        step("+a");
        CHynAutoPtr<Logged>& alias = first;
        first = alias;
        step("");
        first.Attach(&b);
        step("-a");
        EXPECT_EQ(first.Detach(), &b);
        step("");
        *third.Receive() = &b;
        step("-a");
    }
    step("-b");
}

TEST(ResultCodes, HaveTheirValuesNamesAndSigns)
{
    const std::pair<const char*, std::uint32_t> cases[] = {{"HYN_S_OK", 0x00000000},
                                                           {"HYN_S_FALSE", 0x00000001},
                                                           {"HYN_E_BUFFERTOOSMALL", 0x80000002},
                                                           {"HYN_E_FAIL", 0x80000008},
                                                           {"HYN_E_NOINTERFACE", 0x81000001},
                                                           {"HYN_E_POINTER", 0x81000002},
                                                           {"HYN_E_SQSTEP", 0x81040001},
                                                           {"HYN_E_SQNULLVALUE", 0x81040002},
                                                           {"HYN_S_EVENT_HANDLED", 0x01020001},
                                                           {"HYN_E_THREADNOTRUNNING", 0x81010001},
                                                           {"HYN_E_THREADNOEVENT", 0x81010002},
                                                           {"HYN_E_THREADNOTHREAD", 0x81010003},
                                                           {"HYN_E_THREADRUNNING", 0x81010004},
                                                           {"HYN_E_NOHANDLER", 0x81020003},
                                                           {"unknown result", 0x80000001}};
    for (const auto& [name, value] : cases)
    {
        const auto result = static_cast<HynResult>(value);
        EXPECT_STREQ(HynResultName(result), name);
        EXPECT_EQ(HynSucceeded(result), value < 0x80000000) << name;
        EXPECT_EQ(HynFailed(result), value >= 0x80000000) << name;
    }
}
} // namespace
