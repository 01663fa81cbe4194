// `hynhost import` and the places of folders: what may not be searched, and disks that come back elsewhere.
#include <tests/system/HostTest.h>

#include <cstdlib>

using namespace HalyonTest;

namespace
{
namespace fs = std::filesystem;

const std::vector<std::string> kSamples = {"2024-12 Merzouga/dunes.jpg", "2024-05 Alps/burst-1.jpg",
                                           "Old album/no date.jpg"};

class VolumeTest : public HalyonTest::HostTest
{
protected:
    // Runs a shell command in the test's folder.
    [[nodiscard]] bool Run(const std::string& command) const
    {
        return std::system(("cd '" + Path("").string() + "' && exec >command.log 2>&1 && " + command).c_str()) == 0;
    }

    void Change(const std::string& sql) const { EXPECT_EQ(Host({"sql", Catalog(), sql}).status, 0); }
};

// A disk image with a file system, mounted here and there.
class DiskTest : public VolumeTest
{
protected:
    void SetUp() override
    {
        const auto media = CopySamples(kSamples);
        ASSERT_TRUE(Run("mkdir here there && truncate -s 8M disk"));
        if (!Run("mkfs.ext4 -q disk && mount disk here"))
            GTEST_SKIP() << "this machine lets nobody mount a disk here";
        m_mounted = "here";
        ASSERT_TRUE(Run("cp -a '" + media.string() + "/.' here"));
    }

    void TearDown() override
    {
        if (!m_mounted.empty())
            MoveTo("");
    }

    void MoveTo(const std::string& place)
    {
        EXPECT_TRUE(Run("umount " + m_mounted));
        EXPECT_TRUE(place.empty() || Run("mount disk " + place));
        m_mounted = place;
    }

private:
    std::string m_mounted;
};
} // namespace

TEST_F(VolumeTest, FoldersThatMayNotBeSearchedAreRefusedInPlainWords)
{
    fs::create_directories(Path("data/sub"));
    const HalyonTest::HostOptions options{.environment = {{"XDG_DATA_HOME", Path("data").string()}}};
    const std::pair<std::string, std::string> cases[] = {
        {"/usr/share", "it belongs to the system"},
        {"/var/tmp", "it belongs to the system"},
        {"/home", "it is or holds the home of another user; yours is " + Path("").parent_path().string()},
        {"/proc", "the volume at /proc is no disk"},
        {"/dev/shm", "the volume at /dev"}, // of which it may or may not be a volume of its own
        {Path("data/sub").string(), "programs keep their own data there"},
        {"//server/share", "it is on the network"},
        {Path("none").string(), "No such file or directory"},
    };
    for (const auto& [folder, reason] : cases)
    {
        std::string message = "cannot import the folder ";
        EXPECT_TRUE(Fails(Import(folder, options), message.append(folder).append(": ").append(reason)));
    }
    EXPECT_FALSE(fs::exists(Catalog()));

    // Below a folder that may be, they are passed over.
    fs::copy_file(fs::path(HALYON_SAMPLES) / kSamples[0], Path("data/sub/thumbnail.jpg"));
    fs::copy_file(fs::path(HALYON_SAMPLES) / kSamples[0], Path("picture.jpg"));
    const HostOutcome outcome = Import(Path(""), options);
    EXPECT_TRUE(Shows(outcome.out, "1 new"));
    EXPECT_TRUE(Shows(outcome.err, Path("data/").string() + ": passed over: programs keep their own data there"));
}

TEST_F(DiskTest, IsKnownAgainUnderAnotherMountPoint)
{
    ASSERT_TRUE(Shows(Import(Path("here")).out, "3 new"));
    ASSERT_TRUE(Shows(Import(Path("media")).out, "3 new"));
    if (Query("SELECT count(identity) FROM volume WHERE mount <> ''") == "0\n")
        GTEST_SKIP() << "this machine tells no UUIDs of disks";

    MoveTo("there");
    const HostOutcome moved = List({});
    EXPECT_TRUE(Shows(moved.out, Path("there/Old album/no date.jpg").string() + "\n")) << "before any import";
    EXPECT_FALSE(Shows(moved.out, Path("here").string()));
    fs::remove(Path("there/Old album/no date.jpg"));
    EXPECT_TRUE(Shows(Import(Path("there")).out, "0 new, 0 changed, 2 unchanged, 1 gone"));
    EXPECT_EQ(Query("SELECT count(*), sum(folder LIKE '%/there/%') FROM media"), "5,2\n");

    MoveTo("");
    EXPECT_TRUE(Shows(List({}).out, "2 of these files are on a disk that is not here now"));
    EXPECT_TRUE(Shows(Import(Path("there")).out, "0 new, 0 changed, 0 unchanged, 0 gone"));
    EXPECT_EQ(Query("SELECT count(*) FROM media"), "5\n") << "a disk that is away has lost nothing";
}

