// The reference: the engine's own 16-bit interface, as a careful program would use it.
#include <cstring>
#include <memory>
#include <stdexcept>

#include <sqlite3.h>

#include "Contender.h"

namespace Bench
{
namespace
{
[[noreturn]] void Fail(sqlite3* database, const char* action)
{
    throw std::runtime_error(std::string("raw: ") + action + ": " + sqlite3_errmsg(database));
}

struct Closer
{
    void operator()(sqlite3* database) const noexcept { sqlite3_close(database); }
    void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, Closer>;
using Statement = std::unique_ptr<sqlite3_stmt, Closer>;

Database Open(const std::string& file)
{
    sqlite3* database = nullptr;
    const int code = sqlite3_open16(Widen(file).c_str(), &database);
    Database owner(database);
    if (code != SQLITE_OK)
        Fail(database, "open");
    return owner;
}

Statement Prepare(sqlite3* database, const char16_t* sql)
{
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare16(database, sql, -1, &statement, nullptr) != SQLITE_OK)
        Fail(database, "prepare");
    return Statement(statement);
}

void Execute(sqlite3* database, const char16_t* sql)
{
    const Statement statement = Prepare(database, sql);
    const int code = sqlite3_step(statement.get());
    if (code != SQLITE_DONE && code != SQLITE_ROW)
        Fail(database, "execute");
}

void CopyText(sqlite3_stmt* statement, int column, std::span<char16_t> buffer)
{
    const void* text = sqlite3_column_text16(statement, column);
    const auto bytes = static_cast<std::size_t>(sqlite3_column_bytes16(statement, column));
    if (text == nullptr || bytes + sizeof(char16_t) > buffer.size_bytes())
        throw std::runtime_error("raw: text does not fit");
    std::memcpy(buffer.data(), text, bytes + sizeof(char16_t));
}

void CopyBlob(sqlite3_stmt* statement, int column, std::span<unsigned char> buffer)
{
    const void* blob = sqlite3_column_blob(statement, column);
    const auto bytes = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    if (bytes > buffer.size())
        throw std::runtime_error("raw: blob does not fit");
    std::memcpy(buffer.data(), blob, bytes);
}

// Which column is which; in table order for reading by position.
using Columns = std::array<int, 6>;
constexpr Columns kInOrder{0, 1, 2, 3, 4, 5};

void Read(sqlite3_stmt* statement, const Columns& columns, Record& record)
{
    record.id = sqlite3_column_int64(statement, columns[0]);
    CopyText(statement, columns[1], record.path);
    record.size = sqlite3_column_int64(statement, columns[2]);
    record.taken = sqlite3_column_double(statement, columns[3]);
    record.rating = sqlite3_column_int(statement, columns[4]);
    CopyBlob(statement, columns[5], record.print);
}

int FindColumn(sqlite3_stmt* statement, const std::u16string& name)
{
    for (int column = 0; column < sqlite3_column_count(statement); ++column)
    {
        if (name == static_cast<const char16_t*>(sqlite3_column_name16(statement, column)))
            return column;
    }
    throw std::runtime_error("raw: no such column");
}

Columns FindColumns(sqlite3_stmt* statement)
{
    return {FindColumn(statement, u"id"),    FindColumn(statement, u"path"),   FindColumn(statement, u"size"),
            FindColumn(statement, u"taken"), FindColumn(statement, u"rating"), FindColumn(statement, u"print")};
}

void Bind(sqlite3_stmt* statement, const Record& record)
{
    sqlite3_bind_int64(statement, 1, record.id);
    sqlite3_bind_text16(statement, 2, record.path.data(), static_cast<int>(record.pathUnits * sizeof(char16_t)),
                        SQLITE_STATIC);
    sqlite3_bind_int64(statement, 3, record.size);
    sqlite3_bind_double(statement, 4, record.taken);
    sqlite3_bind_int(statement, 5, record.rating);
    sqlite3_bind_blob(statement, 6, record.print.data(), kPrintSize, SQLITE_STATIC);
}

void Scan(const std::string& file, std::size_t rows, Digest& digest, bool byName)
{
    const Database database = Open(file);
    const Statement statement = Prepare(database.get(), Widen(kScan).c_str());
    const Columns columns = byName ? FindColumns(statement.get()) : kInOrder;
    Record record;
    for (; rows != 0 && sqlite3_step(statement.get()) == SQLITE_ROW; --rows)
    {
        Read(statement.get(), columns, record);
        digest.Add(record);
    }
}

class Raw : public Contender
{
public:
    [[nodiscard]] bool SpeaksUTF16() const override { return true; }

