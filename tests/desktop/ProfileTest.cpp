// Timestamps for profiles: ticks of a clock that nobody sets.

#include <chrono>
#include <cstdint>

#include <gtest/gtest.h>

#include <halyon/tools/CHynProfileHelper.h>

namespace
{
std::uint32_t SixtiethsNow()
{
    const std::chrono::duration<double> now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(now.count() * 60));
}

TEST(Profile, TimestampsAreSixtiethsOfASecondOfTheSteadyClock)
{
    const Halyon::CHynProfileHelper helper(u"opening", 1);
    const std::uint32_t before = SixtiethsNow();
    const std::uint32_t stamp = helper.PrintTimestamp();
    EXPECT_LE(stamp - before, SixtiethsNow() - before);
}
} // namespace
