// Connecting, handles per thread, transactions and one-shot statements.

#include <algorithm>
#include <barrier>
#include <set>
#include <thread>
#include <vector>

#include "tests/database/DatabaseTest.h"
#include "tests/support/InChild.h"
#include "tests/support/Threads.h"

using namespace HalyonTest;

namespace
{
// How many of this process's descriptors are open on `path`.
long Descriptors(const std::u16string& path)
{
    long count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
    {
        std::error_code gone;
        count += std::filesystem::read_symlink(entry, gone).u16string() == path ? 1 : 0;
    }
    return count;
}

using Connection = DatabaseTest;
using ConnectedConnection = ConnectedTest;

TEST_F(Connection, SecondConnectSucceedsWhenAnyStringMatches)
{
    const std::u16string path = Path("Ärger.db");
    ASSERT_EQ(m_connection->Connect(path.c_str(), u"abc", u"Δ"), HYN_S_OK);
    ASSERT_EQ(Run(u"CREATE TABLE t (x)"), HYN_S_OK);
    const std::u16string otherCase = Path("ÄRGER.DB");
    const std::u16string other = Path("other.db");
    const struct
    {
        const char16_t* path;
        const char16_t* second;
        const char16_t* third;
        HynResult expected;
    } cases[] = {
        {path.c_str(), u"abc", u"Δ", HYN_S_OK},      {otherCase.c_str(), u"x", u"y", HYN_S_OK},
        {other.c_str(), u"ABC", u"y", HYN_S_OK},     {other.c_str(), u"x", u"δ", HYN_S_OK},
        {other.c_str(), u"x", u"y", HYN_E_FAIL},     {other.c_str(), u"", u"", HYN_E_FAIL},
        {nullptr, u"abc", u"Δ", HYN_E_FAIL},         {path.c_str(), nullptr, u"Δ", HYN_E_FAIL},
        {path.c_str(), u"abc", nullptr, HYN_E_FAIL},
    };
    for (const auto& test : cases)
    {
        EXPECT_EQ(m_connection->Connect(test.path, test.second, test.third), test.expected)
            << U8(test.path) << " " << U8(test.second) << " " << U8(test.third);
        EXPECT_EQ(Number(u"SELECT count(*) FROM t"), 0) << "not the first database any more";
    }
    EXPECT_EQ(Descriptors(path), 1);
    EXPECT_FALSE(std::filesystem::exists(other));
}

TEST_F(Connection, FailedOpenIsRememberedUntilDisConnect)
{
    const std::u16string path = Path("missing/test.db");
    const long long before = sqlite3_memory_used();
    EXPECT_EQ(m_connection->Connect(path.c_str(), u"a", u"b"), HYN_E_FAIL);
    EXPECT_EQ(sqlite3_memory_used(), before) << "the engine's half-made handle is closed";
    std::filesystem::create_directory(m_folder.Path() / "missing");
    EXPECT_EQ(m_connection->Connect(u"x", u"a", u"y"), HYN_S_OK);
    EXPECT_EQ(m_connection->Connect(u"x", u"x", u"x"), HYN_E_FAIL);
    IHynSQCommand* command = nullptr;
    EXPECT_EQ(m_connection->CreateCommand(&command), HYN_E_FAIL);
    EXPECT_EQ(Run(u"SELECT 1"), HYN_E_FAIL);
    EXPECT_EQ(m_connection->GetLastInsertID(), 0);
    EXPECT_EQ(command, nullptr);
    std::thread([&] { EXPECT_EQ(Run(u"SELECT 1"), HYN_S_OK) << "another thread has its own try"; }).join();
    EXPECT_EQ(m_connection->DisConnect(), HYN_S_OK);
    EXPECT_EQ(m_connection->Connect(path.c_str(), u"a", u"b"), HYN_S_OK);
}

TEST_F(ConnectedConnection, CommandWithoutAHandleKeepsItsStatement)
{
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"SELECT 1");
    EXPECT_EQ(m_connection->DisConnect(), HYN_S_OK);
    EXPECT_EQ(m_connection->Connect(Path("missing/test.db").c_str(), u"a", u"b"), HYN_E_FAIL);
    EXPECT_EQ(command->PrepareSQL(u"SELECT 2"), HYN_E_FAIL);
    EXPECT_EQ(command->ExecuteSQL(), HYN_S_OK);
}

