// The rows of SQL statements on standard output: as tables for people, as CSV, or as JSON.
//
// Numbers keep all their digits in each form. A blob is written in hexadecimal digits: x'00ff' in a table, 00ff in CSV
// and JSON. NULL is `NULL` in a table, nothing at all in CSV (an empty text is ""), null in JSON.
#pragma once

#include <host/SqlResult.h>

namespace HynHost
{
enum class SqlForm
{
    Table,
    Csv,  // RFC 4180, with a header line
    Json, // an array of objects
};

// Prints the rows that are left, when the statement has rows; `first` tells whether nothing was printed before it. A
// table is laid out when all rows are there, the others go out row by row. Throws SqlError, and HostError when the
// output cannot be written. [owner]
void PrintSqlResult(SqlResult& result, SqlForm form, bool first);
} // namespace HynHost
