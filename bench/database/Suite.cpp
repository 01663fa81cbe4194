#include "Suite.h"

#include <random>
#include <stdexcept>

#include <sqlite3.h>

namespace Bench
{
namespace
{
struct Closer
{
    void operator()(sqlite3* database) const noexcept { sqlite3_close(database); }
    void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};

// The suite's own handle on a file, apart from every contender's.
class Engine
{
public:
    explicit Engine(const std::string& file)
    {
        sqlite3* database = nullptr;
        const int code = sqlite3_open(file.c_str(), &database);
        m_database.reset(database);
        Check(code);
    }

    void Execute(const std::string& sql) const
    {
        Check(sqlite3_exec(m_database.get(), sql.c_str(), nullptr, nullptr, nullptr));
    }

    [[nodiscard]] std::unique_ptr<sqlite3_stmt, Closer> Prepare(const std::string& sql) const
    {
        sqlite3_stmt* statement = nullptr;
        Check(sqlite3_prepare_v2(m_database.get(), sql.c_str(), -1, &statement, nullptr));
        return std::unique_ptr<sqlite3_stmt, Closer>(statement);
    }

private:
    void Check(int code) const
    {
        if (code != SQLITE_OK)
            throw std::runtime_error(std::string("making the files: ") + sqlite3_errmsg(m_database.get()));
    }

