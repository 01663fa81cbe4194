// Journeys over a tree of 20,000 files.
#include <tests/system/HostTest.h>

#include <cstdlib>

using HalyonTest::HostOutcome;
using HalyonTest::HostProcess;
using HalyonTest::Shows;

namespace
{
class LargeTreeTest : public HalyonTest::HostTest
{
protected:
    void SetUp() override
    {
        const std::string make = "'" HALYON_SCRIPTS "/make-tree' '" + (Tree() / "0").string() + "' 1000 >/dev/null";
        ASSERT_EQ(std::system(make.c_str()), 0);
        for (int copy = 1; copy < 20; ++copy)
            std::filesystem::copy(Tree() / "0", Tree() / std::to_string(copy), kLinked);
    }

    // Making links takes a small part of the time that making files does.
    static constexpr auto kLinked =
        std::filesystem::copy_options::recursive | std::filesystem::copy_options::create_hard_links;

    [[nodiscard]] std::filesystem::path Tree() const { return Path("tree"); }
};
} // namespace

TEST_F(LargeTreeTest, InterruptedImportLeavesAWholeCatalogueAndCompletesLater)
{
    HostProcess process({"import", Tree().string(), "--catalog", Catalog()}, InZone({.terminalColumns = 80}));
    ASSERT_TRUE(process.WaitFor(" of 20000") && process.WaitFor(" left")) << "the bar: count, rate and time left";
    process.Type("\x03");
    const HostOutcome interrupted = process.Finish();
    EXPECT_EQ(interrupted.status, 130);
    EXPECT_TRUE(Shows(interrupted.out, "interrupted after "));

    EXPECT_EQ(Query("PRAGMA integrity_check"), "ok\n");
    const int stored = std::stoi(Query("SELECT count(*) FROM media"));
    EXPECT_LT(stored, 20000);
    EXPECT_TRUE(Shows(interrupted.out, "interrupted after " + std::to_string(stored) + " of 20000 files"));

    const HostOutcome rest = Import(Tree());
    EXPECT_TRUE(Shows(rest.out, std::to_string(20000 - stored) + " new, 0 changed, " + std::to_string(stored) +
                                    " unchanged, 0 gone"));
    EXPECT_EQ(rest.err.find_first_of("\r\x1b"), std::string::npos) << "no bar on a pipe: " << rest.err;
    EXPECT_EQ(Query("SELECT count(*), count(DISTINCT taken), min(rating), max(rating), min(width), max(width)"
                    " FROM media"),
              "20000,1000,1,5,48,96\n");
    EXPECT_TRUE(Shows(Import(Tree()).out, "0 new, 0 changed, 20000 unchanged, 0 gone"));
}
