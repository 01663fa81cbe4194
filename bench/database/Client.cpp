// The module through the client's headers, as a program of today would be written.
#include <halyon/client/HynSQ.h>

#include "Contender.h"

namespace Bench
{
namespace
{
using namespace Halyon;

using Reader = void (*)(const Client::Row&, Record&);

void ReadByIndex(const Client::Row& row, Record& record)
{
    row.read(0, record.id);
    row.read(1, std::span(record.path));
    row.read(2, record.size);
    row.read(3, record.taken);
    row.read(4, record.rating);
    row.read(5, std::as_writable_bytes(std::span(record.print)));
}

void ReadByName(const Client::Row& row, Record& record)
{
    row.read(u"id", record.id);
    row.read(u"path", std::span(record.path));
    row.read(u"size", record.size);
    row.read(u"taken", record.taken);
    row.read(u"rating", record.rating);
    row.read(u"print", std::as_writable_bytes(std::span(record.print)));
}

void ReadValues(const Client::Row& row, Record& record)
{
    record.id = row.get<std::int64_t>(0);
    const auto text = row.get<std::string>(1);
    record.size = row.get<std::int64_t>(2);
    record.taken = row.get<double>(3);
    record.rating = row.get<std::int32_t>(4);
    const auto print = row.get<std::vector<std::byte>>(5);
    Fill(record, text, print);
}

void Scan(const Client::Connection& connection, Reader read, std::size_t count, Digest& digest)
{
    Record record;
    Client::Rows rows = connection.query(kScan);
    for (const auto& row : rows)
    {
        read(row, record);
        digest.Add(record);
        if (--count == 0)
            break;
    }
}

class ClientContender : public Contender
{
public:
    explicit ClientContender(const std::string& module) : m_module(module) {}

    [[nodiscard]] bool SpeaksUTF16() const override { return true; }

    void Insert(const std::string& file, std::span<const Record> records) override
    {
        InsertWith(file, records,
                   [](Client::Command& insert, const Record& record)
                   {
                       insert.execute(record.id, record.path.data(), record.size, record.taken, record.rating,
                                      std::as_bytes(std::span(record.print)));
                   });
    }

    void ScanByIndex(const std::string& file, std::size_t rows, Digest& digest) override
    {
        Scan({m_module, file}, ReadByIndex, rows, digest);
    }

    void ScanByName(const std::string& file, std::size_t rows, Digest& digest) override
    {
        Scan({m_module, file}, ReadByName, rows, digest);
    }

    void PointQueries(const std::string& file, std::span<const std::int64_t> ids, Digest& digest) override
    {
        const Client::Connection connection(m_module, file);
        Client::Command point = connection.prepare(kPoint);
        Record record;
        for (const std::int64_t id : ids)
        {
            ReadByIndex(point.query(id).row(), record);
            digest.Add(record);
        }
    }

    void OneShots(const std::string& file, std::span<const std::u16string> texts) override
    {
        const Client::Connection connection(m_module, file);
        connection.execute(kFast);
        Client::Transaction transaction(connection);
        for (const std::u16string& text : texts)
            connection.execute(text);
        transaction.commit();
    }

    void ScanWide(const std::string& file, std::size_t rows, Digest& digest) override
    {
        std::array<std::u16string, kWideColumns> names;
        for (int column = 0; column < kWideColumns; ++column)
            names[static_cast<std::size_t>(column)] = Widen(WideName(column));

        const Client::Connection connection(m_module, file);
        WideRecord record;
        for (const auto& row : connection.query(kWideScan))
        {
            for (const int column : WideOrder())
            {
                const char16_t* name = names[static_cast<std::size_t>(column)].c_str();
                ReadWide(
                    column, record, [&](std::int64_t& value) { row.read(name, value); },
                    [&](double& value) { row.read(name, value); },
                    [&](std::span<char16_t> buffer) { row.read(name, buffer); });
            }
            digest.Add(record);
            if (--rows == 0)
                break;
        }
    }

    void ScanOnTwoThreads(const std::string& file, std::size_t rows, std::span<Digest, 2> digests) override
    {
        const Client::Connection connection(m_module, file);
        OnTwoThreads([&] { Scan(connection, ReadByIndex, rows, digests[0]); },
                     [&] { Scan(connection, ReadByIndex, rows, digests[1]); });
    }

    void OpenOneRow(const std::string& file, std::size_t count, Digest& digest) override
    {
        const Client::Connection connection(m_module, file);
        const std::u16string sql = Widen(kScan);
        Record record;
        for (; count != 0; --count)
        {
            ReadByName(connection.query(sql).row(), record);
            digest.Add(record);
        }
    }

protected:
    template <class InsertOne>
    void InsertWith(const std::string& file, std::span<const Record> records, InsertOne insertOne) const
    {
        const Client::Connection connection(m_module, file);
        connection.execute(kFast);
        Client::Transaction transaction(connection);
        Client::Command insert = connection.prepare(kInsert);
        for (const Record& record : records)
            insertOne(insert, record);
        insert = {};
        transaction.commit();
    }

    const Client::Module m_module;
};

class ClientByValue : public ClientContender
{
public:
    using ClientContender::ClientContender;

    void Insert(const std::string& file, std::span<const Record> records) override
    {
        InsertWith(file, records,
                   [](Client::Command& insert, const Record& record)
                   {
                       insert.bind(0, record.id).bind(1, record.path.data()).bind(2, record.size);
                       insert.bind(3, record.taken).bind(4, record.rating);
                       insert.bind(5, std::as_bytes(std::span(record.print))).execute();
                   });
    }

    void ScanByIndex(const std::string& file, std::size_t rows, Digest& digest) override
    {
        Scan({m_module, file}, ReadValues, rows, digest);
    }
};
} // namespace

std::unique_ptr<Contender> MakeClient(const std::string& module)
{
    return std::make_unique<ClientContender>(module);
}

std::unique_ptr<Contender> MakeClientByValue(const std::string& module)
{
    return std::make_unique<ClientByValue>(module);
}
} // namespace Bench
