// What every contender is asked to do, the way its own documentation would do it.
//
// Each call opens the file itself and closes it. Text reaches a contender and comes back as UTF-16 in the caller's
// memory: one whose interface is UTF-8 converts, as its user would have to. Failures are thrown.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "Records.h"

namespace Bench
{
inline constexpr const char* kScan = "SELECT id, path, size, taken, rating, print FROM media";
inline constexpr const char* kPoint = "SELECT id, path, size, taken, rating, print FROM media WHERE id = ?";
inline constexpr const char* kInsert =
    "INSERT INTO media (id, path, size, taken, rating, print) VALUES (?, ?, ?, ?, ?, ?)";
inline constexpr const char* kFast = "PRAGMA synchronous = OFF"; // the disk is not what is compared
inline constexpr const char* kBegin = "BEGIN EXCLUSIVE";
inline constexpr const char* kCommit = "COMMIT";
inline constexpr const char* kWideScan = "SELECT * FROM wide";

class Contender
{
public:
    Contender() = default;
    Contender(const Contender&) = delete;
    Contender& operator=(const Contender&) = delete;
    virtual ~Contender() = default;

    // Its interface speaks UTF-16, so it is given files in UTF-16; the others get UTF-8. Each has the file it reads
    // best.
    [[nodiscard]] virtual bool SpeaksUTF16() const = 0;

    // All rows through one prepared statement in one transaction.
    virtual void Insert(const std::string& file, std::span<const Record> records) = 0;

    // The first `rows` rows, columns by position or by name, each copied into a Record and added to the digest.
    virtual void ScanByIndex(const std::string& file, std::size_t rows, Digest& digest) = 0;
    virtual void ScanByName(const std::string& file, std::size_t rows, Digest& digest) = 0;

    // One prepared statement, bound anew for each id, its row read by position.
    virtual void PointQueries(const std::string& file, std::span<const std::int64_t> ids, Digest& digest) = 0;

    // Each text prepared, run and forgotten, in one transaction.
    virtual void OneShots(const std::string& file, std::span<const std::u16string> texts) = 0;

    // The first `rows` rows of the wide table, all columns by name in WideOrder.
    virtual void ScanWide(const std::string& file, std::size_t rows, Digest& digest) = 0;

    // ScanByIndex on two threads at once, each with a handle of its own.
    virtual void ScanOnTwoThreads(const std::string& file, std::size_t rows, std::span<Digest, 2> digests);

    // `count` times: a statement from its text, its first row read by name, all released. Only where it is asked for.
    virtual void OpenOneRow(const std::string& file, std::size_t count, Digest& digest);
};

std::unique_ptr<Contender> MakeRaw();
std::unique_ptr<Contender> MakeModule(const std::string& module);
std::unique_ptr<Contender> MakeClient(const std::string& module); // the module through the client's headers
std::unique_ptr<Contender> MakeSqliteCpp();
std::unique_ptr<Contender> MakeQtSql();
std::unique_ptr<Contender> MakeSoci();
std::unique_ptr<Contender> MakePoco();

// The same two, but inserting what they have copied and scanning into std::string (UTF-8) and byte vectors.
std::unique_ptr<Contender> MakeModuleByValue(const std::string& module);
std::unique_ptr<Contender> MakeClientByValue(const std::string& module);

// Runs `first` and `second` on two threads at once; what either throws comes through.
void OnTwoThreads(const std::function<void()>& first, const std::function<void()>& second);

// The variables that one row is exchanged through by contenders that bind variables and speak UTF-8.
template <class Integer, class Blob>
struct Variables
{
    void CopyTo(Record& record) const
    {
        record.id = id;
        record.size = size;
        record.taken = taken;
        record.rating = rating;
        if (!ToUTF16(path, record.path))
            throw std::runtime_error("text does not fit");
    }

    void CopyFrom(const Record& record)
    {
        id = record.id;
        path = ToUTF8(record.path.data());
        size = record.size;
        taken = record.taken;
        rating = record.rating;
    }

    Integer id = 0;
    std::string path{};
    Integer size = 0;
    double taken = 0;
    int rating = 0;
    Blob print;
    Integer wanted = 0; // the id that a point query asks for
};

// Fills the wide record's field of a column by its kind.
template <class Numbers, class Reals, class Texts>
void ReadWide(int column, WideRecord& record, Numbers readNumber, Reals readReal, Texts readText)
{
    const auto i = static_cast<std::size_t>(column / 3);
    switch (column % 3)
    {
    case 0:
        readNumber(record.numbers[i]);
        break;
    case 1:
        readReal(record.reals[i]);
        break;
    default:
        readText(record.texts[i]);
    }
}
} // namespace Bench
