// Programs that write into one catalogue.
#include <tests/system/HostTest.h>

#include <memory>

using HalyonTest::HostOutcome;
using HalyonTest::HostProcess;
using HalyonTest::Shows;

using ManyImportsTest = HalyonTest::HostTest;

TEST_F(ManyImportsTest, IntoOneCatalogueAtOnceEndWellAndLoseNothing)
{
    const auto first = CopySamples();
    const auto second = Path("second");
    std::filesystem::copy(first, second, std::filesystem::copy_options::recursive);
    for (const bool isNew : {true, false}) // all make the catalogue, then all find it
    {
        // The third covers what the others do: what one stores another must neither lose nor store twice.
        std::vector<std::unique_ptr<HostProcess>> imports;
        for (const auto& folder : {first, second, Path("")})
            imports.push_back(std::make_unique<HostProcess>(
                std::vector<std::string>{"import", folder.string(), "--catalog", Catalog()}, InZone({})));
        for (const auto& import : imports)
        {
            const HostOutcome outcome = import->Finish();
            EXPECT_EQ(outcome.status, 0) << outcome.err;
            EXPECT_TRUE(isNew || Shows(outcome.out, "0 new, 0 changed, "));
            EXPECT_TRUE(Shows(outcome.out, " 0 gone"));
        }
        EXPECT_EQ(Query("SELECT count(*), count(DISTINCT path), count(DISTINCT volume) FROM media"), "74,74,1\n");
    }
    EXPECT_EQ(Query("PRAGMA integrity_check"), "ok\n");
}
