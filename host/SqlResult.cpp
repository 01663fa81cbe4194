#include <host/SqlResult.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

using Halyon::HynResult;

namespace HynHost
{
namespace
{
// The names of the columns of a query, which is not run; empty when they cannot be told.
std::vector<std::string> NamesOfQuery(Database& database, const std::string& query)
{
    if (query.empty())
        return {};
    std::vector<std::string> names;
    try
    {
        // The line break ends a comment at the end of the query.
        database.execute("CREATE TEMP VIEW \"hynhost columns\" AS " + query + "\n");
    }
    catch (const DatabaseError&) // a parameter, a session that may not write, a table that no view may read
    {
        return {};
    }
    try
    {
        for (auto& row : database.query("SELECT name FROM pragma_table_info('hynhost columns') ORDER BY cid"))
            names.push_back(row.get<std::optional<std::string>>(0).value_or(""));
    }
    catch (const DatabaseError&)
    {
        names.clear();
    }
    database.execute("DROP VIEW temp.\"hynhost columns\"");
    return names;
}

std::vector<std::string> NamesOfPragma(Database& database, const std::string& name)
{
    std::vector<std::string> names;
    for (auto& row : database.query("SELECT name FROM pragma_table_info('pragma_" + name + "') ORDER BY cid"))
        names.push_back(row.get<std::optional<std::string>>(0).value_or(""));
    return names.empty() ? std::vector{name} : names;
}

// Names that the rows of a statement may have.
std::vector<std::string> LikelyNames(Database& database, const SqlStatement& statement)
{
    switch (KindOf(statement.text))
    {
    case SqlKind::Pragma:
        return NamesOfPragma(database, PragmaName(statement.text));
    case SqlKind::Explain:
        return {"addr", "opcode", "p1", "p2", "p3", "p4", "p5", "comment"};
    case SqlKind::QueryPlan:
        return {"id", "parent", "notused", "detail"};
    case SqlKind::Change:
        return NamesOfQuery(database, ReturningQuery(statement.text));
    default:
        return {};
    }
}

template <class Number>
std::optional<Number> Spelled(std::string_view text)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

[[noreturn]] void Fail(const DatabaseError& error, const std::string& where)
{
    throw SqlError(where + " failed with " + Halyon::HynResultName(error.code()));
}
} // namespace

SqlResult::SqlResult(Database& database, const SqlStatement& statement)
{
    std::string where = "preparing";
    try
    {
        // First as it is: what is wrong with it is not to be blamed on what is put around it.
        static_cast<void>(database.prepare(statement.text));
        if (KindOf(statement.text) == SqlKind::Query)
            m_names = NamesOfQuery(database, statement.text);
        where = "stepping to row 1";
        if (m_names.empty())
            OpenPlain(database, statement);
        else
            OpenQuery(database, statement.text);
        m_row = 1;
    }
    catch (const DatabaseError& error)
    {
        Fail(error, where);
    }
}

void SqlResult::OpenQuery(Database& database, const std::string& text)
{
    std::string columns;
    std::string types;
    for (std::size_t k = 0; k < m_names.size(); ++k)
    {
        const std::string name = "c" + std::to_string(k);
        columns += (k == 0 ? "" : ", ") + name;
        types += ", unicode(typeof(" + name + "))";
    }
    // Limits that limit nothing, but keep the engine from merging the two queries and computing a value a second time
    // for its type. Rows still come one by one and in the order of the query.
    m_rows = database.query("WITH q(" + columns + ") AS (SELECT * FROM (" + text + "\n) LIMIT -1) SELECT " + columns +
                            types + " FROM q LIMIT -1");
    m_typed = true;
}

void SqlResult::OpenPlain(Database& database, const SqlStatement& statement)
{
    // Before the statement runs: it may change what they are.
    const std::vector<std::string> likely = LikelyNames(database, statement);
    m_rows = database.query(statement.text);
    if (AnswersTo(likely))
    {
        m_names = likely;
        return;
    }
    for (std::int32_t k = 1; k <= m_rows.column_count(); ++k)
        m_names.push_back("column " + std::to_string(k));
}

bool SqlResult::AnswersTo(const std::vector<std::string>& names) const
{
    if (std::cmp_not_equal(names.size(), m_rows.column_count()))
        return false;
    if (m_rows.at_end()) // nothing to ask
        return true;
    for (const std::string& name : names)
    {
        std::uint32_t size = 0;
        const CTovStringW wide = CTovStringW::FromUTF8(name);
        const char16_t* column = wide;
        if (Halyon::HynFailed(m_rows.interface()->GetFieldValue(column, static_cast<void*>(nullptr), &size)))
            return false;
    }
    return true;
}

void SqlResult::Next()
{
    try
    {
        m_rows.next();
        ++m_row;
    }
    catch (const DatabaseError& error)
    {
        Fail(error, "stepping to row " + std::to_string(m_row + 1));
    }
}

std::vector<SqlValue> SqlResult::Row() const
{
    std::vector<SqlValue> values;
    for (std::size_t k = 0; k < m_names.size(); ++k)
    {
        try
        {
            const auto column = static_cast<std::int32_t>(k);
            values.push_back(m_typed ? TypedValue(column) : InferredValue(column));
        }
        catch (const DatabaseError& error)
        {
            Fail(error, "reading column \"" + m_names[k] + "\" of row " + std::to_string(m_row));
        }
    }
    return values;
}

SqlValue SqlResult::TypedValue(std::int32_t column) const
{
    switch (m_rows.row().get<std::int32_t>(column + static_cast<std::int32_t>(m_names.size())))
    {
    case 'i':
        return m_rows.row().get<long long>(column);
    case 'r':
        return m_rows.row().get<double>(column);
    case 't':
        return m_rows.row().get<std::string>(column);
    case 'b':
        return m_rows.row().get<SqlBlob>(column);
    default:
        return std::monostate();
    }
}

SqlValue SqlResult::InferredValue(std::int32_t column) const
{
    // Bytes first: reading a blob as text makes a text of it. What is text has the same bytes in both readings.
    auto bytes = m_rows.row().get<SqlBlob>(column);
    std::u16string units(bytes.size() / sizeof(char16_t) + 1, u'\0');
    const HynResult result = m_rows.row().try_read(column, std::span<char16_t>(units));
    if (result == Halyon::HYN_E_SQNULLVALUE)
        return std::monostate();
    const std::size_t size = tov_wcslen(units.c_str()) * sizeof(char16_t);
    if (Halyon::HynFailed(result) || size != bytes.size() ||
        !std::equal(bytes.begin(), bytes.end(), reinterpret_cast<const std::byte*>(units.data())))
        return bytes;
    const auto text = m_rows.row().get<std::string>(column);
    const auto integer = m_rows.row().get<long long>(column);
    if (std::to_string(integer) == text)
        return integer;
    const auto real = m_rows.row().get<double>(column);
    if (text.find_first_of(".e") != std::string::npos && Spelled<double>(text) == real)
        return real;
    return text;
}
} // namespace HynHost
