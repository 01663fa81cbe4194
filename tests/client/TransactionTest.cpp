#include <stdexcept>

#include "ClientSupport.h"

namespace HalyonTest
{
namespace
{
using Client::Transaction;

class TransactionTest : public testing::Test
{
protected:
    TransactionTest()
    {
        m_database.execute("PRAGMA foreign_keys = ON");
        m_database.execute("CREATE TABLE t (k INTEGER PRIMARY KEY)");
        m_database.execute("CREATE TABLE u (k REFERENCES t DEFERRABLE INITIALLY DEFERRED)");
    }

    void Insert(int k) { m_database.execute("INSERT INTO t VALUES (?)", k); }
    long long Count() { return m_database.query("SELECT count(*) FROM t").row().get<long long>(0); }
    // Whether a transaction is open: then a second one is refused.
    bool IsOpen()
    {
        return m_database.interface()->BeginTrans() != HYN_S_OK || m_database.interface()->RollbackTrans() != 0;
    }

    Client::Connection m_database = Memory();
};

TEST_F(TransactionTest, EndsWithItsScope)
{
    {
        Transaction transaction(m_database);
        Insert(1);
        transaction.commit();
        EXPECT_FALSE(IsOpen());
        EXPECT_EQ(transaction.try_commit(), HYN_E_FAIL) << "once";
    }
    EXPECT_EQ(Count(), 1);
    {
        const Transaction transaction(m_database);
        Insert(2);
        EXPECT_TRUE(IsOpen());
    }
    EXPECT_EQ(Count(), 1);
    EXPECT_THROW(
        {
            const Transaction transaction(m_database);
            Insert(3);
            throw std::runtime_error("on the way");
        },
        std::runtime_error);
    EXPECT_EQ(Count(), 1);
    EXPECT_FALSE(IsOpen());
}

TEST_F(TransactionTest, ARefusedSecondOneLeavesTheFirstAlone)
{
    Transaction outer(m_database);
    Insert(1);
    EXPECT_EQ(Thrown([&] { Transaction inner(m_database); }), HYN_E_SQSTEP);
    {
        Transaction inner;
        EXPECT_EQ(inner.try_begin(m_database), HYN_E_SQSTEP);
    }
    EXPECT_TRUE(IsOpen());
    outer.commit();
    EXPECT_EQ(Count(), 1);
}

TEST_F(TransactionTest, AFailedCommitHasRolledBack)
{
    Transaction transaction(m_database);
    Insert(1);
    m_database.execute("INSERT INTO u VALUES (99)");
    EXPECT_LT(Thrown([&] { transaction.commit(); }), 0);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(Count(), 0);

    Insert(2); // outside; nothing left in the object to roll it back
    EXPECT_EQ(transaction.try_rollback(), HYN_S_OK);
    EXPECT_EQ(Count(), 1);
    EXPECT_EQ(transaction.try_begin(m_database), HYN_S_OK) << "again";
    Insert(3);
    EXPECT_EQ(transaction.try_begin(m_database), HYN_S_OK) << "rolls back what was open";
    EXPECT_EQ(Count(), 1);
}

TEST(ReadTransactionTest, SeesOneStateOfTheDatabase)
{
    const TempFolder folder;
    const std::string file = folder.Path() / "read.db";
    const Client::Module module(HYNSQ_MODULE);
    const Client::Connection writer(module, file);
    const Client::Connection reader(module, file);
    writer.execute("PRAGMA journal_mode = WAL"); // lets others write while it is read
    writer.execute("CREATE TABLE t (k)");
    const auto count = [&]
    {
        return reader.query("SELECT count(*) FROM t").row().get<int>(0);
    };
    {
        const Transaction view(reader, Transaction::Kind::Read);
        writer.execute("INSERT INTO t VALUES (1)");
        EXPECT_EQ(count(), 0);
    }
    EXPECT_EQ(count(), 1);
}
} // namespace
} // namespace HalyonTest
