// SQLiteCpp: UTF-8 throughout.
#include <cstring>
#include <stdexcept>

#include <SQLiteCpp/SQLiteCpp.h>

#include "Contender.h"

namespace Bench
{
namespace
{
void CopyText(const SQLite::Column& column, std::span<char16_t> buffer)
{
    const char* text = column.getText();
    if (!ToUTF16({text, static_cast<std::size_t>(column.getBytes())}, buffer))
        throw std::runtime_error("SQLiteCpp: text does not fit");
}

void CopyBlob(const SQLite::Column& column, std::span<unsigned char> buffer)
{
    const void* blob = column.getBlob();
    const auto bytes = static_cast<std::size_t>(column.getBytes());
    if (bytes > buffer.size())
        throw std::runtime_error("SQLiteCpp: blob does not fit");
    std::memcpy(buffer.data(), blob, bytes);
}

void ReadByIndex(SQLite::Statement& query, Record& record)
{
    record.id = query.getColumn(0).getInt64();
    CopyText(query.getColumn(1), record.path);
    record.size = query.getColumn(2).getInt64();
    record.taken = query.getColumn(3).getDouble();
    record.rating = query.getColumn(4).getInt();
    CopyBlob(query.getColumn(5), record.print);
}

void ReadByName(SQLite::Statement& query, Record& record)
{
    record.id = query.getColumn("id").getInt64();
    CopyText(query.getColumn("path"), record.path);
    record.size = query.getColumn("size").getInt64();
    record.taken = query.getColumn("taken").getDouble();
    record.rating = query.getColumn("rating").getInt();
    CopyBlob(query.getColumn("print"), record.print);
}

void Scan(const std::string& file, void (*read)(SQLite::Statement&, Record&), std::size_t rows, Digest& digest)
{
    const SQLite::Database database(file, SQLite::OPEN_READWRITE);
    SQLite::Statement query(database, kScan);
    Record record;
    for (; rows != 0 && query.executeStep(); --rows)
    {
        read(query, record);
        digest.Add(record);
    }
}

class SqliteCpp : public Contender
{
public:
    [[nodiscard]] bool SpeaksUTF16() const override { return false; }

    void Insert(const std::string& file, std::span<const Record> records) override
    {
        SQLite::Database database(file, SQLite::OPEN_READWRITE);
        database.exec(kFast);
        database.exec(kBegin);
        SQLite::Statement insert(database, kInsert);
        for (const Record& record : records)
        {
            const std::string path = ToUTF8(record.path.data());
            insert.bind(1, record.id);
            insert.bindNoCopy(2, path);
            insert.bind(3, record.size);
            insert.bind(4, record.taken);
            insert.bind(5, record.rating);
            insert.bindNoCopy(6, record.print.data(), kPrintSize);
            insert.exec();
            insert.reset();
        }
        database.exec(kCommit);
    }

    void ScanByIndex(const std::string& file, std::size_t rows, Digest& digest) override
    {
        Scan(file, ReadByIndex, rows, digest);
    }

    void ScanByName(const std::string& file, std::size_t rows, Digest& digest) override
    {
        Scan(file, ReadByName, rows, digest);
    }

    void PointQueries(const std::string& file, std::span<const std::int64_t> ids, Digest& digest) override
    {
        const SQLite::Database database(file, SQLite::OPEN_READWRITE);
        SQLite::Statement query(database, kPoint);
        Record record;
        for (const std::int64_t id : ids)
        {
            query.bind(1, id);
            if (!query.executeStep())
                throw std::runtime_error("SQLiteCpp: no such row");
            ReadByIndex(query, record);
            digest.Add(record);
            query.reset();
        }
    }

    void OneShots(const std::string& file, std::span<const std::u16string> texts) override
    {
        SQLite::Database database(file, SQLite::OPEN_READWRITE);
        database.exec(kFast);
        database.exec(kBegin);
        for (const std::u16string& text : texts)
            database.exec(ToUTF8(text.c_str()));
        database.exec(kCommit);
    }

    void ScanWide(const std::string& file, std::size_t rows, Digest& digest) override
    {
        const std::array<std::string, kWideColumns> names = WideNames();
        const SQLite::Database database(file, SQLite::OPEN_READWRITE);
        SQLite::Statement query(database, kWideScan);
        WideRecord record;
        for (; rows != 0 && query.executeStep(); --rows)
        {
            for (const int column : WideOrder())
            {
                const SQLite::Column value = query.getColumn(names[static_cast<std::size_t>(column)].c_str());
                ReadWide(
                    column, record, [&](std::int64_t& number) { number = value.getInt64(); },
                    [&](double& real) { real = value.getDouble(); },
                    [&](std::span<char16_t> buffer) { CopyText(value, buffer); });
            }
            digest.Add(record);
        }
    }
};
} // namespace

std::unique_ptr<Contender> MakeSqliteCpp()
{
    return std::make_unique<SqliteCpp>();
}
} // namespace Bench
