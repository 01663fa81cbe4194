// Waiting for a database that others have locked.

#include "tests/database/DatabaseTest.h"

using namespace HalyonTest;

namespace
{
constexpr std::uint64_t kStepSleep = 10'000;
constexpr std::uint64_t kPrepareSleep = 2000;

class Busy : public ConnectedTest
{
protected:
    Busy()
    {
        EXPECT_EQ(Run(u"CREATE TABLE t (x)"), HYN_S_OK);
        EXPECT_EQ(Run(u"INSERT INTO t VALUES (7)"), HYN_S_OK);
    }
    void Lock() const { ASSERT_EQ(m_other.Run("BEGIN EXCLUSIVE"), SQLITE_OK); }
    void Unlock() const { ASSERT_EQ(m_other.Run("COMMIT"), SQLITE_OK); }

    const Raw m_other{Path()};
};

TEST_F(Busy, StepTriesTenThousandTimesAndSleepsAfterEach)
{
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"SELECT x FROM t");
    const struct
    {
        int freeAt;
        int sleeps;
        HynResult expected;
    } cases[] = {
        {1, 1, HYN_S_OK},
        {9999, 9999, HYN_S_OK},
        {10000, 10000, HYN_E_FAIL}, // free, but nobody looks any more
        {-1, 10000, HYN_E_FAIL},
    };
    for (const auto& test : cases)
    {
        Lock();
        const CountedSleep sleep(kStepSleep, test.freeAt, [&] { Unlock(); });
        CHynAutoPtr<IHynSQRecordSet> recordSet;
        EXPECT_EQ(command->OpenRecordSet(recordSet.Receive()), test.expected);
        EXPECT_EQ(CountedSleep::Count(), test.sleeps);
        EXPECT_TRUE(recordSet == nullptr || Read<int>(recordSet, u"x") == 7);
    }
    Unlock();
    EXPECT_EQ(command->ExecuteSQL(), HYN_S_OK) << "none the worse for having given up";
}

TEST_F(Busy, AWaitingStepStandsAtTheEnd)
{
    const CHynAutoPtr<CHynSQRecordSet> recordSet = Open(u"SELECT x FROM t");
    EXPECT_EQ(recordSet->Next(), HYN_S_FALSE);
    Lock();
    {
        const CountedSleep sleep(kStepSleep, 3, [&] { EXPECT_EQ(recordSet->IsEof(), 1); });
        EXPECT_EQ(recordSet->Reset(), HYN_E_FAIL);
        EXPECT_EQ(recordSet->IsEof(), 1);
    }
    Unlock();
    EXPECT_EQ(recordSet->Reset(), HYN_E_FAIL) << "the engine reports the busy step once more";
    EXPECT_EQ(recordSet->Reset(), HYN_S_OK);
}

TEST_F(Busy, PreparationWaitsWithoutLimit)
{
    // A new handle has yet to read the tables' definitions, for which it needs the lock.
    EXPECT_EQ(m_connection->DisConnect(), HYN_S_OK);
    Lock();
    const CountedSleep sleep(kPrepareSleep, 12345, [&] { Unlock(); });
    EXPECT_EQ(Prepare(u"SELECT x FROM t")->ExecuteSQL(), HYN_S_OK);
    EXPECT_EQ(CountedSleep::Count(), 12345);
}

TEST_F(Busy, BeginTransWaitsForAReader)
{
    sqlite3_stmt* reader = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(m_other, "SELECT x FROM t", -1, &reader, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_step(reader), SQLITE_ROW);
    const CountedSleep sleep(kStepSleep, 5, [&] { sqlite3_finalize(reader); });
    EXPECT_EQ(m_connection->BeginTrans(), HYN_S_OK);
    EXPECT_EQ(CountedSleep::Count(), 5);
    EXPECT_EQ(m_connection->RollbackTrans(), HYN_S_OK);
}

// A write that gives rows has done all of it by its first row, and is kept or refused when it ends.
TEST_F(Busy, AWriteWithRowsThatCannotBeKeptLeavesNothing)
{
    ASSERT_EQ(Run(u"CREATE TABLE p (id INTEGER PRIMARY KEY)"), HYN_S_OK);
    ASSERT_EQ(Run(u"CREATE TABLE c (p REFERENCES p DEFERRABLE INITIALLY DEFERRED)"), HYN_S_OK);
    ASSERT_EQ(Run(u"PRAGMA foreign_keys = ON"), HYN_S_OK);
    EXPECT_EQ(Run(u"INSERT INTO c VALUES (1) RETURNING p"), HYN_E_SQSTEP) << "there is no such parent";
    ASSERT_EQ(m_other.Run("BEGIN; SELECT x FROM t"), SQLITE_OK);
    const CountedSleep sleep(0);
    EXPECT_EQ(Run(u"INSERT INTO c VALUES (NULL) RETURNING p"), HYN_E_FAIL) << "somebody reads";
    ASSERT_EQ(m_other.Run("COMMIT"), SQLITE_OK);
    EXPECT_EQ(Read<int>(Open(u"SELECT count(*) AS n FROM c"), u"n"), 0);
}

// What plain statements say of a table that is locked inside the process: a failed step.
TEST_F(Busy, ATableInUseByTheSameHandleIsAFailedStep)
{
    const CountedSleep sleep(0);
    const CHynAutoPtr<CHynSQRecordSet> reader = Open(u"SELECT x FROM t");
    EXPECT_EQ(Run(u"DROP TABLE t"), HYN_E_SQSTEP);
    EXPECT_EQ(CountedSleep::Count(), 0);
}

TEST_F(Busy, ATableInUseInASharedCacheIsAFailedStepOrPreparation)
{
    if (sqlite3_compileoption_used("USE_URI") == 0)
        GTEST_SKIP() << "this engine takes no file: names";
    const CHynAutoPtr<CHynSQConnection> shared = new CHynSQConnection;
    const char16_t path[] = u"file:busy?mode=memory&cache=shared";
    ASSERT_EQ(shared->Connect(path, u"", u""), HYN_S_OK);
    ASSERT_EQ(shared->ExecuteSQL(u"CREATE TABLE t (x)"), HYN_S_OK);
    const Raw other(path);
    const CountedSleep sleep(0);
    ASSERT_EQ(other.Run("BEGIN; INSERT INTO t VALUES (1)"), SQLITE_OK);
    EXPECT_EQ(shared->ExecuteSQL(u"SELECT x FROM t"), HYN_E_SQSTEP);
    ASSERT_EQ(other.Run("CREATE TABLE u (y)"), SQLITE_OK);
    EXPECT_EQ(shared->ExecuteSQL(u"SELECT x FROM t"), HYN_E_FAIL);
    EXPECT_EQ(CountedSleep::Count(), 0);
    ASSERT_EQ(other.Run("COMMIT"), SQLITE_OK);
    EXPECT_EQ(shared->ExecuteSQL(u"SELECT x FROM t"), HYN_S_OK);
}
} // namespace
