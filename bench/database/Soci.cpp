// SOCI with its SQLite backend: UTF-8 throughout.
//
// By position means variables that are bound once; by name its rows of dynamic type, which give a blob as a string.
#include <algorithm>
#include <stdexcept>

#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>

#include "Contender.h"

namespace Bench
{
namespace
{
using Fields = Variables<long long, soci::blob>;

void CopyTo(Fields& fields, Record& record)
{
    fields.CopyTo(record);
    fields.print.read(0, reinterpret_cast<char*>(record.print.data()), std::min(fields.print.get_len(), kPrintSize));
}

std::string WithNames(std::string sql)
{
    for (char name = 'a'; sql.find('?') != std::string::npos; ++name)
        sql.replace(sql.find('?'), 1, std::string(":") + name);
    return sql;
}

void ReadByName(const soci::row& row, Record& record)
{
    record.id = row.get<int>("id");
    record.size = row.get<long long>("size");
    record.taken = row.get<double>("taken");
    record.rating = row.get<int>("rating");
    if (!ToUTF16(row.get<std::string>("path"), record.path))
        throw std::runtime_error("SOCI: text does not fit");
    const auto print = row.get<std::string>("print");
    print.copy(reinterpret_cast<char*>(record.print.data()), kPrintSize);
}

class Soci : public Contender
{
public:
    [[nodiscard]] bool SpeaksUTF16() const override { return false; }

    void Insert(const std::string& file, std::span<const Record> records) override
    {
        soci::session session(soci::sqlite3, "dbname=\"" + file + "\"");
        session << kFast;
        session << kBegin;
        Fields v{.print = soci::blob(session)};
        soci::statement insert = (session.prepare << WithNames(kInsert), soci::use(v.id), soci::use(v.path),
                                  soci::use(v.size), soci::use(v.taken), soci::use(v.rating), soci::use(v.print));
        for (const Record& record : records)
        {
            v.CopyFrom(record);
            v.print.write(0, reinterpret_cast<const char*>(record.print.data()), kPrintSize);
            insert.execute(true);
        }
        session << kCommit;
    }

    void ScanByIndex(const std::string& file, std::size_t rows, Digest& digest) override
    {
        soci::session session(soci::sqlite3, "dbname=\"" + file + "\"");
        Fields v{.print = soci::blob(session)};
        soci::statement query = (session.prepare << kScan, soci::into(v.id), soci::into(v.path), soci::into(v.size),
                                 soci::into(v.taken), soci::into(v.rating), soci::into(v.print));
        query.execute();
        Record record;
        for (; rows != 0 && query.fetch(); --rows)
        {
            CopyTo(v, record);
            digest.Add(record);
        }
    }

    void ScanByName(const std::string& file, std::size_t rows, Digest& digest) override
    {
        soci::session session(soci::sqlite3, "dbname=\"" + file + "\"");
        const soci::rowset<soci::row> set = (session.prepare << kScan);
        Record record;
        for (auto row = set.begin(); rows != 0 && row != set.end(); --rows, ++row)
        {
            ReadByName(*row, record);
            digest.Add(record);
        }
    }

    void PointQueries(const std::string& file, std::span<const std::int64_t> ids, Digest& digest) override
    {
        soci::session session(soci::sqlite3, "dbname=\"" + file + "\"");
        Fields v{.print = soci::blob(session)};
        soci::statement query =
            (session.prepare << WithNames(kPoint), soci::use(v.wanted), soci::into(v.id), soci::into(v.path),
             soci::into(v.size), soci::into(v.taken), soci::into(v.rating), soci::into(v.print));
        Record record;
        for (const std::int64_t id : ids)
        {
            v.wanted = id;
            if (!query.execute(true))
                throw std::runtime_error("SOCI: no such row");
            CopyTo(v, record);
            digest.Add(record);
        }
    }

    void OneShots(const std::string& file, std::span<const std::u16string> texts) override
    {
        soci::session session(soci::sqlite3, "dbname=\"" + file + "\"");
        session << kFast;
        session << kBegin;
        for (const std::u16string& text : texts)
            session << ToUTF8(text.c_str());
        session << kCommit;
    }

    void ScanWide(const std::string& file, std::size_t rows, Digest& digest) override
    {
        const std::array<std::string, kWideColumns> names = WideNames();
        soci::session session(soci::sqlite3, "dbname=\"" + file + "\"");
        const soci::rowset<soci::row> set = (session.prepare << kWideScan);
        WideRecord record;
        for (auto row = set.begin(); rows != 0 && row != set.end(); --rows, ++row)
        {
            for (const int column : WideOrder())
            {
                const std::string& name = names[static_cast<std::size_t>(column)];
                ReadWide(
                    column, record, [&](std::int64_t& value) { value = row->get<long long>(name); },
                    [&](double& value) { value = row->get<double>(name); },
                    [&](std::span<char16_t> buffer)
                    {
                        if (!ToUTF16(row->get<std::string>(name), buffer))
                            throw std::runtime_error("SOCI: text does not fit");
                    });
            }
            digest.Add(record);
        }
    }
};
} // namespace

std::unique_ptr<Contender> MakeSoci()
{
    return std::make_unique<Soci>();
}
} // namespace Bench
