// Poco::Data with its SQLite connector. Its UTF-16 strings are used where it takes them; rows of dynamic type are
// UTF-8.
#include <algorithm>
#include <cstring>
#include <stdexcept>

#include <Poco/Data/RecordSet.h>
#include <Poco/Data/SQLite/Connector.h>
#include <Poco/Data/Session.h>
#include <Poco/Data/Statement.h>

#include "Contender.h"

namespace Bench
{
namespace
{
namespace Data = Poco::Data;
using Data::Keywords::into;
using Data::Keywords::limit;
using Data::Keywords::now;
using Data::Keywords::use;

using Fields = Variables<Poco::Int64, Data::BLOB>;

void CopyTo(const Fields& fields, Record& record)
{
    fields.CopyTo(record);
    std::memcpy(record.print.data(), fields.print.rawContent(), std::min(fields.print.size(), kPrintSize));
}

void CopyText(const Poco::Dynamic::Var& value, std::span<char16_t> buffer)
{
    if (!ToUTF16(value.extract<std::string>(), buffer))
        throw std::runtime_error("Poco: text does not fit");
}

void ReadByName(Data::RecordSet& set, Record& record)
{
    record.id = set["id"].convert<Poco::Int64>();
    CopyText(set["path"], record.path);
    record.size = set["size"].convert<Poco::Int64>();
    record.taken = set["taken"].convert<double>();
    record.rating = set["rating"].convert<int>();
    const auto print = set["print"].extract<Data::BLOB>();
    std::memcpy(record.print.data(), print.rawContent(), std::min(print.size(), kPrintSize));
}

class PocoData : public Contender
{
public:
    PocoData() { Data::SQLite::Connector::registerConnector(); }
    ~PocoData() override { Data::SQLite::Connector::unregisterConnector(); }

    [[nodiscard]] bool SpeaksUTF16() const override { return false; }

    void Insert(const std::string& file, std::span<const Record> records) override
    {
        Data::Session session("SQLite", file);
        session << kFast, now;
        session << kBegin, now;
        Fields v;
        Data::Statement insert(session);
        insert << kInsert, use(v.id), use(v.path), use(v.size), use(v.taken), use(v.rating), use(v.print);
        for (const Record& record : records)
        {
            v.CopyFrom(record);
            v.print.assignRaw(record.print.data(), kPrintSize);
            insert.execute();
        }
        session << kCommit, now;
    }

    void ScanByIndex(const std::string& file, std::size_t rows, Digest& digest) override
    {
        Data::Session session("SQLite", file);
        Fields v;
        Data::Statement query(session);
        query << kScan, into(v.id), into(v.path), into(v.size), into(v.taken), into(v.rating), into(v.print), limit(1);
        Record record;
        for (; rows != 0 && query.execute() != 0; --rows)
        {
            CopyTo(v, record);
            digest.Add(record);
        }
    }

    void ScanByName(const std::string& file, std::size_t rows, Digest& digest) override
    {
        Data::Session session("SQLite", file);
        Data::Statement query(session);
        query << kScan, limit(rows);
        query.execute();
        Data::RecordSet set(query);
        Record record;
        for (bool more = set.moveFirst(); rows != 0 && more; --rows, more = set.moveNext())
        {
            ReadByName(set, record);
            digest.Add(record);
        }
    }

    void PointQueries(const std::string& file, std::span<const std::int64_t> ids, Digest& digest) override
    {
        Data::Session session("SQLite", file);
        Fields v;
        Data::Statement query(session);
        query << kPoint, use(v.wanted), into(v.id), into(v.path), into(v.size), into(v.taken), into(v.rating),
            into(v.print);
        Record record;
        for (const std::int64_t id : ids)
        {
            v.wanted = id;
            if (query.execute() == 0)
                throw std::runtime_error("Poco: no such row");
            CopyTo(v, record);
            digest.Add(record);
        }
    }

    void OneShots(const std::string& file, std::span<const std::u16string> texts) override
    {
        Data::Session session("SQLite", file);
        session << kFast, now;
        session << kBegin, now;
        for (const std::u16string& text : texts)
            session << ToUTF8(text.c_str()), now;
        session << kCommit, now;
    }

    void ScanWide(const std::string& file, std::size_t rows, Digest& digest) override
    {
        const std::array<std::string, kWideColumns> names = WideNames();
        Data::Session session("SQLite", file);
        Data::Statement query(session);
        query << kWideScan, limit(rows);
        query.execute();
        Data::RecordSet set(query);
        WideRecord record;
        for (bool more = set.moveFirst(); rows != 0 && more; --rows, more = set.moveNext())
        {
            for (const int column : WideOrder())
            {
                const Poco::Dynamic::Var value = set[names[static_cast<std::size_t>(column)]];
                ReadWide(
                    column, record, [&](std::int64_t& number) { number = value.convert<Poco::Int64>(); },
                    [&](double& real) { real = value.convert<double>(); },
                    [&](std::span<char16_t> buffer) { CopyText(value, buffer); });
            }
            digest.Add(record);
        }
    }
};
} // namespace

std::unique_ptr<Contender> MakePoco()
{
    return std::make_unique<PocoData>();
}
} // namespace Bench