TEST_F(Connection, UseBeforeConnectWorksOnTheEmptyPath)
{
    EXPECT_EQ(m_connection->DisConnect(), HYN_S_OK);
    EXPECT_EQ(m_connection->GetLastInsertID(), 0);
    EXPECT_EQ(Connect(), HYN_E_FAIL);
    EXPECT_EQ(m_connection->Connect(Path().c_str(), u"", u"x"), HYN_S_OK);
    EXPECT_FALSE(std::filesystem::exists(Path()));
    EXPECT_EQ(m_connection->DisConnect(), HYN_S_OK);
    EXPECT_EQ(Connect(), HYN_S_OK);
    EXPECT_TRUE(Run(u"CREATE TABLE t (x)") == HYN_S_OK && std::filesystem::exists(Path()));
}

TEST_F(ConnectedConnection, KeepsItsPathAfterDisConnect)
{
    ASSERT_EQ(Run(u"CREATE TABLE t (x)"), HYN_S_OK);
    EXPECT_EQ(m_connection->DisConnect(), HYN_S_OK);
    EXPECT_EQ(Descriptors(Path()), 0);
    EXPECT_EQ(Number(u"SELECT count(*) FROM t"), 0);
    EXPECT_EQ(m_connection->DisConnect(), HYN_S_OK);
    EXPECT_EQ(m_connection->Connect(Path("next.db").c_str(), u"second", u"third"), HYN_S_OK);
    EXPECT_EQ(Run(u"SELECT * FROM t"), HYN_E_FAIL) << "another database now";
}

TEST_F(ConnectedConnection, ALiveStatementKeepsItsHandleAlsoWithoutTheConnection)
{
    for (const bool disconnects : {true, false})
    {
        CHynAutoPtr<CHynSQRecordSet> recordSet = Open(u"VALUES (1), (2)");
        ASSERT_EQ(Run(u"CREATE TABLE IF NOT EXISTS t (x)"), HYN_S_OK);
        if (disconnects)
            EXPECT_EQ(m_connection->DisConnect(), HYN_S_OK);
        else
            m_connection = nullptr;
        EXPECT_EQ(Descriptors(Path()), 1);
        EXPECT_EQ(recordSet->Next(), HYN_S_OK);
        EXPECT_EQ(Read<int>(recordSet, 0), 2);
        recordSet = nullptr;
        EXPECT_EQ(Descriptors(Path()), 0) << "goes with its last statement";
    }
}

TEST_F(ConnectedConnection, DisConnectClosesAllHandlesInTheOrderOfTheirThreads)
{
    constexpr std::size_t kThreads = 5;
    std::barrier allOpen(kThreads);
    std::vector<sqlite3*> handles;
    std::vector<std::pair<std::uint32_t, sqlite3*>> byThread;
    std::mutex mutex;
    const auto open = [&]
    {
        sqlite3* handle = m_connection->GetSQdb();
        EXPECT_EQ(m_connection->FindCreateConnection(), handle);
        // Told of its closing, the engine writes the handle down.
        sqlite3_trace_v2(
            handle, SQLITE_TRACE_CLOSE,
            [](unsigned, void* to, void* closed, void*)
            {
                static_cast<std::vector<sqlite3*>*>(to)->push_back(static_cast<sqlite3*>(closed));
                return 0;
            },
            &handles);
        const std::scoped_lock lock(mutex);
        byThread.emplace_back(GetCurrentTovThreadID(), handle);
    };
    open();
    HalyonTest::OnThreads(kThreads,
                          [&](std::size_t)
                          {
                              EXPECT_EQ(m_connection->Connect(u"?", u"SECOND", u"?"), HYN_S_OK);
                              open();
                              allOpen.arrive_and_wait();
                          });
    std::sort(byThread.begin(), byThread.end());
    EXPECT_EQ(m_connection->DisConnect(), HYN_S_OK);
    ASSERT_EQ(handles.size(), byThread.size());
    for (std::size_t i = 0; i < handles.size(); ++i)
        EXPECT_EQ(handles[i], byThread[i].second);
}

