#include <tests/faults/Ledger.h>

#include <algorithm>

#include <halyon/database/IHynSQCommand.h>
#include <halyon/database/IHynSQRecordSet.h>
#include <halyon/string/CTovStringW.h>

#include <tests/faults/Storage.h>

using namespace Halyon;

namespace HalyonTest
{
namespace
{
constexpr int kRows = 6;

CTovStringW Wide(const std::string& text)
{
    return CTovStringW::FromUTF8(text);
}
} // namespace

bool Ledger::Run(const std::string& sql) const
{
    return HynSucceeded(m_connection->ExecuteSQL(Wide(sql)));
}

// The number that a query gives, or -1.
long long Ledger::Ask(const std::string& sql) const
{
    CHynAutoPtr<IHynSQRecordSet> rows;
    long long number = -1;
    if (HynSucceeded(m_connection->OpenRecordSet(Wide(sql), rows.Receive())))
        rows->GetFieldValue(0, &number);
    return number;
}

bool Ledger::Open()
{
    m_connection = LoadedModule::Connection();
    const bool isOpen =
        HynSucceeded(m_connection->Connect(Wide(std::string("file:/ledger.db?vfs=") + kStorageName), u"", u"")) &&
        Run("PRAGMA cache_size = 8") && Run(std::string("PRAGMA synchronous = ") + m_settings.synchronous) &&
        Run(std::string("PRAGMA journal_mode = ") + m_settings.journal) && Run("PRAGMA wal_autocheckpoint = 20") &&
        Run("CREATE TABLE IF NOT EXISTS entry (txn INTEGER, n INTEGER, filler BLOB)") &&
        Run("CREATE TABLE IF NOT EXISTS total (entries INTEGER)") &&
        Run("CREATE TRIGGER IF NOT EXISTS adding AFTER INSERT ON entry BEGIN UPDATE total SET entries = entries + 1; "
            "END") &&
        Run("INSERT INTO total SELECT 0 WHERE NOT EXISTS (SELECT 1 FROM total)");
    if (!isOpen)
        Close();
    return isOpen;
}

void Ledger::Close()
{
    m_connection = nullptr;
}

bool Ledger::Transact()
{
    if (m_connection == nullptr && !Open())
        return false;
    const std::string txn = std::to_string(m_told.size());
    m_told.push_back(Told::Failed);
    if (m_told.size() % 3 == 0)
        return Tell(InsertAtOnce(txn));
    if (HynFailed(m_connection->BeginTrans()))
        return false;
    bool isWritten = Run("UPDATE entry SET filler = randomblob(1500) WHERE txn = " + txn + " - 1");
    for (int n = 0; isWritten && n < kRows; ++n)
        isWritten = Run("INSERT INTO entry VALUES (" + txn + ", " + std::to_string(n) + ", randomblob(1800))");
    if (!isWritten)
    {
        m_connection->RollbackTrans();
        return false;
    }
    return Tell(HynSucceeded(m_connection->CommitTrans()));
}

// By one statement, which is its own transaction and ends after the first of its rows, of which nobody asks for more.
bool Ledger::InsertAtOnce(const std::string& txn) const
{
    const CTovStringW sql =
        Wide("WITH RECURSIVE count (n) AS (VALUES (0) UNION ALL SELECT n + 1 FROM count WHERE n < " +
             std::to_string(kRows - 1) + ") INSERT INTO entry SELECT " + txn +
             ", n, randomblob(1800) FROM count RETURNING n");
    CHynAutoPtr<IHynSQCommand> command;
    if (m_told.size() % 2 == 0)
        return HynSucceeded(m_connection->ExecuteSQL(sql));
    return HynSucceeded(m_connection->CreateCommand(command.Receive())) && HynSucceeded(command->PrepareSQL(sql)) &&
           HynSucceeded(command->ExecuteSQL());
}

bool Ledger::Tell(bool isDone)
{
    m_told.back() = isDone ? Told::Done : Told::Unclear;
    m_done += isDone ? 1 : 0;
    return isDone;
}

void Ledger::Verify(int mostLost)
{
    Close();
    ASSERT_TRUE(Open()) << "opens without a question";
    EXPECT_EQ(Ask("SELECT integrity_check = 'ok' FROM pragma_integrity_check"), 1);
    EXPECT_EQ(Ask("SELECT (SELECT entries FROM total) = (SELECT count(*) FROM entry)"), 1) << "half a transaction";
    int lost = 0;
    for (std::size_t txn = 0; txn < m_told.size(); ++txn)
    {
        const long long rows = Ask("SELECT count(*) FROM entry WHERE txn = " + std::to_string(txn));
        EXPECT_TRUE(rows == 0 || rows == kRows) << "half of transaction " << txn;
        EXPECT_FALSE(rows != 0 && m_told[txn] == Told::Failed) << "transaction " << txn << " had failed";
        EXPECT_FALSE(rows != 0 && lost != 0) << "transaction " << txn << " is there, one before it is not";
        lost += rows == 0 && m_told[txn] == Told::Done ? 1 : 0;
        m_told[txn] = rows != 0 ? Told::Done : Told::Failed; // by now it is one or the other
    }
    EXPECT_LE(lost, mostLost) << "of " << m_told.size();
    m_done = static_cast<int>(std::ranges::count(m_told, Told::Done));
}
} // namespace HalyonTest