    std::unique_ptr<sqlite3, Closer> m_database;
};

std::string WideColumns(bool typed)
{
    constexpr std::array kTypes{" BIGINT", " DOUBLE", " TEXT"};
    std::string text;
    for (int column = 0; column < kWideColumns; ++column)
        text +=
            (column == 0 ? "" : ", ") + WideName(column) + (typed ? kTypes[static_cast<std::size_t>(column % 3)] : "");
    return text;
}

std::size_t OperationsOf(std::size_t operations, const std::map<std::string, std::size_t>& fewerBy,
                         const std::string& work)
{
    const auto found = fewerBy.find(work);
    return found != fewerBy.end() ? operations / found->second : operations;
}

template <class RowAt>
std::uint64_t SumOf(std::size_t count, bool complete, RowAt rowAt)
{
    Digest digest(complete);
    for (std::size_t i = 0; i < count; ++i)
        digest.Add(rowAt(i));
    return digest.Value();
}

[[noreturn]] void Differs(const std::string& work, const std::string& contender)
{
    throw std::runtime_error(work + ": what " + contender + " delivered differs from what was stored");
}
} // namespace

Suite::Suite(std::filesystem::path folder, std::size_t part)
    : m_folder(std::move(folder)), m_opens(20'000 / part), m_records(MakeRecords(200'000 / part)),
      m_wide(MakeWideRecords(10'000 / part)), m_texts(MakeInsertTexts(50'000 / part)), m_ids(50'000 / part)
{
    std::mt19937_64 random(1);
    for (std::int64_t& id : m_ids)
        id = static_cast<std::int64_t>(random() % m_records.size()) + 1;
    for (const bool utf16 : {true, false})
    {
        CreateEmpty(Scanned(utf16), utf16);
        MakeRaw()->Insert(Scanned(utf16), m_records);
        FillWide(Scanned(utf16));
    }
}

void Suite::Add(const std::string& name, std::unique_ptr<Contender> contender,
                std::map<std::string, std::size_t> fewerBy)
{
    m_contenders.push_back({name, std::move(contender), std::move(fewerBy)});
}

std::vector<Work> Suite::Works() const
{
    const auto insert = [this](Contender& contender, const std::string& file, std::size_t rows, Sums&)
    {
        contender.Insert(file, {m_records.data(), rows});
    };
    const auto byIndex = [](Contender& contender, const std::string& file, std::size_t rows, Sums& sums)
    {
        contender.ScanByIndex(file, rows, sums[0]);
    };
    const auto byName = [](Contender& contender, const std::string& file, std::size_t rows, Sums& sums)
    {
        contender.ScanByName(file, rows, sums[0]);
    };
    const auto queries = [this](Contender& contender, const std::string& file, std::size_t count, Sums& sums)
    {
        contender.PointQueries(file, {m_ids.data(), count}, sums[0]);
    };
    const auto oneShots = [this](Contender& contender, const std::string& file, std::size_t count, Sums&)
    {
        contender.OneShots(file, {m_texts.data(), count});
    };
    const auto twoThreads = [](Contender& contender, const std::string& file, std::size_t rows, Sums& sums)
    {
        contender.ScanOnTwoThreads(file, rows, sums);
    };
    const auto wide = [](Contender& contender, const std::string& file, std::size_t rows, Sums& sums)
    {
        contender.ScanWide(file, rows, sums[0]);
    };
    const auto open = [](Contender& contender, const std::string& file, std::size_t count, Sums& sums)
    {
        contender.OpenOneRow(file, count, sums[0]);
    };
    return {
        Writing({"insert", "rows", m_records.size(), 1.03}, insert, &Suite::CheckInserted),
        Reading({"scan by index", "rows", m_records.size(), 1.00}, byIndex, &Suite::RecordSum),
        Reading({"scan by name", "rows", m_records.size(), 1.05}, byName, &Suite::RecordSum),
        Reading({"point query", "queries", m_ids.size(), 1.02}, queries, &Suite::QuerySum),
        Writing({"one-shot texts", "texts", m_texts.size(), 1.00}, oneShots, &Suite::CheckOneShots),
        Reading({"two threads scanning", "rows", m_records.size(), 1.02, 2}, twoThreads, &Suite::RecordSum),
        Reading({"60 columns by name", "rows", m_wide.size(), 1.05}, wide, &Suite::WideSum),
        Reading({"open, one row by name", "record sets", m_opens, 0}, open, &Suite::FirstRowSum),
    };
}

Work Suite::Reading(const Task& task, const Body& body, Expected expected) const
{
    Work work{task.name, task.unit, task.target, {}};
    for (const Named& named : m_contenders)
    {
        const std::size_t operations = OperationsOf(task.operations, named.fewerBy, task.name);
        if (operations == 0)
            continue;
        Contender* contender = named.contender.get();
        const std::string file = Scanned(contender->SpeaksUTF16());
        const auto sums = std::make_shared<Sums>(Sums{Digest(false), Digest(false)});
        work.turns.push_back({named.name, operations,
                              [sums](bool complete) {
                                  *sums = {Digest(complete), Digest(complete)};
                              },
                              [=] { body(*contender, file, operations, *sums); },
                              [=, this, &named]
                              {
                                  for (std::size_t thread = 0; thread < task.threads; ++thread)
                                  {
                                      const Digest& sum = (*sums)[thread];
                                      if (sum.Value() != (this->*expected)(operations, sum.IsComplete()))
                                          Differs(task.name, named.name);
                                  }
                              }});
    }
    return work;
}

Work Suite::Writing(const Task& task, const Body& body, Check check) const
{
    Work work{task.name, task.unit, task.target, {}};
    for (const Named& named : m_contenders)
    {
        const std::size_t operations = OperationsOf(task.operations, named.fewerBy, task.name);
        Contender* contender = named.contender.get();
        const std::string file = Written();
        work.turns.push_back({named.name, operations, [=, this](bool) { CreateEmpty(file, contender->SpeaksUTF16()); },
                              [=]
                              {
                                  Sums none{Digest(false), Digest(false)};
                                  body(*contender, file, operations, none);
                              },
                              [=, this]
                              {
                                  (this->*check)(operations);
                              }});
    }
    return work;
}

void Suite::CreateEmpty(const std::string& file, bool utf16) const
{
    std::filesystem::remove(file);
    const Engine engine(file);
    engine.Execute(utf16 ? "PRAGMA encoding = 'UTF-16le'" : "PRAGMA encoding = 'UTF-8'");
    engine.Execute("CREATE TABLE media (id INTEGER PRIMARY KEY, path TEXT, size BIGINT, taken DOUBLE, rating INTEGER,"
                   " print BLOB);"
                   "CREATE TABLE note (id INTEGER PRIMARY KEY, path TEXT, size BIGINT, rating INTEGER);"
                   "CREATE TABLE wide (" +
                   WideColumns(true) + ")");
}

void Suite::FillWide(const std::string& file) const
{
    const Engine engine(file);
    engine.Execute("BEGIN");
    std::string marks = "?";
    for (int column = 1; column < kWideColumns; ++column)
        marks += ", ?";
    const auto insert = engine.Prepare("INSERT INTO wide (" + WideColumns(false) + ") VALUES (" + marks + ")");
    for (const WideRecord& record : m_wide)
    {
        for (std::size_t i = 0; i < kWideThird; ++i)
        {
            const int index = static_cast<int>(i) * 3 + 1;
            sqlite3_bind_int64(insert.get(), index, record.numbers[i]);
            sqlite3_bind_double(insert.get(), index + 1, record.reals[i]);
            sqlite3_bind_text16(insert.get(), index + 2, record.texts[i].data(), -1, SQLITE_STATIC);
        }
        sqlite3_step(insert.get());
        sqlite3_reset(insert.get());
    }
    engine.Execute("COMMIT");
}

std::uint64_t Suite::RecordSum(std::size_t rows, bool complete) const
{
    return SumOf(
        rows, complete, [&](std::size_t row) -> auto& { return m_records[row]; });
}

std::uint64_t Suite::QuerySum(std::size_t count, bool complete) const
{
    return SumOf(
        count, complete, [&](std::size_t i) -> auto& { return m_records[static_cast<std::size_t>(m_ids[i] - 1)]; });
}

std::uint64_t Suite::WideSum(std::size_t rows, bool complete) const
{
    return SumOf(
        rows, complete, [&](std::size_t row) -> auto& { return m_wide[row]; });
}

std::uint64_t Suite::FirstRowSum(std::size_t count, bool complete) const
{
    return SumOf(
        count, complete, [&](std::size_t) -> auto& { return m_records.front(); });
}

void Suite::CheckInserted(std::size_t rows) const
{
    Digest digest(true);
    MakeRaw()->ScanByIndex(Written(), m_records.size(), digest);
    if (digest.Value() != RecordSum(rows, true))
        throw std::runtime_error("insert: the rows in the file are not those that were given");
}

void Suite::CheckOneShots(std::size_t count) const
{
    const Engine engine(Written());
    const auto query = engine.Prepare("SELECT id, path, size, rating FROM note ORDER BY id");
    std::size_t row = 0;
    for (; sqlite3_step(query.get()) == SQLITE_ROW; ++row)
    {
        const Record& record = m_records.at(row);
        const auto* path = static_cast<const char16_t*>(sqlite3_column_text16(query.get(), 1));
        if (sqlite3_column_int64(query.get(), 0) != record.id || std::u16string_view(path) != record.path.data() ||
            sqlite3_column_int64(query.get(), 2) != record.size || sqlite3_column_int(query.get(), 3) != record.rating)
            break;
    }
    if (row != count)
        throw std::runtime_error("one-shot texts: the rows in the file are not those that were given");
}
} // namespace Bench