TEST_F(ConnectedConnection, EachThreadSeesItsOwnHandleAndInserts)
{
    ASSERT_EQ(Run(u"CREATE TABLE t (id INTEGER PRIMARY KEY)"), HYN_S_OK);
    EXPECT_EQ(Run(u"INSERT INTO t VALUES (7)"), HYN_S_OK);
    EXPECT_EQ(Run(u"CREATE TEMP TABLE mine (x)"), HYN_S_OK);
    std::thread(
        [&]
        {
            EXPECT_EQ(m_connection->GetLastInsertID(), 0);
            EXPECT_EQ(Run(u"SELECT * FROM mine"), HYN_E_FAIL);
            EXPECT_EQ(Run(u"INSERT INTO t VALUES (8)"), HYN_S_OK);
            EXPECT_EQ(m_connection->GetLastInsertID(), 8);
        })
        .join();
    EXPECT_EQ(m_connection->GetLastInsertID(), 7);
    EXPECT_EQ(Number(u"SELECT count(*) FROM t"), 2);
}

TEST_F(ConnectedConnection, TransactionsAreExclusiveAndRollBack)
{
    ASSERT_EQ(Run(u"CREATE TABLE t (x)"), HYN_S_OK);
    const Raw other(Path());
    EXPECT_EQ(m_connection->BeginTrans(), HYN_S_OK);
    EXPECT_EQ(other.Ask("SELECT count(*) FROM t"), "database is locked");
    EXPECT_EQ(m_connection->BeginTrans(), HYN_E_SQSTEP);
    EXPECT_EQ(Run(u"INSERT INTO t VALUES (1)"), HYN_S_OK);
    EXPECT_EQ(m_connection->RollbackTrans(), HYN_S_OK);
    EXPECT_EQ(m_connection->RollbackTrans(), HYN_E_SQSTEP);
    EXPECT_EQ(m_connection->BeginTrans(), HYN_S_OK);
    EXPECT_EQ(Run(u"INSERT INTO t VALUES (2)"), HYN_S_OK);
    EXPECT_EQ(m_connection->CommitTrans(), HYN_S_OK);
    EXPECT_EQ(m_connection->CommitTrans(), HYN_E_SQSTEP);
    EXPECT_EQ(other.Ask("SELECT x FROM t"), "2 ");
}

TEST_F(ConnectedConnection, FailedCommitRollsBackAndReportsTheCommit)
{
    for (const char16_t* sql : {u"PRAGMA foreign_keys = ON", u"CREATE TABLE p (id INTEGER PRIMARY KEY)",
                                u"CREATE TABLE c (p REFERENCES p DEFERRABLE INITIALLY DEFERRED)"})
        ASSERT_EQ(Run(sql), HYN_S_OK);
    EXPECT_EQ(m_connection->BeginTrans(), HYN_S_OK);
    EXPECT_EQ(Run(u"INSERT INTO c VALUES (5)"), HYN_S_OK);
    EXPECT_EQ(m_connection->CommitTrans(), HYN_E_SQSTEP);
    EXPECT_EQ(Raw(Path()).Ask("SELECT count(*) FROM c"), "0 ");
    EXPECT_EQ(m_connection->BeginTrans(), HYN_S_OK) << "the failed one is over";
    EXPECT_EQ(m_connection->RollbackTrans(), HYN_S_OK);
}

