#include <host/Database.h>

#include <utility>

#include <host/HostError.h>

using Halyon::HynFailed;
using Halyon::HynResult;

namespace HynHost
{
namespace
{
std::string Describe(std::string_view where, std::string_view statement, HynResult result)
{
    std::string text(where);
    text.append(" failed with ").append(Halyon::HynResultName(result)).append(": ").append(statement);
    return text;
}

void CheckStatement(HynResult result, std::string_view where, const CTovStringW& sql)
{
    if (HynFailed(result))
        throw DatabaseError(where, sql.ToUTF8(), result);
}
} // namespace

DatabaseError::DatabaseError(std::string_view where, std::string_view statement, HynResult result)
    : std::runtime_error(Describe(where, statement, result)), m_where(where), m_statement(statement), m_result(result)
{
}

RecordSet::RecordSet(Halyon::CHynAutoPtr<Halyon::IHynSQRecordSet> recordSet, CTovStringW sql)
    : m_recordSet(std::move(recordSet)), m_sql(std::move(sql))
{
}

bool RecordSet::Next()
{
    const HynResult result = m_recordSet->Next();
    CheckStatement(result, "stepping", m_sql);
    return result == Halyon::HYN_S_OK;
}

std::optional<std::string> RecordSet::Text(std::int32_t column) const
{
    // The text reader tells no size, the blob reader does.
    std::uint32_t bytes = 0;
    Check(m_recordSet->GetFieldValue(column, static_cast<void*>(nullptr), &bytes), column);
    std::uint32_t units = bytes / 2 + 1;
    m_text.resize(units);
    const HynResult result = m_recordSet->GetFieldValue(column, m_text.data(), &units);
    if (result == Halyon::HYN_E_SQNULLVALUE)
        return std::nullopt;
    Check(result, column);
    return CTovStringW(m_text.c_str()).ToUTF8();
}

std::vector<std::uint8_t> RecordSet::Bytes(std::int32_t column) const
{
    std::uint32_t size = 0;
    Check(m_recordSet->GetFieldValue(column, static_cast<void*>(nullptr), &size), column);
    std::vector<std::uint8_t> bytes(size);
    if (size != 0)
        Check(m_recordSet->GetFieldValue(column, static_cast<void*>(bytes.data()), &size), column);
    return bytes;
}

void RecordSet::Check(HynResult result, std::int32_t column) const
{
    if (HynFailed(result))
        CheckStatement(result, "reading column " + std::to_string(column), m_sql);
}

void RecordSet::Check(HynResult result, const char16_t* column) const
{
    if (HynFailed(result))
        CheckStatement(result, "reading column " + CTovStringW(column).ToUTF8(), m_sql);
}

Command::Command(Halyon::CHynAutoPtr<Halyon::IHynSQCommand> command, CTovStringW sql)
    : m_command(std::move(command)), m_sql(std::move(sql))
{
}

Command& Command::Bind(std::int32_t index, CTovStringW value)
{
    // The engine reads the text where it lies, and the old one until this one is bound.
    Bound(m_command->BindFieldValue(index, static_cast<const char16_t*>(value)), index);
    const auto slot = static_cast<std::size_t>(index);
    if (m_texts.size() <= slot)
        m_texts.resize(slot + 1);
    m_texts[slot] = std::move(value);
    return *this;
}

void Command::Execute()
{
    CheckStatement(m_command->ExecuteSQL(), "executing", m_sql);
}

RecordSet Command::Open()
{
    Halyon::CHynAutoPtr<Halyon::IHynSQRecordSet> recordSet;
    CheckStatement(m_command->OpenRecordSet(recordSet.Receive()), "executing", m_sql);
    return {std::move(recordSet), m_sql};
}

Command& Command::Bound(HynResult result, std::int32_t index)
{
    if (HynFailed(result))
        CheckStatement(result, "binding parameter " + std::to_string(index), m_sql);
    return *this;
}

Database::Database(const std::string& file) : m_connection(m_module.CreateConnection()), m_file(file)
{
    const HynResult result = m_connection->Connect(CTovStringW::FromUTF8(file), u"", u"");
    if (HynFailed(result))
        throw DatabaseError("opening", file, result);
}

void Database::Execute(const char16_t* sql)
{
    Prepare(sql).Execute();
}

RecordSet Database::Query(const char16_t* sql)
{
    return Prepare(sql).Open();
}

Command Database::Prepare(const char16_t* sql)
{
    const CTovStringW text(sql);
    Halyon::CHynAutoPtr<Halyon::IHynSQCommand> command;
    CheckStatement(m_connection->CreateCommand(command.Receive()), "opening a handle for", text);
    CheckStatement(command->PrepareSQL(sql), "preparing", text);
    return {std::move(command), text};
}

Transaction::Transaction(Database& database, Kind kind) : m_database(database), m_kind(kind)
{
    if (kind == Kind::Read)
    {
        database.Execute(u"begin;");
        static_cast<void>(database.Query(u"SELECT 1 FROM sqlite_master LIMIT 1")); // takes the lock
        return;
    }
    const HynResult result = database.Interface()->BeginTrans();
    if (result == Halyon::HYN_E_FAIL)
        throw HostError("cannot lock", database.File(), "another program has kept it busy, or it cannot be written");
    CheckStatement(result, "locking " + database.File(), u"begin exclusive;");
}

Transaction::~Transaction()
{
    if (!m_open)
        return;
    // A handle that met a busy database when it first read its tables takes the next rollback for a change of them, and
    // every prepared statement fails from then on. What was only read is the same after a commit.
    if (m_kind == Kind::Read)
        m_database.Interface()->CommitTrans();
    else
        m_database.Interface()->RollbackTrans();
}

void Transaction::Commit()
{
    m_open = false; // a failed commit has been rolled back by the module
    CheckStatement(m_database.Interface()->CommitTrans(), "writing " + m_database.File(), u"commit;");
}
} // namespace HynHost
