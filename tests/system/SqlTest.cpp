// `hynhost sql`: any statements, typed rows in three forms, and errors that can be acted upon.
#include <tests/system/HostTest.h>

#include <cstdlib>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <host/SqlScript.h>

using namespace HalyonTest;

namespace
{
class SqlTest : public HalyonTest::HostTest
{
protected:
    [[nodiscard]] HostOutcome Sql(std::vector<std::string> arguments, HalyonTest::HostOptions options = {}) const
    {
        arguments.insert(arguments.begin(), "sql");
        return Host(arguments, std::move(options));
    }

    [[nodiscard]] std::string Database() const { return Path("a.db").string(); }
};

constexpr const char* kTypes = "CREATE TABLE t (id INTEGER PRIMARY KEY, a, b TEXT);"
                               "INSERT INTO t (a, b) VALUES (9223372036854775807, 'it''s; \"q\"'), (2.5, '42'),"
                               " (NULL, ''), (x'00ff', '日本'), (-9e999, 'NULL'), (3.0, 'a' || char(10) || 'b')";
} // namespace

TEST(SqlScriptTest, EndsStatementsAtTheirOwnSemicolonsOnly)
{
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"", {}},
        {" ; ;; -- nothing;\n /* ; */", {}},
        {"a;b", {"a", "b"}},
        {"a';b''c;';d", {"a';b''c;'", "d"}},
        {R"("x;""y";`p;``q`;[r;"];z)", {R"("x;""y")", "`p;``q`", "[r;\"]", "z"}},
        {"a -- b;c\n, d /* ; */ e; -- end;", {"a -- b;c\n, d /* ; */ e"}},
        {"a - - 1; b / c", {"a - - 1", "b / c"}},
        {"x 'never closed; y", {"x 'never closed; y"}},
        {"x /* never closed; y", {"x"}},
        {"create temp trigger r after insert on t begin select case 1 when 2 then 3 end; delete from u; end; b",
         {"create temp trigger r after insert on t begin select case 1 when 2 then 3 end; delete from u; end", "b"}},
        {"explain CREATE TRIGGER r BEGIN select 'end'; /* ; */ END /* ; */ ; b",
         {"explain CREATE TRIGGER r BEGIN select 'end'; /* ; */ END", "b"}},
        {"create table trigger_end (x); begin; end; create view v as select 1; c",
         {"create table trigger_end (x)", "begin", "end", "create view v as select 1", "c"}},
    };
    for (const auto& [script, expected] : cases)
    {
        std::vector<std::string> statements;
        for (const auto& statement : HynHost::SplitStatements(script))
            statements.push_back(statement.text);
        EXPECT_EQ(statements, expected) << script;
    }
    std::vector<int> lines;
    for (const auto& statement : HynHost::SplitStatements("-- one\n\n a\n;'x\ny' b; c"))
        lines.push_back(statement.line);
    EXPECT_EQ(lines, (std::vector{3, 4, 5}));
}

TEST_F(SqlTest, PrintsTypedTables)
{
    EXPECT_EQ(Sql({":memory:", kTypes, "SELECT * FROM t; SELECT id, id * 0.5 AS half FROM t WHERE id < 3"}).out,
              "     id  a                          b\n"
              "integer  integer, real, blob, null  text\n"
              "-------  -------------------------  ---------\n"
              "      1  9223372036854775807        it's; \"q\"\n"
              "      2  2.5                        42\n"
              "      3  NULL\n"
              "      4  x'00ff'                    日本\n"
              "      5  -inf                       NULL\n"
              "      6  3.0                        a\\x0ab\n"
              "(6 rows)\n"
              "\n"
              "     id  half\n"
              "integer  real\n"
              "-------  ----\n"
              "      1   0.5\n"
              "      2   1.0\n"
              "(2 rows)\n");
}