TEST_F(ConnectedConnection, OneShotStatementsReportTheFirstFailure)
{
    ASSERT_EQ(Run(u"CREATE TABLE t (x UNIQUE); DROP TABLE t;"), HYN_S_OK);
    const std::pair<const char16_t*, HynResult> cases[] = {
        {u"INSERT INTO t VALUES (1)", HYN_S_OK},
        {u"INSERT INTO t VALUES (1)", HYN_E_SQSTEP},
        {u"SELECT x FROM t", HYN_S_OK},
        {u"SELECT x FROM t WHERE x = 2", HYN_S_OK},
        {u"SELECT nothing FROM t", HYN_E_FAIL},
        {u"no statement", HYN_E_FAIL},
        {u"", HYN_E_FAIL},
        {u"-- a remark", HYN_E_FAIL},
        {nullptr, HYN_E_FAIL},
    };
    for (const auto& [sql, expected] : cases)
    {
        EXPECT_EQ(Run(sql), expected) << U8(sql);
        if (sql == nullptr || sql[0] != u'I')
        {
            CHynAutoPtr<IHynSQRecordSet> recordSet;
            EXPECT_EQ(m_connection->OpenRecordSet(sql, recordSet.Receive()), expected) << U8(sql);
            EXPECT_EQ(recordSet != nullptr, expected == HYN_S_OK);
            EXPECT_EQ(m_connection->OpenRecordSet(sql, nullptr), HYN_E_FAIL);
        }
    }
    EXPECT_EQ(m_connection->CreateCommand(nullptr), HYN_E_FAIL);
}

TEST_F(ConnectedConnection, ForkedChildLeavesTheParentsHandlesAndStatementsAlone)
{
    ASSERT_EQ(Run(u"CREATE TABLE t (x)"), HYN_S_OK);
    CHynAutoPtr<CHynSQCommand> command = Prepare(u"VALUES (1), (2)");
    CHynAutoPtr<CHynSQRecordSet> recordSet = Open(command);
    sqlite3* const handle = m_connection->GetSQdb();
    const CHynAutoPtr<CHynSQConnection> idle = new CHynSQConnection;
    ASSERT_EQ(idle->Connect(Path("idle.db").c_str(), u"", u""), HYN_S_OK);
    const std::string wrong = HalyonTest::InChild(
        [&]
        {
            std::string text;
            const auto expect = [&](bool holds, const char* what)
            {
                text += holds ? "" : std::string(what) + " ";
            };
            expect(recordSet->Next() == HYN_E_FAIL && recordSet->GetFieldCount() == 0, "rows");
            expect(command->BindFieldValue(0, 1) == HYN_E_FAIL && command->ExecuteSQL() == HYN_E_FAIL, "command");
            expect(m_connection->GetSQdb() != handle && m_connection->GetSQdb() != nullptr, "handle");
            expect(Run(u"INSERT INTO t VALUES (11)") == HYN_S_OK, "statement");
            expect(command->PrepareSQL(u"INSERT INTO t VALUES (12)") == HYN_S_OK, "preparation");
            expect(command->ExecuteSQL() == HYN_S_OK && recordSet->Next() == HYN_S_FALSE, "execution");
            recordSet = nullptr;
            command = nullptr;
            expect(m_connection->DisConnect() == HYN_S_OK && Descriptors(Path()) == 1, "descriptor");
            expect(idle->DisConnect() == HYN_S_OK && Descriptors(Path("idle.db")) == 1, "idle descriptor");
            return text;
        });
    EXPECT_EQ(wrong, "");
    EXPECT_EQ(recordSet->Next(), HYN_S_OK);
    EXPECT_EQ(Read<int>(recordSet, 0), 2);
    EXPECT_EQ(m_connection->GetSQdb(), handle);
    EXPECT_EQ(Number(u"SELECT sum(x) FROM t"), 11 + 12 + 12);
}
} // namespace
