// Operations that run out of memory: each allocation of one fails in turn, for once and for good, until it needs no
// more than it gets. Every time it answers as it says it does, nothing leaks, and the same call on the same objects
// succeeds as soon as there is memory.
//
//     using Op = Operation<World>;
//     const Op kOperations[] = {Op("ExecuteSQL", [](World& world) { return world.connection->...; })};
//     FailEachAllocation("database", kOperations);
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

// The answer of one that needs no memory.
constexpr HynResult IsDone(bool isDone)
{
    return IsEither(isDone, false);
}

template <class World>
struct Operation
{
    using Run = HynResult(World& world);

    struct Failing
    {
        std::array<HynResult, 3> answers = {HYN_E_FAIL, HYN_E_FAIL, HYN_E_FAIL};
        void (*settle)(World& world) = nullptr; // what a caller does after a failure, before it tries again
        int mostLost = 0;                       // blocks that a library loses when it gets no more
    };

    Operation(const char* opName, Run* opRun) : name(opName), run(opRun) {}
    Operation(const char* opName, const Failing& opFailing, Run* opRun) : name(opName), failing(opFailing), run(opRun)
    {
    }

    const char* name;
    Failing failing;
    Run* run; // HYN_S_OK says that all is as it should be, not only that the call said so
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
    EXPECT_TRUE(result == HYN_S_OK || (failed && std::ranges::count(operation.failing.answers, result) != 0))
        << "answers " << std::hex << result << " (" << Halyon::HynResultName(result) << ")";
    if (result == HYN_S_OK)
        return failed;
    if (operation.failing.settle != nullptr)
        operation.failing.settle(world);
    EXPECT_EQ(operation.run(world), HYN_S_OK) << "with memory again";
    return failed;
}

// Returns how many failures were injected.
template <class World>
int FailEachAllocation(const Operation<World>& operation)
{
    // What libraries keep from their first use is no leak.
    FailOneAllocation(operation, 1 << 30, false);
    // An operation that is at fault shows it once, the others still have their turn.
    const auto* test = testing::UnitTest::GetInstance()->current_test_info()->result();
    const int complaints = test->total_part_count();
    int failures = 0;
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
            EXPECT_LE(lost, operation.failing.mostLost) << operation.name << ", allocation " << nth;
            failures += failed ? 1 : 0;
        }
    }
    return failures;
}

template <class World, std::size_t count>
void FailEachAllocation(const char* what, const Operation<World> (&operations)[count])
{
    int failures = 0;
    for (const Operation<World>& operation : operations)
        failures += FailEachAllocation(operation);
    std::printf("%s: %zu operations, %d failures\n", what, count, failures);
}
} // namespace HalyonTest
