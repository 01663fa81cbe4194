// The works of the database benchmark: their files, their rows, and the sums that each contender must reach.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "../Runner.h"
#include "Contender.h"

namespace Bench
{
class Suite
{
public:
    // Makes the files that are read in `folder`, which exists and is the caller's to remove. All sizes are divided by
    // `part`.
    Suite(std::filesystem::path folder, std::size_t part);

    // Contenders in the order of the table. `fewerBy` divides what it does in the named works.
    void Add(const std::string& name, std::unique_ptr<Contender> contender, std::map<std::string, std::size_t> fewerBy);

    // The works refer to this object.
    [[nodiscard]] std::vector<Work> Works() const;

private:
    struct Named
    {
        std::string name;
        std::unique_ptr<Contender> contender;
        std::map<std::string, std::size_t> fewerBy;
    };

    using Sums = std::array<Digest, 2>; // one a thread

    // A work without its turns.
    struct Task
    {
        std::string name;
        std::string unit;
        std::size_t operations;
        double target;
        std::size_t threads = 1;
    };
    using Body = std::function<void(Contender& contender, const std::string& file, std::size_t operations, Sums& sums)>;
    using Expected = std::uint64_t (Suite::*)(std::size_t operations, bool complete) const;
    using Check = void (Suite::*)(std::size_t operations) const;

    [[nodiscard]] std::string Scanned(bool utf16) const { return m_folder / (utf16 ? "utf16.db" : "utf8.db"); }
    [[nodiscard]] std::string Written() const { return m_folder / "written.db"; }
    void CreateEmpty(const std::string& file, bool utf16) const;
    void FillWide(const std::string& file) const;

    // A work that reads a file of the suite; the sums that it gives are compared with `expected`.
    [[nodiscard]] Work Reading(const Task& task, const Body& body, Expected expected) const;
    // A work that fills a new file, which `check` then looks at.
    [[nodiscard]] Work Writing(const Task& task, const Body& body, Check check) const;

    [[nodiscard]] std::uint64_t RecordSum(std::size_t rows, bool complete) const;
    [[nodiscard]] std::uint64_t QuerySum(std::size_t count, bool complete) const;
    [[nodiscard]] std::uint64_t WideSum(std::size_t rows, bool complete) const;
    [[nodiscard]] std::uint64_t FirstRowSum(std::size_t count, bool complete) const;
    void CheckInserted(std::size_t rows) const;
    void CheckOneShots(std::size_t count) const;

    std::filesystem::path m_folder;
    std::size_t m_opens;
    std::vector<Record> m_records;
    std::vector<WideRecord> m_wide;
    std::vector<std::u16string> m_texts;
    std::vector<std::int64_t> m_ids;
    std::vector<Named> m_contenders;
};
} // namespace Bench
