// A database as the host's subcommands use it: the module's interfaces with results turned into exceptions and
// references into values.
//
//     Database database("/home/ann/catalog.db");
//     Command insert = database.Prepare(u"INSERT INTO media (path, size) VALUES (?, ?)");
//     insert.Bind(0, path).Bind(1, size).Execute();
//     for (RecordSet rows = database.Query(u"SELECT path, size FROM media"); !rows.AtEnd(); rows.Next())
//         Print(rows.Text(0), rows.Get<long long>(1));
//
// Not for code that wants to see a result code: it takes `Interface()`. Every failure is a DatabaseError. A Database
// may be shared by threads; commands and record sets stay on the thread that made them. All of them must be gone before
// the Database is.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <halyon/database/IHynSQCommand.h>
#include <halyon/database/IHynSQRecordSet.h>
#include <halyon/string/CTovStringW.h>
#include <host/Module.h>

namespace HynHost
{
// A failed call of the module.
class DatabaseError : public std::runtime_error
{
public:
    // `where` is the step that failed ("preparing", "binding parameter 2"); `statement` the SQL text, or the file when
    // there is none.
    DatabaseError(std::string_view where, std::string_view statement, Halyon::HynResult result);

    [[nodiscard]] const std::string& Where() const noexcept { return m_where; }
    [[nodiscard]] const std::string& Statement() const noexcept { return m_statement; }
    [[nodiscard]] Halyon::HynResult Result() const noexcept { return m_result; }

private:
    std::string m_where;
    std::string m_statement;
    Halyon::HynResult m_result;
};

// A cursor over rows. Columns are named by index (std::int32_t) or by name (const char16_t*).
class RecordSet
{
public:
    RecordSet(Halyon::CHynAutoPtr<Halyon::IHynSQRecordSet> recordSet, CTovStringW sql);

    [[nodiscard]] bool AtEnd() const { return m_recordSet->IsEof() != 0; }
    [[nodiscard]] std::int32_t Columns() const { return m_recordSet->GetFieldCount(); }

    // Steps; false at the end.
    bool Next();

    // A number (std::int32_t, std::uint32_t, long long, double) or a moment (FILETIME). NULL reads as 0.
    template <class T, class Column>
    [[nodiscard]] T Get(Column column) const
    {
        T value{};
        Check(m_recordSet->GetFieldValue(column, &value), column);
        return value;
    }

    // Text as UTF-8, up to its first zero unit; nothing for NULL.
    [[nodiscard]] std::optional<std::string> Text(std::int32_t column) const;

    // The value's bytes: a blob's, or the UTF-16 bytes of a text.
    [[nodiscard]] std::vector<std::uint8_t> Bytes(std::int32_t column) const;

    [[nodiscard]] Halyon::IHynSQRecordSet* Interface() const noexcept { return m_recordSet; }

private:
    void Check(Halyon::HynResult result, std::int32_t column) const;
    void Check(Halyon::HynResult result, const char16_t* column) const;

    Halyon::CHynAutoPtr<Halyon::IHynSQRecordSet> m_recordSet;
    CTovStringW m_sql;
    mutable std::u16string m_text; // reused by Text
};

// A prepared statement. Parameters are counted from 0; bindings stay until they are replaced.
class Command
{
public:
    Command(Halyon::CHynAutoPtr<Halyon::IHynSQCommand> command, CTovStringW sql);

    Command& Bind(std::int32_t index, std::int32_t value)
    {
        return Bound(m_command->BindFieldValue(index, value), index);
    }
    Command& Bind(std::int32_t index, long long value) { return Bound(m_command->BindFieldValue(index, value), index); }
    Command& Bind(std::int32_t index, double value) { return Bound(m_command->BindFieldValue(index, value), index); }
    Command& Bind(std::int32_t index, FILETIME value) { return Bound(m_command->BindFieldValue(index, &value), index); }
    // The text is kept here until it is replaced, so the caller need not.
    Command& Bind(std::int32_t index, CTovStringW value);

    // Runs the statement; it may be run again.
    void Execute();

    // Runs it and stands on its first row, or at the end. Two record sets of one command move each other.
    [[nodiscard]] RecordSet Open();

private:
    Command& Bound(Halyon::HynResult result, std::int32_t index);

    Halyon::CHynAutoPtr<Halyon::IHynSQCommand> m_command;
    CTovStringW m_sql;
    std::vector<CTovStringW> m_texts; // by parameter
};

class Database
{
public:
    // Loads the module and connects. The engine makes a missing file; opening reads nothing of one that exists.
    explicit Database(const std::string& file);

    [[nodiscard]] const std::string& File() const noexcept { return m_file; }

    // The first statement of `sql`.
    void Execute(const char16_t* sql);
    [[nodiscard]] RecordSet Query(const char16_t* sql);
    [[nodiscard]] Command Prepare(const char16_t* sql);

    // Row id of the calling thread's last insert.
    [[nodiscard]] long long LastInsertID() { return m_connection->GetLastInsertID(); }

    [[nodiscard]] Halyon::IHynSQConnection* Interface() const noexcept { return m_connection; }

private:
    Module m_module;
    Halyon::CHynAutoPtr<Halyon::IHynSQConnection> m_connection;
    std::string m_file;
};

// A transaction: at the end of its scope what it wrote is rolled back unless committed.
class Transaction
{
public:
    enum class Kind
    {
        Exclusive, // locks everybody else out, from the start
        Read,      // one unchanging view of the database, for many small queries
    };

    // Waits while the database is busy, about 100 seconds. Throws HostError when it stays so.
    explicit Transaction(Database& database, Kind kind = Kind::Exclusive);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void Commit();

private:
    Database& m_database;
    Kind m_kind;
    bool m_open = true;
};
} // namespace HynHost