TEST_F(DiskTest, IsTheSameFromAboveItsMountPoint)
{
    ASSERT_TRUE(Shows(Import(Path("")).out, "6 new"));
    EXPECT_TRUE(Shows(Import(Path("here")).out, "0 new, 0 changed, 3 unchanged, 0 gone"));
    EXPECT_EQ(Host({"trash", Path("here/Old album/no date.jpg").string()}).status, 0);
    EXPECT_TRUE(Shows(Import(Path("")).out, "0 new, 0 changed, 5 unchanged, 1 gone")) << "its trash is not searched";
    EXPECT_EQ(Query("SELECT volume.mount = '" + Path("here").string() +
                    "', count(*) FROM media"
                    " JOIN volume ON volume.id = volume GROUP BY volume ORDER BY 1"),
              "0,3\n1,2\n");
}

namespace
{
// Brings a catalogue back to how version 2 kept it, and to how version 1 did.
constexpr const char* kToVersion2 =
    "DROP VIEW media; DROP TRIGGER file_gone; DROP TABLE thumbnail; ALTER TABLE file DROP COLUMN given;"
    "CREATE VIEW media AS SELECT file.id AS id, mount || folder.path || file.name AS path,"
    " CASE mount || folder.path WHEN '/' THEN '/' ELSE rtrim(mount || folder.path, '/') END AS folder,"
    " file.name AS name, kind, size, mtime_ns / 1e9 - 978307200.0 AS modified, taken, width, height, rating, problem,"
    " volume FROM file JOIN folder ON folder.id = file.folder JOIN volume ON volume.id = folder.volume"
    " WHERE kind IS NOT NULL;"
    "PRAGMA user_version = 2;";
constexpr const char* kFrom2ToVersion1 =
    "DROP VIEW media; CREATE TABLE folder_1 (id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE);"
    "INSERT INTO folder_1 SELECT folder.id, mount || path FROM folder JOIN volume ON volume.id = volume;"
    "DROP TABLE folder; ALTER TABLE folder_1 RENAME TO folder; DROP TABLE volume;"
    "CREATE VIEW media AS SELECT file.id AS id, folder.path || file.name AS path,"
    " CASE folder.path WHEN '/' THEN '/' ELSE rtrim(folder.path, '/') END AS folder, file.name AS name, kind, size,"
    " mtime_ns / 1e9 - 978307200.0 AS modified, taken, width, height, rating, problem"
    " FROM file JOIN folder ON folder.id = file.folder WHERE kind IS NOT NULL;"
    "PRAGMA user_version = 1";
} // namespace

TEST_F(VolumeTest, ACatalogueOfAnEarlierVersionIsTakenOverAndALaterOneRefused)
{
    const auto media = CopySamples(kSamples);
    ASSERT_TRUE(Shows(Import(media).out, "3 new"));
    const std::string listed = List({}).out;
    for (const std::string& back : {std::string(kToVersion2), std::string(kToVersion2) + kFrom2ToVersion1})
    {
        Change(back);
        EXPECT_EQ(List({}).out, listed);
        EXPECT_TRUE(Shows(Import(media).out, "0 new, 0 changed, 3 unchanged, 0 gone"));
        EXPECT_EQ(Query("PRAGMA integrity_check; PRAGMA user_version; PRAGMA foreign_key_check"),
                  "ok\n\nuser_version\n3\n\ntable,rowid,parent,fkid\n");
    }

    Change("PRAGMA user_version = 4");
    EXPECT_TRUE(Fails(Import(media), "it is of version 4, this program knows 3"));
}

TEST_F(DiskTest, TakesWhatVersion1HeldBelowItsMountPoint)
{
    ASSERT_TRUE(Shows(Import(Path("")).out, "6 new"));
    Change(std::string(kToVersion2) + kFrom2ToVersion1);
    EXPECT_TRUE(Shows(Import(Path("here")).out, "0 new, 0 changed, 3 unchanged, 0 gone"));
    EXPECT_EQ(Query("SELECT volume, count(*) FROM media GROUP BY volume"), "1,3\n2,3\n");
}
