#include <host/SqlCommand.h>

#include <cstddef>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

#include <host/DatabaseFile.h>
#include <host/DisplayWidth.h>
#include <host/HostError.h>
#include <host/PrintableText.h>
#include <host/SqlPrinter.h>

namespace HynHost
{
namespace
{
struct Options
{
    std::string file;
    std::vector<std::string> texts;
    bool create = false;
    bool csv = false;
    bool json = false;
};

// One text of the command line, or standard input.
struct Script
{
    std::string name; // "argument 2"
    std::vector<SqlStatement> statements;
};

std::string ReadStandardInput()
{
    std::string text{std::istreambuf_iterator<char>(std::cin), {}};
    if (std::cin.bad())
        throw HostError("cannot read standard input");
    return text;
}

std::vector<Script> ReadScripts(const std::vector<std::string>& texts)
{
    std::vector<Script> scripts;
    for (std::size_t k = 0; k < texts.size(); ++k)
    {
        const bool input = texts[k] == "-";
        std::string name = input ? "standard input" : "argument " + std::to_string(k + 1);
        const std::string text = input ? ReadStandardInput() : texts[k];
        if (!IsUTF8(text) || text.find('\0') != std::string::npos)
            throw HostError("cannot run the SQL text of " + name + ": it is not UTF-8, or holds a zero byte");
        scripts.push_back({std::move(name), SplitStatements(text)});
    }
    return scripts;
}

std::string FileToOpen(const Options& options)
{
    if (options.file == ":memory:")
        return options.file;
    constexpr std::string_view kAction = "cannot open the database";
    if (IsEngineName(options.file))
        return EngineName(kAction, options.file, options.create);
    const DatabaseFile file = LookAtDatabaseFile(kAction, options.file);
    if (!file.exists && !options.create)
        throw HostError(kAction, file.path, "there is no such file; --create makes one");
    return file.path;
}

void RunStatement(Database& database, const Script& script, const SqlStatement& statement, SqlForm form, bool& first)
{
    constexpr int kShown = 200; // columns of the statement in a message
    try
    {
        SqlResult result(database, statement);
        if (result.Names().empty())
            return;
        PrintSqlResult(result, form, first);
        first = false;
    }
    catch (const SqlError& error)
    {
        throw HostError(script.name + ", line " + std::to_string(statement.line) + ": " + error.what() + ": " +
                        ShortenMiddle(PrintableText(statement.text), kShown));
    }
}

// A transaction that the statements began and did not end goes with the connection: that must not go unnoticed.
void EndTransaction(Database& database)
{
    if (Halyon::HynSucceeded(database.interface()->RollbackTrans()))
        std::fputs("hynhost: the transaction was not committed; what it changed is undone\n", stderr);
}

void RunSql(const Options& options)
{
    const SqlForm form = options.csv ? SqlForm::Csv : options.json ? SqlForm::Json : SqlForm::Table;
    const std::vector<Script> scripts = ReadScripts(options.texts);
    Database database(FileToOpen(options));
    bool first = true;
    try
    {
        for (const Script& script : scripts)
        {
            for (const SqlStatement& statement : script.statements)
                RunStatement(database, script, statement, form, first);
        }
    }
    catch (const std::exception&)
    {
        std::fflush(stdout);
        EndTransaction(database);
        throw;
    }
    EndTransaction(database);
}
} // namespace

void AddSqlCommand(CLI::App& app)
{
    auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("sql", "Run SQL statements on a database file");
    command->add_option("FILE", options->file, "The database file, or :memory:")->required();
    command->add_option("SQL", options->texts, "Texts of one or more statements; - reads them from standard input")
        ->required();
    command->add_flag("--create", options->create, "Make the file when there is none");
    CLI::Option* csv = command->add_flag("--csv", options->csv, "Print CSV; blobs as hexadecimal digits");
    command->add_flag("--json", options->json, "Print one array of objects for each statement with rows")
        ->excludes(csv);
    command->callback([options] { RunSql(*options); });
}
} // namespace HynHost