TEST_F(SqlTest, CsvTellsNullFromEmptyAndQuotesWhatMustBe)
{
    EXPECT_EQ(
        Sql({"--csv", ":memory:", kTypes, "SELECT id, a, b FROM t; SELECT 1 AS \"x,y\"; SELECT 1 AS z WHERE 0"}).out,
        "id,a,b\r\n1,9223372036854775807,\"it's; \"\"q\"\"\"\r\n2,2.5,42\r\n3,,\"\"\r\n4,00ff,日本\r\n"
        "5,-inf,NULL\r\n6,3.0,\"a\nb\"\r\n\r\n\"x,y\"\r\n1\r\n\r\nz\r\n");
}

TEST_F(SqlTest, JsonKeepsTypesAndDigits)
{
    EXPECT_EQ(Sql({"--json", ":memory:", kTypes, "SELECT a, b FROM t; SELECT 1 AS x WHERE 0"}).out,
              "[\n{\"a\": 9223372036854775807, \"b\": \"it's; \\\"q\\\"\"},\n{\"a\": 2.5, \"b\": \"42\"},\n"
              "{\"a\": null, \"b\": \"\"},\n{\"a\": \"00ff\", \"b\": \"日本\"},\n{\"a\": -9e999, \"b\": \"NULL\"},\n"
              "{\"a\": 3.0, \"b\": \"a\\nb\"}\n]\n[\n]\n");
}

TEST_F(SqlTest, NamesAndTypesOfEveryKindOfStatement)
{
    const struct
    {
        std::string sql;
        std::string json; // of its last statement
    } cases[] = {
        {"SELECT 1 AS a, '2' AS a, 3 AS \"a b\"", R"({"a": 1, "a:1": "2", "a b": 3})"},
        {"WITH n (x) AS (VALUES (1), ('2')) SELECT x FROM n ORDER BY x DESC LIMIT 1 -- the end", R"({"x": "2"})"},
        {"VALUES (1, NULL)", R"({"column1": 1, "column2": null})"},
        {"SELECT count(*) FROM t", "{\"count(*)\": 6}"},
        {"PRAGMA user_version = 7; PRAGMA main.user_version", R"({"user_version": 7})"},
        {"PRAGMA table_info(t)",
         R"({"cid": 0, "name": "id", "type": "INTEGER", "notnull": 0, "dflt_value": null, "pk": 1})"},
        {"EXPLAIN QUERY PLAN SELECT * FROM t", R"("notused": 0, "detail": "SCAN t"})"},
        {"INSERT INTO t (a) VALUES ('x') RETURNING id, a AS q, NULL", R"({"id": 7, "q": "x", "NULL": null})"},
        {"WITH n AS (SELECT 1) UPDATE OR REPLACE main.t AS u SET b = x'61' WHERE id = 1 RETURNING t.b",
         R"({"b": "61"})"},
        {"DELETE FROM t WHERE id = 2 RETURNING *", R"({"id": 2, "a": 2.5, "b": 42})"}, // inferred: b is a text
        {"CREATE TEMP VIEW \"hynhost columns\" AS SELECT 1; SELECT 2 AS x", R"({"column 1": 2})"},
        {"PRAGMA query_only = 1; SELECT 'x' AS x", R"({"column 1": "x"})"},
    };
    for (const auto& [sql, json] : cases)
    {
        const HostOutcome outcome = Sql({"--json", ":memory:", kTypes, sql});
        EXPECT_TRUE(Shows(outcome.out, json)) << sql << "\n" << outcome.err;
    }
}

TEST_F(SqlTest, ComputesEachValueOnce)
{
    // A second look at a random value would find another type half of the time.
    const HostOutcome outcome = Sql({"--csv", ":memory:",
                                     "WITH n (k) AS (VALUES (1) UNION ALL SELECT k + 1 FROM n WHERE k < 200)"
                                     " SELECT CASE abs(random()) % 2 WHEN 0 THEN 'text' ELSE 7 END AS x FROM n"});
    std::string rest = outcome.out.substr(3);
    for (const std::string row : {"text\r\n", "7\r\n"})
    {
        for (std::size_t at = rest.find(row); at != std::string::npos; at = rest.find(row))
            rest.erase(at, row.size());
    }
    EXPECT_EQ(rest, "");
}