    void Insert(const std::string& file, std::span<const Record> records) override
    {
        const Database database = Open(file);
        Execute(database.get(), Widen(kFast).c_str());
        Execute(database.get(), Widen(kBegin).c_str());
        const Statement statement = Prepare(database.get(), Widen(kInsert).c_str());
        for (const Record& record : records)
        {
            Bind(statement.get(), record);
            if (sqlite3_step(statement.get()) != SQLITE_DONE)
                Fail(database.get(), "insert");
            sqlite3_reset(statement.get());
        }
        Execute(database.get(), Widen(kCommit).c_str());
    }

    void ScanByIndex(const std::string& file, std::size_t rows, Digest& digest) override
    {
        Scan(file, rows, digest, false);
    }

    void ScanByName(const std::string& file, std::size_t rows, Digest& digest) override
    {
        Scan(file, rows, digest, true);
    }

    void PointQueries(const std::string& file, std::span<const std::int64_t> ids, Digest& digest) override
    {
        const Database database = Open(file);
        const Statement statement = Prepare(database.get(), Widen(kPoint).c_str());
        Record record;
        for (const std::int64_t id : ids)
        {
            sqlite3_bind_int64(statement.get(), 1, id);
            if (sqlite3_step(statement.get()) != SQLITE_ROW)
                Fail(database.get(), "query");
            Read(statement.get(), kInOrder, record);
            digest.Add(record);
            sqlite3_reset(statement.get());
        }
    }

    void OneShots(const std::string& file, std::span<const std::u16string> texts) override
    {
        const Database database = Open(file);
        Execute(database.get(), Widen(kFast).c_str());
        Execute(database.get(), Widen(kBegin).c_str());
        for (const std::u16string& text : texts)
            Execute(database.get(), text.c_str());
        Execute(database.get(), Widen(kCommit).c_str());
    }

    void ScanWide(const std::string& file, std::size_t rows, Digest& digest) override
    {
        const Database database = Open(file);
        const Statement statement = Prepare(database.get(), Widen(kWideScan).c_str());
        std::array<int, kWideColumns> columns{};
        for (const int column : WideOrder())
            columns[static_cast<std::size_t>(column)] = FindColumn(statement.get(), Widen(WideName(column)));

        WideRecord record;
        for (; rows != 0 && sqlite3_step(statement.get()) == SQLITE_ROW; --rows)
        {
            for (const int wanted : WideOrder())
            {
                const int column = columns[static_cast<std::size_t>(wanted)];
                ReadWide(
                    wanted, record, [&](std::int64_t& value) { value = sqlite3_column_int64(statement.get(), column); },
                    [&](double& value) { value = sqlite3_column_double(statement.get(), column); },
                    [&](std::span<char16_t> buffer) { CopyText(statement.get(), column, buffer); });
            }
            digest.Add(record);
        }
    }

    void OpenOneRow(const std::string& file, std::size_t count, Digest& digest) override
    {
        const Database database = Open(file);
        const std::u16string sql = Widen(kScan);
        Record record;
        for (; count != 0; --count)
        {
            const Statement statement = Prepare(database.get(), sql.c_str());
            const Columns columns = FindColumns(statement.get());
            if (sqlite3_step(statement.get()) != SQLITE_ROW)
                Fail(database.get(), "query");
            Read(statement.get(), columns, record);
            digest.Add(record);
        }
    }
};
} // namespace

std::unique_ptr<Contender> MakeRaw()
{
    return std::make_unique<Raw>();
}
} // namespace Bench
