// Qt SQL with its SQLite driver: UTF-16 throughout.
#include <algorithm>
#include <cstring>
#include <stdexcept>

#include <QByteArray>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>
#include <QThread>
#include <QVariant>

#include "Contender.h"

namespace Bench
{
namespace
{
// A connection of the calling thread's own, removed again at the end of the scope.
class Session
{
public:
    explicit Session(const std::string& file)
        : m_name(QString::number(reinterpret_cast<std::uintptr_t>(QThread::currentThreadId()))),
          m_database(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name))
    {
        m_database.setDatabaseName(QString::fromStdString(file));
        if (!m_database.open())
            throw std::runtime_error("Qt SQL: " + m_database.lastError().text().toStdString());
    }
    ~Session()
    {
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_name);
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    [[nodiscard]] QSqlQuery Query() const
    {
        QSqlQuery query(m_database);
        query.setForwardOnly(true);
        return query;
    }

    void Execute(const QString& sql) const
    {
        QSqlQuery query(m_database);
        Check(query.exec(sql), query);
    }

    static void Check(bool done, const QSqlQuery& query)
    {
        if (!done)
            throw std::runtime_error("Qt SQL: " + query.lastError().text().toStdString());
    }

private:
    QString m_name;
    QSqlDatabase m_database;
};

QString Text(const char* ascii)
{
    return QString::fromLatin1(ascii);
}

void CopyText(const QVariant& value, std::span<char16_t> buffer)
{
    const QString text = value.toString();
    if (static_cast<std::size_t>(text.size()) >= buffer.size())
        throw std::runtime_error("Qt SQL: text does not fit");
    std::memcpy(buffer.data(), text.utf16(), (static_cast<std::size_t>(text.size()) + 1) * sizeof(char16_t));
}

void CopyBlob(const QVariant& value, std::span<unsigned char> buffer)
{
    const QByteArray blob = value.toByteArray();
    if (static_cast<std::size_t>(blob.size()) > buffer.size())
        throw std::runtime_error("Qt SQL: blob does not fit");
    std::copy(blob.begin(), blob.end(), buffer.begin());
}

template <class Keys>
void Read(const QSqlQuery& query, const Keys& keys, Record& record)
{
    record.id = query.value(keys[0]).toLongLong();
    CopyText(query.value(keys[1]), record.path);
    record.size = query.value(keys[2]).toLongLong();
    record.taken = query.value(keys[3]).toDouble();
    record.rating = query.value(keys[4]).toInt();
    CopyBlob(query.value(keys[5]), record.print);
}

constexpr std::array kPositions{0, 1, 2, 3, 4, 5};

template <class Keys>
void Scan(const std::string& file, const Keys& keys, std::size_t rows, Digest& digest)
{
    const Session session(file);
    QSqlQuery query = session.Query();
    Session::Check(query.exec(Text(kScan)), query);
    Record record;
    for (; rows != 0 && query.next(); --rows)
    {
        Read(query, keys, record);
        digest.Add(record);
    }
}

void Bind(QSqlQuery& query, const Record& record)
{
    query.bindValue(0, static_cast<qlonglong>(record.id));
    query.bindValue(1, QString::fromUtf16(record.path.data(), record.pathUnits));
    query.bindValue(2, static_cast<qlonglong>(record.size));
    query.bindValue(3, record.taken);
    query.bindValue(4, record.rating);
    query.bindValue(5, QByteArray::fromRawData(reinterpret_cast<const char*>(record.print.data()), kPrintSize));
}

class QtSql : public Contender
{
public:
    [[nodiscard]] bool SpeaksUTF16() const override { return true; }

    void Insert(const std::string& file, std::span<const Record> records) override
    {
        const Session session(file);
        session.Execute(Text(kFast));
        session.Execute(Text(kBegin));
        QSqlQuery query = session.Query();
        Session::Check(query.prepare(Text(kInsert)), query);
        for (const Record& record : records)
        {
            Bind(query, record);
            Session::Check(query.exec(), query);
        }
        query.finish();
        session.Execute(Text(kCommit));
    }

    void ScanByIndex(const std::string& file, std::size_t rows, Digest& digest) override
    {
        Scan(file, kPositions, rows, digest);
    }

    void ScanByName(const std::string& file, std::size_t rows, Digest& digest) override
    {
        const std::array names{QStringLiteral("id"),    QStringLiteral("path"),   QStringLiteral("size"),
                               QStringLiteral("taken"), QStringLiteral("rating"), QStringLiteral("print")};
        Scan(file, names, rows, digest);
    }

    void PointQueries(const std::string& file, std::span<const std::int64_t> ids, Digest& digest) override
    {
        const Session session(file);
        QSqlQuery query = session.Query();
        Session::Check(query.prepare(Text(kPoint)), query);
        Record record;
        for (const std::int64_t id : ids)
        {
            query.bindValue(0, static_cast<qlonglong>(id));
            Session::Check(query.exec() && query.next(), query);
            Read(query, kPositions, record);
            digest.Add(record);
            query.finish();
        }
    }

    void OneShots(const std::string& file, std::span<const std::u16string> texts) override
    {
        const Session session(file);
        session.Execute(Text(kFast));
        session.Execute(Text(kBegin));
        for (const std::u16string& text : texts)
            session.Execute(QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size())));
        session.Execute(Text(kCommit));
    }

    void ScanWide(const std::string& file, std::size_t rows, Digest& digest) override
    {
        std::array<QString, kWideColumns> names;
        for (int column = 0; column < kWideColumns; ++column)
            names[static_cast<std::size_t>(column)] = QString::fromStdString(WideName(column));

        const Session session(file);
        QSqlQuery query = session.Query();
        Session::Check(query.exec(Text(kWideScan)), query);
        WideRecord record;
        for (; rows != 0 && query.next(); --rows)
        {
            for (const int column : WideOrder())
            {
                const QVariant value = query.value(names[static_cast<std::size_t>(column)]);
                ReadWide(
                    column, record, [&](std::int64_t& number) { number = value.toLongLong(); },
                    [&](double& real) { real = value.toDouble(); },
                    [&](std::span<char16_t> buffer) { CopyText(value, buffer); });
            }
            digest.Add(record);
        }
    }
};
} // namespace

std::unique_ptr<Contender> MakeQtSql()
{
    return std::make_unique<QtSql>();
}
} // namespace Bench
