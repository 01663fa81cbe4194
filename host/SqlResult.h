// The rows of one SQL statement with the names and the types of their columns, which the module's interfaces do not
// tell by themselves.
//
// A query (SELECT, VALUES) runs inside of another that asks for typeof() beside each value, after a temporary view,
// gone again before the query runs, has told its names; two columns of one name come as "a" and "a:1". Other statements
// run as they are. Their names are those that their kind of statement is known to have, as far as the row answers to
// them, else "column 1" and so on; their types are told by how the values read: a text that spells a number passes for
// the number.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include <host/Database.h>
#include <host/SqlScript.h>

namespace HynHost
{
using SqlBlob = std::vector<std::byte>;
// NULL, an integer, a real, a text in UTF-8 or a blob.
using SqlValue = std::variant<std::monostate, long long, double, std::string, SqlBlob>;

// A statement that failed.
class SqlError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

class SqlResult
{
public:
    // Runs the statement to its first row. Throws SqlError, which says where it failed and with which code. [owner]
    SqlResult(Database& database, const SqlStatement& statement);

    // Empty for a statement that has no rows by nature.
    [[nodiscard]] const std::vector<std::string>& Names() const noexcept { return m_names; }

    [[nodiscard]] bool AtEnd() const { return m_rows.at_end(); }
    // Throws SqlError. [owner]
    void Next();
    // The values of the row. Throws SqlError. [owner]
    [[nodiscard]] std::vector<SqlValue> Row() const;

private:
    void OpenQuery(Database& database, const std::string& text);
    void OpenPlain(Database& database, const SqlStatement& statement);
    [[nodiscard]] bool AnswersTo(const std::vector<std::string>& names) const;
    [[nodiscard]] SqlValue TypedValue(std::int32_t column) const;
    [[nodiscard]] SqlValue InferredValue(std::int32_t column) const;

    std::vector<std::string> m_names;
    Rows m_rows;
    bool m_typed = false; // the second half of the columns has the first letter of the type of each in the first half
    long long m_row = 0;  // number of the current row, from 1
};
} // namespace HynHost
