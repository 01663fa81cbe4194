// Imports that are killed, again and again, or interrupted, and disks that fill up. HALYON_KILLS says how often.
#include <tests/system/HostTest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

using namespace HalyonTest;

namespace
{
constexpr uid_t kNobody = 65534;
constexpr int kFiles = 1000;
constexpr int kBatch = 256; // files of one transaction, on a machine that reads them in time
constexpr auto kInTime = std::chrono::seconds(2);

// What happens in a folder: each step of the engine on a database or its journal is an event or two.
class FolderEvents
{
public:
    explicit FolderEvents(const std::filesystem::path& folder) : m_descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        inotify_add_watch(m_descriptor, folder.c_str(), IN_CREATE | IN_MODIFY | IN_DELETE);
    }
    ~FolderEvents() { close(m_descriptor); }
    FolderEvents(const FolderEvents&) = delete;
    FolderEvents& operator=(const FolderEvents&) = delete;

    // Waits until so many have come; false when the process has ended before.
    bool WaitFor(int count, const HostProcess& process)
    {
        constexpr int kLookMilliseconds = 10;
        while (m_seen < count)
        {
            const bool hasEnded = process.HasEnded();
            pollfd ready{m_descriptor, POLLIN, 0};
            if (poll(&ready, 1, kLookMilliseconds) == 1)
                ReadSome();
            else if (hasEnded)
                return false;
        }
        return true;
    }

private:
    void ReadSome()
    {
        alignas(inotify_event) char buffer[4096];
        const ssize_t size = read(m_descriptor, buffer, sizeof buffer);
        for (ssize_t at = 0; at < size; ++m_seen)
            at +=
                static_cast<ssize_t>(sizeof(inotify_event) + reinterpret_cast<const inotify_event*>(buffer + at)->len);
    }

    int m_descriptor;
    int m_seen = 0;
};

class KilledImportTest : public HalyonTest::HostTest
{
protected:
    void SetUp() override
    {
        const std::string make =
            "'" HALYON_SCRIPTS "/make-tree' '" + Tree().string() + "' " + std::to_string(kFiles) + " >/dev/null";
        ASSERT_EQ(std::system(make.c_str()), 0);
    }

    [[nodiscard]] std::filesystem::path Tree() const { return Path("trees") / "0"; }

    // Runs an import that is killed after `events`, and a little later; false when it has come to its end before.
    bool KillImport(int events, int microseconds) const
    {
        FolderEvents seen(Path(""));
        HostProcess process({"import", Tree().string(), "--catalog", Catalog()}, InZone({}));
        const bool isKilled = seen.WaitFor(events, process);
        const auto moment = std::chrono::steady_clock::now() + std::chrono::microseconds(microseconds);
        while (isKilled && std::chrono::steady_clock::now() < moment)
        {
        }
        process.Kill();
        const HostOutcome outcome = process.Finish();
        EXPECT_TRUE(outcome.status == 0 || outcome.status == 128 + SIGKILL) << outcome.err;
        return isKilled;
    }

    // What the catalogue says of the files, which does not depend on the order in which they came.
    [[nodiscard]] std::string Facts() const
    {
        return Query("SELECT path, kind, size, modified, taken, width, height, rating, problem FROM media"
                     " ORDER BY path");
    }

    // The number of files in it, if it is sound.
    [[nodiscard]] int SoundFiles() const
    {
        const std::string made = Query("SELECT count(*) FROM sqlite_master WHERE name IN ('file', 'folder', 'volume',"
                                       " 'media')");
        EXPECT_TRUE(made == "0\n" || made == "4\n") << "half of the tables: " << made;
        if (made != "4\n")
            return 0;
        const std::string state = Query("SELECT count(*), (SELECT group_concat(integrity_check) FROM"
                                        " pragma_integrity_check), (SELECT count(*) FROM pragma_foreign_key_check)"
                                        " FROM file");
        EXPECT_TRUE(state.ends_with(",ok,0\n")) << state;
        return std::stoi(state);
    }
};
} // namespace

TEST_F(KilledImportTest, LosesNothingAndTheNextOneRepairsAndGoesOn)
{
    const char* variable = std::getenv("HALYON_KILLS");
    const int kills = variable != nullptr ? static_cast<int>(std::strtol(variable, nullptr, 10)) : 4;
    constexpr unsigned kSeed = 20240229;
    std::mt19937 random(kSeed);
    ASSERT_EQ(Import(Tree()).status, 0);
    const std::string facts = Facts();
    std::filesystem::remove(Catalog());

    int killed = 0;
    int completed = 0;
    int repaired = 0;
    int before = 0;
    for (bool isInTime = true; killed < kills && !HasFailure();)
    {
        const auto start = std::chrono::steady_clock::now();
        const bool isKilled = KillImport(1 + static_cast<int>(random() % 60), static_cast<int>(random() % 2000));
        isInTime = isInTime && std::chrono::steady_clock::now() - start < kInTime;
        killed += isKilled ? 1 : 0;
        repaired +=
            std::filesystem::exists(Catalog() + "-journal") || std::filesystem::exists(Catalog() + "-wal") ? 1 : 0;
        // Now and then the next import finds the catalogue as it was left.
        if (isKilled && random() % 3 == 0)
            continue;
        const int files = std::filesystem::exists(Catalog()) ? SoundFiles() : 0;
        EXPECT_GE(files, before) << "lost, seed " << kSeed << ", kill " << killed;
        EXPECT_TRUE(!isInTime || files == kFiles || files % kBatch == 0) << files << ": half a transaction";
        before = files;
        if (files < kFiles && isKilled)
            continue;
        const HostOutcome last = Import(Tree());
        EXPECT_EQ(last.status, 0) << last.err;
        EXPECT_EQ(last.err, "") << "without a question";
        EXPECT_EQ(Facts(), facts);
        std::filesystem::remove(Catalog());
        before = 0;
        isInTime = true;
        // Every other catalogue keeps a write-ahead log.
        if (++completed % 2 != 0)
        {
            EXPECT_EQ(Host({"sql", "--create", Catalog(), "PRAGMA journal_mode = WAL"}).status, 0);
        }
    }
    const HostOutcome last = Import(Tree());
    EXPECT_EQ(last.status, 0) << last.err;
    EXPECT_EQ(Facts(), facts);
    std::printf("%d kills (seed %u), %d times a journal was left, %d imports completed\n", killed, kSeed, repaired,
                completed + 1);
}

