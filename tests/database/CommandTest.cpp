// Preparing, binding and executing.

#include <climits>

#include "tests/database/DatabaseTest.h"

using namespace HalyonTest;

namespace
{
class Command : public ConnectedTest
{
protected:
    std::u16string m_text = u"text";
    unsigned char m_blob[3] = {9, 0, 8};
    FILETIME m_moment{};

    // One value of each type, bound at `index`.
    void BindEach(IHynSQCommand* command, int index, HynResult expected)
    {
        EXPECT_EQ(command->BindFieldValue(index, std::int32_t{1}), expected) << index;
        EXPECT_EQ(command->BindFieldValue(index, std::uint32_t{1}), expected) << index;
        EXPECT_EQ(command->BindFieldValue(index, 1LL), expected) << index;
        EXPECT_EQ(command->BindFieldValue(index, 1.0), expected) << index;
        EXPECT_EQ(command->BindFieldValue(index, m_text.c_str()), expected) << index;
        EXPECT_EQ(command->BindFieldValue(index, &m_moment), expected) << index;
        EXPECT_EQ(command->BindFieldValue(index, m_blob, 3), expected) << index;
    }
};

TEST_F(Command, BindsOnlyParametersThatThereAre)
{
    CHynAutoPtr<IHynSQCommand> unprepared;
    ASSERT_EQ(m_connection->CreateCommand(unprepared.Receive()), HYN_S_OK);
    BindEach(unprepared, 0, HYN_E_FAIL);
    EXPECT_EQ(unprepared->ExecuteSQL(), HYN_E_FAIL);

    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"SELECT ?, ?, ?");
    for (const int index : {0, 2})
        BindEach(command, index, HYN_S_OK);
    for (const int index : {-1, 3, INT_MAX, INT_MIN})
        BindEach(command, index, HYN_E_FAIL);

    int index = -1;
    EXPECT_FALSE(command->CheckAdjustBindFieldIndex(index));
    EXPECT_EQ(index, -1);
    index = 2;
    EXPECT_TRUE(command->CheckAdjustBindFieldIndex(index));
    EXPECT_EQ(index, 3);
    EXPECT_FALSE(command->CheckAdjustBindFieldIndex(index));
    EXPECT_EQ(index, 4);
}

TEST_F(Command, WorksOnlyWithAConnection)
{
    CHynAutoPtr<CHynSQCommand> command = new CHynSQCommand(nullptr);
    EXPECT_EQ(command->PrepareSQL(u"SELECT 1"), HYN_E_FAIL);
    EXPECT_EQ(command->Close(), SQLITE_OK);
    CHynAutoPtr<CHynSQRecordSet> recordSet = new CHynSQRecordSet(nullptr);
    EXPECT_EQ(recordSet->Next(), HYN_E_FAIL);
    EXPECT_EQ(recordSet->GetFieldIndexByName(u"x"), -1);
    EXPECT_EQ(recordSet->GetFieldCount(), 0);
}

TEST_F(Command, RefusesValuesThatAreNotThereButAMoment)
{
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"SELECT typeof(?1) = 'real' AND ?1 = 0");
    EXPECT_EQ(command->BindFieldValue(0, static_cast<FILETIME*>(nullptr)), HYN_S_OK);
    EXPECT_EQ(command->BindFieldValue(0, static_cast<const char16_t*>(nullptr)), HYN_E_FAIL);
    EXPECT_EQ(command->BindFieldValue(0, nullptr, 3), HYN_E_FAIL);
    EXPECT_EQ(command->BindFieldValue(0, m_blob, 0), HYN_E_FAIL);
    EXPECT_EQ(command->BindFieldValue(0, m_blob, 0x80000000u), HYN_E_FAIL);
    EXPECT_EQ(Read<int>(Open(command), 0), 1);
}

TEST_F(Command, RefusesWhatIsTooLongForTheEngine)
{
    sqlite3_limit(m_connection->GetSQdb(), SQLITE_LIMIT_LENGTH, 1000);
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"SELECT ?");
    std::string blob(1001, 'b');
    EXPECT_EQ(command->BindFieldValue(0, std::u16string(500, u'x').c_str()), HYN_S_OK);
    EXPECT_EQ(command->BindFieldValue(0, std::u16string(501, u'x').c_str()), HYN_E_FAIL);
    EXPECT_EQ(command->BindFieldValue(0, blob.data(), 1000), HYN_S_OK);
    EXPECT_EQ(command->BindFieldValue(0, blob.data(), 1001), HYN_E_FAIL);
}

TEST_F(Command, ReadsTheCallersBuffersWhenItRuns)
{
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"SELECT ? || hex(?)");
    command->BindFieldValue(0, m_text.c_str());
    command->BindFieldValue(1, m_blob, sizeof m_blob);
    m_text[0] = u'n';
    m_blob[0] = 0xFF;
    char16_t text[16];
    std::uint32_t room = 16;
    EXPECT_EQ(Open(command)->GetFieldValue(0, text, &room), HYN_S_OK);
    EXPECT_EQ(U8(text), "nextFF0008");
}

