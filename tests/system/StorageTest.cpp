// Storage layers that the host loads, and names of databases that only the engine can read.
#include <tests/system/HostTest.h>

using namespace HalyonTest;

namespace
{
class StorageTest : public HalyonTest::HostTest
{
protected:
    [[nodiscard]] std::string Named(const std::string& file, const std::string& query) const
    {
        return "file:" + Path(file).string() + query;
    }
};
} // namespace

TEST_F(StorageTest, ACatalogueIsKeptThroughALayerThatWasLoaded)
{
    const auto media = CopySamples();
    const std::string catalog = Named("catalog.db", "?vfs=plain");
    const HalyonTest::HostOptions loaded{.environment = {{"HYNHOST_STORAGE", HALYON_STORAGE_LAYER}}};

    const HostOutcome import = Host({"--storage", HALYON_STORAGE_LAYER, "import", media, "--catalog", catalog});
    ASSERT_EQ(import.status, 0) << import.err;
    EXPECT_TRUE(Shows(import.out, "37 new, 0 changed, 0 unchanged, 0 gone"));
    EXPECT_TRUE(Shows(Host({"import", media, "--catalog", catalog}, loaded).out, "0 new, 0 changed, 37 unchanged"));
    EXPECT_TRUE(Shows(Host({"list", "--limit", "1", "--catalog", catalog}, loaded).out, "Total 37 files"));
    EXPECT_EQ(Host({"sql", "--csv", catalog, "SELECT count(*) AS n FROM media"}, loaded).out, "n\r\n37\r\n");
    EXPECT_EQ(Query("SELECT count(*) FROM media"), "37\n") << "the layer keeps plain files";
}

TEST_F(StorageTest, WhatCannotBeOpenedIsRefusedAndNothingIsMade)
{
    const auto media = CopySamples({});
    const std::string broken = Path("broken.so").string();
    ASSERT_EQ(Host({"sql", "--create", broken, "CREATE TABLE t (a)"}).status, 0);
    const std::string absent = Path("absent.so").string();
    using Case = std::pair<std::vector<std::string>, std::vector<std::string>>; // arguments, and words of the reason
    const std::string noLayer = Named("none.db", "?vfs=plain");
    for (const auto& [arguments, words] : {
             Case{{"--storage", absent, "list"}, {"cannot load the storage layer " + absent + ": ", "No such file"}},
             Case{{"--storage", broken, "list"},
                  {"cannot load the storage layer " + broken + ": ", "invalid ELF header"}},
             Case{{"--storage", "libdl.so.2", "list"}, {"cannot load the storage layer libdl.so.2: ", "sqlite3_"}},
             Case{{"import", media, "--catalog", noLayer}, {noLayer}},
             Case{{"list", "--catalog", Named("none.db", "")}, {"none.db"}},
             Case{{"sql", Named("none.db", "#?mode=rwc"), "CREATE TABLE t (a)"}, {"none.db"}},
             Case{{"sql", Named("broken.so", "?mode=ro"), "CREATE TABLE u (a)"}, {"argument 1", "CREATE TABLE u"}},
         })
    {
        const HostOutcome outcome = Host(arguments);
        for (const std::string& word : words)
            EXPECT_TRUE(Fails(outcome, word));
        EXPECT_FALSE(std::filesystem::exists(Path("none.db"))) << arguments.at(1);
    }
}