TEST_F(KilledImportTest, WhoMayOnlyReadIsToldWhatHasToBeRepaired)
{
    if (!HalyonTest::CanRunAsSomebodyElse())
        GTEST_SKIP() << "root alone can be somebody else, and only where others reach the program";
    constexpr int kHot = 0xd9; // a journal that was synced begins so
    for (int events = 10, first = 0; first != kHot; events = events % 40 + 1)
    {
        std::filesystem::remove(Catalog());
        std::filesystem::remove(Catalog() + "-journal");
        KillImport(events, 0);
        first = std::ifstream(Catalog() + "-journal").get();
    }
    using std::filesystem::perms;
    std::filesystem::permissions(Path(""), perms::owner_all | perms::others_exec | perms::others_read);
    const HostOutcome outcome = List({}, {.user = kNobody});
    EXPECT_TRUE(Fails(outcome, "cannot open the catalogue " + Catalog()));
    EXPECT_TRUE(Fails(outcome, "killed left in " + Catalog() + "-journal"));
    EXPECT_NE(List({}).status, -1);
    EXPECT_EQ(List({}, {.user = kNobody}).err.find("killed"), std::string::npos) << "repaired by one who may";
}

// Wherever it fills up: the import says so and ends, and with room the next one goes on.
TEST_F(KilledImportTest, AFullDiskEndsItWithAReasonAndNothingIsLost)
{
    std::string facts;
    for (const unsigned long most : {600ul, 6000ul, 60000ul})
    {
        const HostOutcome full = Import(Tree(), {.mostFileBytes = most});
        EXPECT_TRUE(Fails(full, "hynhost: cannot ") && Fails(full, Catalog())) << most << full.err;
        const int files = SoundFiles();
        EXPECT_LT(files, kFiles) << most;
        const HostOutcome outcome = Import(Tree());
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_TRUE(Shows(outcome.out, std::to_string(kFiles - files) + " new, 0 changed, " + std::to_string(files) +
                                           " unchanged, 0 gone"));
        facts = facts.empty() ? Facts() : facts;
        EXPECT_EQ(Facts(), facts) << most;
        std::filesystem::remove(Catalog());
    }
}

using InterruptedImportTest = KilledImportTest;

TEST_F(InterruptedImportTest, LeavesAWholeCatalogueAndCompletesLater)
{
    // Making links takes a small part of the time that making files does.
    using std::filesystem::copy_options;
    for (int copy = 1; copy < 20; ++copy)
        std::filesystem::copy(Tree(), Path("trees") / std::to_string(copy),
                              copy_options::recursive | copy_options::create_hard_links);
    HostProcess process({"import", Path("trees").string(), "--catalog", Catalog()}, InZone({.terminalColumns = 80}));
    ASSERT_TRUE(process.WaitFor(" of 20000") && process.WaitFor(" left")) << "the bar: count, rate and time left";
    process.Type("\x03");
    const HostOutcome interrupted = process.Finish();
    EXPECT_EQ(interrupted.status, 130);
    EXPECT_TRUE(Shows(interrupted.out, "interrupted after "));

    EXPECT_EQ(Query("PRAGMA integrity_check"), "ok\n");
    const int stored = std::stoi(Query("SELECT count(*) FROM media"));
    EXPECT_LT(stored, 20000);
    EXPECT_TRUE(Shows(interrupted.out, "interrupted after " + std::to_string(stored) + " of 20000 files"));

    const HostOutcome rest = Import(Path("trees"));
    EXPECT_TRUE(Shows(rest.out, std::to_string(20000 - stored) + " new, 0 changed, " + std::to_string(stored) +
                                    " unchanged, 0 gone"));
    EXPECT_EQ(rest.err.find_first_of("\r\x1b"), std::string::npos) << "no bar on a pipe: " << rest.err;
    EXPECT_EQ(Query("SELECT count(*), count(DISTINCT taken), min(rating), max(rating), min(width), max(width)"
                    " FROM media"),
              "20000,1000,1,5,48,96\n");
    EXPECT_TRUE(Shows(Import(Path("trees")).out, "0 new, 0 changed, 20000 unchanged, 0 gone"));
}
