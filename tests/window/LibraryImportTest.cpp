// Imports as a window runs them: cancelled, broken off, and beside another program that holds the catalogue.

#include <filesystem>

#include <host/Database.h>
#include <tests/window/LibraryFixture.h>

namespace HalyonTest
{
using namespace HynHost;
namespace fs = std::filesystem;

namespace
{
class LibraryImportTest : public LibraryFixture
{
protected:
    // So many files, enough for an import to be caught at work.
    static constexpr int kMany = 800;

    LibraryImportTest() : m_media(CopySamples({"2024-12 Merzouga/dunes.jpg"}))
    {
        for (int i = 1; i < kMany; ++i)
            fs::create_hard_link(m_media / "2024-12 Merzouga/dunes.jpg", m_media / (std::to_string(i) + ".jpg"));
    }

    [[nodiscard]] std::uint64_t Held() const { return std::stoull(Query("SELECT count(*) FROM media")); }

    // Begins an import and returns as soon as some files have been looked at.
    void BeginImport()
    {
        m_told.progress.clear();
        m_library->StartImport(m_media.string());
        Until("begun", [this] { return !m_told.progress.empty() && m_told.progress.back().done != 0; });
    }

    fs::path m_media;
};
} // namespace

TEST_F(LibraryImportTest, CancelKeepsWhatWasReadAndTheNextImportGoesOn)
{
    OpenLibrary();
    BeginImport();
    m_library->StartImport(m_media.string());
    m_library->CancelImport();
    Until("ended", [this] { return !m_told.ended.empty(); });
    const ImportReport report = m_told.ended.front();
    EXPECT_TRUE(report.interrupted);
    EXPECT_FALSE(m_library->IsImporting());
    EXPECT_TRUE(Shows(m_told.refused.at(0), "another import is running"));
    EXPECT_GE(report.done, m_told.progress.back().done);
    EXPECT_LT(report.done, std::uint64_t{kMany});
    EXPECT_EQ(Held(), report.done);

    const ImportReport rest = RunImport(m_media);
    EXPECT_EQ(rest.unchanged, report.added);
    EXPECT_EQ(rest.added, kMany - report.added);
    EXPECT_EQ(m_told.index->Items().size(), std::size_t{kMany});
    EXPECT_EQ(Query("SELECT count(*) FROM thumbnail WHERE image IS NOT NULL"), std::to_string(kMany) + "\n");
    EXPECT_EQ(m_told.progress.back().total, std::uint64_t{kMany});
}

TEST_F(LibraryImportTest, ALibraryThatGoesWhileImportingLeavesAWholeCatalogue)
{
    OpenLibrary();
    BeginImport();
    CloseLibrary();
    EXPECT_LT(Held(), std::uint64_t{kMany});
    EXPECT_EQ(Query("PRAGMA integrity_check"), "ok\n");
    OpenLibrary();
    RunImport(m_media);
    EXPECT_EQ(Held(), std::uint64_t{kMany});
}

// What has to wait for the lock is waited for while the test holds it, so that it would never end.
TEST_F(LibraryImportTest, NothingWaitsForACatalogueThatAnotherProgramHolds)
{
    OpenLibrary();
    BeginImport();
    {
        Database other(Catalog());
        const Transaction lock(other);
        m_library->CancelImport();
        Until("ended", [this] { return !m_told.ended.empty(); });
        EXPECT_TRUE(m_told.ended.front().interrupted);
        EXPECT_EQ(m_told.endFailures.front(), "");
        m_library->Search({"dunes"});
        m_library->Rate({1}, 5);
        m_library->MoveToTrash({1});
        m_library->WantThumbnails({1});
        m_library->WantDetails(1);
        m_library->StartImport(m_media.string());
        m_library->CancelImport();
        Until("ended again", [this] { return m_told.ended.size() == 2; });
    }
    const auto read = m_told.progress.back().done;
    Until("done after all", [this] { return m_told.trashed.size() == 1; });
    EXPECT_GE(Held() + 1, read) << "what was read before the first cancel";

    Database other(Catalog());
    const Transaction lock(other);
    m_library->Rate({2}, 5);
    m_library->UndoTrash();
    m_library->StartImport(m_media.string());
    CloseLibrary();
}

TEST_F(LibraryImportTest, AFolderThatMayNotBeImportedIsRefusedWithTheReason)
{
    OpenLibrary();
    const char* const cases[][2] = {
        {"/usr", "it belongs to the system"},
        {"/nowhere", "No such file or directory"},
        {"/proc", "it is no disk"},
    };
    for (const auto& [folder, reason] : cases)
    {
        m_told.refused.clear();
        m_library->StartImport(folder);
        Until("refused", [this] { return !m_told.refused.empty(); });
        EXPECT_TRUE(Shows(m_told.refused.front(), std::string("cannot import the folder ") + folder));
        EXPECT_FALSE(m_library->IsImporting());
    }
    EXPECT_FALSE(fs::exists(Catalog())) << "nothing was begun";
}
} // namespace HalyonTest
