// The host's splitting of SQL texts into statements, beside the engine's own sense of where a statement is complete.

#include <sqlite3.h>

#include <host/SqlScript.h>

#include "Input.h"

using namespace HynHost;
using HalyonFuzz::Hold;

namespace
{
void CheckStatement(std::string_view script, const SqlStatement& statement, std::size_t& from, int& line)
{
    Hold(!statement.text.empty(), "no statement is empty");
    const std::size_t at = script.find(statement.text, from);
    Hold(at != std::string_view::npos, "statements are parts of the script, in its order");
    from = at + statement.text.size();
    Hold(statement.line >= line, "lines go up");
    line = statement.line;

    static_cast<void>(KindOf(statement.text));
    static_cast<void>(PragmaName(statement.text));
    const std::string query = ReturningQuery(statement.text);
    Hold(query.empty() || KindOf(statement.text) == SqlKind::Change, "only a change returns rows of what it changed");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view script = HalyonFuzz::Input(data, size).TakeBytes();
    const std::vector<SqlStatement> statements = SplitStatements(script);
    std::size_t from = 0;
    int line = 1;
    for (std::size_t k = 0; k < statements.size(); ++k)
    {
        const std::string& text = statements[k].text;
        CheckStatement(script, statements[k], from, line);
        if (k + 1 == statements.size()) // the last may be open
            break;
        const auto alone = SplitStatements(text + ";");
        Hold(alone.size() == 1 && alone.front().text == text, "a statement stays one when it stands alone");
        // What EXPLAIN may stand before, the engine's sense of ends does not look at closely.
        if (KindOf(text) != SqlKind::QueryPlan && KindOf(text) != SqlKind::Explain)
            Hold(sqlite3_complete((text + ";").c_str()) != 0, "the engine takes a statement for whole, too");
    }
    return 0;
}