TEST_F(Command, RunsAgainWithItsBindings)
{
    ASSERT_EQ(Run(u"CREATE TABLE t (a, b)"), HYN_S_OK);
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"INSERT INTO t VALUES (?, ?)");
    EXPECT_EQ(command->BindFieldValue(0, 1), HYN_S_OK);
    EXPECT_EQ(command->BindFieldValue(1, 2), HYN_S_OK);
    EXPECT_EQ(command->ExecuteSQL(), HYN_S_OK);
    EXPECT_EQ(command->BindFieldValue(1, 3), HYN_S_OK);
    EXPECT_EQ(command->ExecuteSQL(), HYN_S_OK);
    EXPECT_EQ(Raw(Path()).Ask("SELECT a, b FROM t ORDER BY b"), "1 2 1 3 ");
}

TEST_F(Command, ExecutesToTheFirstRowOnly)
{
    int calls = 0;
    sqlite3_create_function(
        m_connection->GetSQdb(), "tick", 0, SQLITE_UTF8, &calls,
        [](sqlite3_context* context, int, sqlite3_value**)
        { sqlite3_result_int(context, ++*static_cast<int*>(sqlite3_user_data(context))); },
        nullptr, nullptr);
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"SELECT tick() FROM (VALUES (1), (2), (3))");
    EXPECT_EQ(command->ExecuteSQL(), HYN_S_OK);
    EXPECT_EQ(calls, 1);
}

TEST_F(Command, TakesNoBindingWhileARecordSetStandsOnARow)
{
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"SELECT ?");
    CHynAutoPtr<CHynSQRecordSet> recordSet = Open(command);
    BindEach(command, 0, HYN_E_FAIL);
    recordSet = nullptr;
    BindEach(command, 0, HYN_S_OK);
}

TEST_F(Command, PreparesTheFirstStatementAndKeepsItUntilAnotherTextIsTried)
{
    ASSERT_EQ(Run(u"CREATE TABLE t (x)"), HYN_S_OK);
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"INSERT INTO t VALUES (1); INSERT INTO t VALUES (2)");
    EXPECT_EQ(command->ExecuteSQL(), HYN_S_OK);
    EXPECT_EQ(command->PrepareSQL(nullptr), HYN_E_FAIL);
    EXPECT_EQ(command->ExecuteSQL(), HYN_S_OK) << "the statement is still there";
    EXPECT_EQ(command->PrepareSQL(u"INSERT INTO"), HYN_E_FAIL);
    EXPECT_EQ(command->GetSQstmt(), nullptr);
    EXPECT_EQ(command->ExecuteSQL(), HYN_E_FAIL);
    IHynSQRecordSet* recordSet = nullptr;
    EXPECT_EQ(command->OpenRecordSet(&recordSet), HYN_E_FAIL);
    EXPECT_EQ(command->OpenRecordSet(nullptr), HYN_E_FAIL);
    EXPECT_EQ(Number(u"SELECT sum(x) FROM t"), 2);
}

TEST_F(Command, ReportsAFailedStepAtOnce)
{
    for (const char16_t* sql : {u"CREATE TABLE t (x UNIQUE)", u"INSERT INTO t VALUES (1)",
                                u"CREATE TRIGGER r BEFORE DELETE ON t BEGIN SELECT RAISE(ABORT, 'no'); END"})
        ASSERT_EQ(Run(sql), HYN_S_OK);
    const CHynAutoPtr<CHynSQCommand> stale = Prepare(u"SELECT x FROM t");
    ASSERT_EQ(Run(u"CREATE TABLE u (y)"), HYN_S_OK);
    const CountedSleep sleep(0);
    const CHynAutoPtr<CHynSQCommand> commands[] = {Prepare(u"INSERT INTO t VALUES (1)"), Prepare(u"DELETE FROM t"),
                                                   Prepare(u"SELECT abs(-9223372036854775808)"), stale};
    for (const CHynAutoPtr<CHynSQCommand>& command : commands)
    {
        EXPECT_EQ(command->ExecuteSQL(), HYN_E_SQSTEP);
        IHynSQRecordSet* recordSet = nullptr;
        EXPECT_EQ(command->OpenRecordSet(&recordSet), HYN_E_SQSTEP);
        EXPECT_EQ(recordSet, nullptr);
    }
    EXPECT_EQ(CountedSleep::Count(), 0);
    EXPECT_EQ(stale->PrepareSQL(u"SELECT x FROM t"), HYN_S_OK);
    EXPECT_EQ(stale->ExecuteSQL(), HYN_S_OK);
}

TEST_F(Command, CloseHandsOutTheEnginesOwnCode)
{
    ASSERT_EQ(Run(u"CREATE TABLE t (x NOT NULL)"), HYN_S_OK);
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"INSERT INTO t VALUES (NULL)");
    CHynSQRecordSet recordSet(command);
    recordSet.AddRef();
    EXPECT_EQ(recordSet.Next(), HYN_E_SQSTEP);
    EXPECT_EQ(command->Close(), SQLITE_CONSTRAINT);
    EXPECT_EQ(command->Close(), SQLITE_OK);
    EXPECT_EQ(recordSet.Next(), HYN_E_FAIL);
}
} // namespace