TEST_F(SqlTest, ErrorsNameTheStatementTheCodeAndThePlace)
{
    ASSERT_EQ(Sql({"--create", Database(), kTypes}).status, 0);
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"SELECT 1", "\n\nSELECT 2; SELEC 3"}, "argument 2, line 3: preparing failed with HYN_E_FAIL: SELEC 3"},
        {{"INSERT INTO t (id) VALUES (1)"}, "argument 1, line 1: stepping to row 1 failed with HYN_E_SQSTEP: INSERT"},
        {{"SELECT abs(CASE id WHEN 3 THEN -9223372036854775808 END) FROM t"},
         "stepping to row 3 failed with HYN_E_SQSTEP: SELECT abs("},
    };
    for (const auto& [texts, message] : cases)
    {
        std::vector<std::string> arguments{"--json", Database()};
        arguments.insert(arguments.end(), texts.begin(), texts.end());
        const HostOutcome outcome = Sql(arguments);
        EXPECT_TRUE(Fails(outcome, message) && Fails(outcome, "hynhost: ")) << outcome.err;
        EXPECT_FALSE(Shows(outcome.out, "SELEC")) << "errors go to standard error";
    }
    EXPECT_TRUE(Shows(Sql({Database(), "SELECT 1 AS before; SELEC 2"}).out, "before")) << "what ran is shown";
    EXPECT_EQ(Sql({}).status, 2);
    EXPECT_EQ(Sql({"--csv", "--json", Database(), "SELECT 1"}).status, 2);
}

TEST_F(SqlTest, FilesThatCannotBeUsedAreNamedAndNoneIsMade)
{
    const std::string missing = Path("missing.db").string();
    EXPECT_TRUE(Shows(Sql({missing, "SELECT 1"}).err, "cannot open the database " + missing));
    EXPECT_FALSE(std::filesystem::exists(missing));
    EXPECT_TRUE(Shows(Sql({Path(""), "SELECT 1"}).err, "it is not a regular file"));
    EXPECT_TRUE(Shows(Sql({HALYON_SCRIPTS "/make-tree", "SELECT 1"}).err, "it is not a database"));
    EXPECT_EQ(Sql({":memory:", "SELECT '\xff'"}).status, 1) << "not UTF-8";
    if (!HalyonTest::CanRunAsSomebodyElse())
        return;
    ASSERT_EQ(Sql({"--create", Database(), kTypes}).status, 0);
    ASSERT_EQ(chmod(Path("").c_str(), 0755), 0);
    EXPECT_EQ(Sql({"--csv", Database(), "SELECT max(id) AS n FROM t"}, {.user = 65534}).out, "n\r\n6\r\n");
    EXPECT_TRUE(Shows(Sql({Database(), "DELETE FROM t"}, {.user = 65534}).err, "HYN_E_"));
}

TEST_F(SqlTest, TransactionsSpanTextsAndAnOpenOneIsReported)
{
    const std::string rows = "SELECT count(*) AS n FROM t";
    ASSERT_EQ(Sql({"--create", Database(), kTypes}).status, 0);
    EXPECT_EQ(Sql({Database(), "BEGIN", "DELETE FROM t WHERE id = 1; COMMIT"}).err, "");
    EXPECT_TRUE(Shows(Sql({Database(), "BEGIN; DELETE FROM t"}).err, "the transaction was not committed"));
    EXPECT_EQ(Sql({"--csv", Database(), rows}).out, "n\r\n5\r\n");
}

TEST_F(SqlTest, DashReadsStandardInput)
{
    const HostOutcome outcome = Sql({"--csv", ":memory:", "CREATE TABLE t (x)", "-", "SELECT 'after' AS y"},
                                    {.input = "INSERT INTO t VALUES (1), (2);\nSELECT sum(x) AS s FROM t;\n-- done"});
    EXPECT_EQ(outcome.out, "s\r\n3\r\n\r\ny\r\nafter\r\n");
    EXPECT_TRUE(Shows(Sql({":memory:", "-"}, {.input = "SELECT 1;\nSELEC"}).err, "standard input, line 2: "));
}

TEST_F(SqlTest, OutputThatCannotBeWrittenIsAFailure)
{
    EXPECT_EQ(WEXITSTATUS(std::system("'" HYNHOST "' sql :memory: 'SELECT 1' >/dev/full 2>&1")), 1);
}
