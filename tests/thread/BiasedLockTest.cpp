// The lock of the consumer's end must keep everybody out, whoever the owner is and whether or not the kernel helps.

#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/syscall.h>

#include <gtest/gtest.h>

#include <halyon/thread/HynBiasedLock.h>

#include <tests/support/DenyCall.h>
#include <tests/support/InChild.h>

using Halyon::CHynAutoLock;
using Halyon::HynBiasedLock;

namespace
{
// Two plain counters that differ only while somebody is inside; the second lock is taken inside the first.
struct Guarded
{
    HynBiasedLock lock;
    long long first = 0;
    long long second = 0;
    int torn = 0;

    void Step()
    {
        const CHynAutoLock outer(lock);
        torn += first != second ? 1 : 0;
        ++first;
        const CHynAutoLock again(lock);
        ++second;
    }
};

// Owners, one after the other, beside threads that are none and do not rest before the last owner has ended.
void ExpectApart(int ownerSteps)
{
    constexpr int kOwners = 3;
    constexpr int kOthers = 3;
    Guarded guarded;
    std::atomic<bool> ended{false};
    std::atomic<long long> steps{static_cast<long long>(kOwners) * ownerSteps};
    {
        std::vector<std::jthread> others;
        others.reserve(kOthers);
        for (int other = 0; other < kOthers; ++other)
            others.emplace_back(
                [&]
                {
                    for (; !ended; ++steps)
                        guarded.Step();
                });
        for (int owner = 0; owner < kOwners; ++owner)
            std::jthread(
                [&]
                {
                    guarded.lock.Adopt();
                    for (int step = 0; step < ownerSteps; ++step)
                        guarded.Step();
                })
                .join();
        ended = true;
    }
    EXPECT_EQ(guarded.torn, 0);
    EXPECT_EQ(guarded.first, steps);
    EXPECT_EQ(guarded.second, guarded.first);
}

bool DenyFences()
{
    return HalyonTest::DenyCall(SYS_membarrier);
}

constexpr char kDenied[] = "HALYON_TEST_FENCES_DENIED";

TEST(BiasedLock, KeepsEachOwnerAndOthersApart)
{
    EXPECT_TRUE(std::getenv(kDenied) == nullptr || !TovCanFenceThreads());
    ExpectApart(100'000);
}

// A program that finds itself without fences, and one that denies them to itself when it has them already.
TEST(BiasedLock, KeepsThemApartWhereNoThreadFencesOthers)
{
    if (HalyonTest::InChild([] { return std::string(DenyFences() ? "denied" : "no"); }) != "denied")
        GTEST_SKIP() << "this machine filters no calls";
    const auto beginAnew = []
    {
        DenyFences();
        setenv(kDenied, "1", 1);
        dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
        execl("/proc/self/exe", "thread_test", "--gtest_filter=BiasedLock.KeepsEachOwnerAndOthersApart", nullptr);
        return std::string("not started");
    };
    EXPECT_EQ(HalyonTest::InChild(beginAnew), "");
    const auto goOn = []
    {
        DenyFences();
        ExpectApart(3'000);
        return std::string(testing::Test::HasFailure() ? "failed" : "apart");
    };
    EXPECT_EQ(HalyonTest::InChild(goOn), "apart");
}
} // namespace
