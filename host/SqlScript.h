// SQL texts as the host must understand them to run them one by one: where a statement ends, and what it is.
//
// Not a parser: what is wrong in a statement is left to the engine.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace HynHost
{
struct SqlStatement
{
    std::string text; // without the semicolon and the comments around it
    int line = 1;     // where it begins, counted from 1
};

// The statements of `script`. Strings, quoted names, comments and the bodies of triggers may hold semicolons. [any]
[[nodiscard]] std::vector<SqlStatement> SplitStatements(std::string_view script);

enum class SqlKind
{
    Query,  // SELECT, VALUES, or WITH before one of them: may stand inside another statement
    Change, // INSERT, REPLACE, UPDATE, DELETE, also behind WITH
    Pragma,
    Explain,
    QueryPlan, // EXPLAIN QUERY PLAN
    Other,
};

[[nodiscard]] SqlKind KindOf(std::string_view statement);

// A query with the columns of a change's RETURNING clause, on the table that it changes; empty without the clause.
// [any]
[[nodiscard]] std::string ReturningQuery(std::string_view statement);

// The name of a pragma, without its schema; empty for other statements. [any]
[[nodiscard]] std::string PragmaName(std::string_view statement);
} // namespace HynHost
