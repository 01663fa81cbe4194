// Operations that run out of memory: each allocation of one fails in turn, for once and for good, until it needs no
// more than it gets. Every time it answers as it says it does, nothing leaks, and the same call on the same objects
// succeeds as soon as there is memory.
//
//     const Operation<World> kOperations[] = {{"ExecuteSQL", [](World& world) { return world.connection->...; }}};
//     for (const auto& operation : kOperations)
//         FailEachAllocation(operation);
#pragma once

#include <algorithm>
#include <array>
#include <cstdio>

#include <gtest/gtest.h>

#include <halyon/framework/HynResult.h>

#include <tests/faults/FailingMemory.h>
#include <tests/support/Allocations.h>

namespace HalyonTest
{
using Halyon::HYN_E_FAIL;
using Halyon::HYN_E_SQSTEP;
using Halyon::HYN_S_OK;
using Halyon::HynResult;

// What an operation answers that claims success and has done something else: never allowed.
constexpr HynResult kWrong = 0x7FFFFFFF;

// The answer of an operation that tells by an empty result, or by one that is as it was, that there is no memory.
constexpr HynResult IsEither(bool isDone, bool isRefused)
{
    if (isDone)
        return HYN_S_OK;
    return isRefused ? HYN_E_FAIL : kWrong;
}

template <class World>
struct Operation
{
    const char* name;
    HynResult (*run)(World& world); // HYN_S_OK says that all is as it should be, not only that the call said so
    std::array<HynResult, 2> failures = {HYN_E_FAIL, HYN_E_FAIL};
    void (*settle)(World& world) = nullptr; // what a caller does after a failure, before it tries again
    int mostLost = 0;                       // blocks that a library loses when it gets no more
};

// How many operations ran, and how many failures were injected into them; printed at the end.
class FaultCount
{
public:
    explicit FaultCount(const char* what) : m_what(what) {}
    ~FaultCount() { std::printf("%s: %d operations, %d failures\n", m_what, m_operations, m_failures); }
    FaultCount(const FaultCount&) = delete;
    FaultCount& operator=(const FaultCount&) = delete;

    void Operation() { ++m_operations; }
    void Failure() { ++m_failures; }

private:
    const char* m_what;
    int m_operations = 0;
    int m_failures = 0;
};

// One run in a world of its own, in which an allocation fails; whether it was reached.
template <class World>
bool FailOneAllocation(const Operation<World>& operation, int nth, bool forGood)
{
    SCOPED_TRACE(testing::Message() << operation.name << ", allocation " << nth << (forGood ? " and on" : ""));
    World world;
    HynResult result = HYN_S_OK;
    bool failed = false;
    {
        const FailAllocation fail(nth, forGood);
        result = operation.run(world);
        failed = FailAllocation::HasFailed();
    }
    EXPECT_TRUE(result == HYN_S_OK || (failed && std::ranges::count(operation.failures, result) != 0))
        << "answers " << std::hex << result << " (" << Halyon::HynResultName(result) << ")";
    if (result == HYN_S_OK)
        return failed;
    if (operation.settle != nullptr)
        operation.settle(world);
    EXPECT_EQ(operation.run(world), HYN_S_OK) << "with memory again";
    return failed;
}

template <class World>
void FailEachAllocation(const Operation<World>& operation, FaultCount& count)
{
    // What libraries keep from their first use is no leak.
    FailOneAllocation(operation, 1 << 30, false);
    count.Operation();
    // An operation that is at fault shows it once, the others still have their turn.
    const auto* test = testing::UnitTest::GetInstance()->current_test_info()->result();
    const int complaints = test->total_part_count();
    for (const bool forGood : {false, true})
    {
        bool failed = true;
        for (int nth = 1; failed && test->total_part_count() == complaints; ++nth)
        {
            const long long before = LiveAllocations();
            const long long blocksBefore = LiveBlocks();
            failed = FailOneAllocation(operation, nth, forGood);
            const long long lost = LiveBlocks() - blocksBefore;
            EXPECT_EQ(LiveAllocations(), before) << operation.name << ", allocation " << nth;
            EXPECT_LE(lost, operation.mostLost) << operation.name << ", allocation " << nth;
            if (failed)
                count.Failure();
        }
    }
}
} // namespace HalyonTest
