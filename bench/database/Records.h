// The rows that every contender stores and reads back, and the sums that prove that it did.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Bench
{
inline constexpr std::uint32_t kPathRoom = 96; // units, terminator included
inline constexpr std::size_t kPrintSize = 64;

// A row in the caller's memory: what a bind reads and what a scan fills.
struct Record
{
    std::int64_t id;
    std::array<char16_t, kPathRoom> path; // about 60 units, zero-terminated
    std::uint32_t pathUnits;              // its length, for contenders that are told it; a scan leaves it alone
    std::int64_t size;
    double taken;
    std::int32_t rating;
    std::array<unsigned char, kPrintSize> print;
};

inline constexpr int kWideColumns = 60; // a third each of int64, double and text, turn about
inline constexpr int kWideThird = kWideColumns / 3;
inline constexpr std::uint32_t kWideTextRoom = 24;

struct WideRecord
{
    std::array<std::int64_t, kWideThird> numbers;
    std::array<double, kWideThird> reals;
    std::array<std::array<char16_t, kWideTextRoom>, kWideThird> texts;
};

// A running sum over the rows that reached the caller. In the timed rounds it takes samples of each value, which costs
// a few nanoseconds a row; in the checked round every byte.
class Digest
{
public:
    explicit Digest(bool complete) noexcept : m_complete(complete) {}
    void Add(const Record& record) noexcept;
    void Add(const WideRecord& record) noexcept;

    [[nodiscard]] std::uint64_t Value() const noexcept { return m_value; }
    [[nodiscard]] bool IsComplete() const noexcept { return m_complete; }

private:
    void Mix(std::uint64_t word) noexcept { m_value = (m_value ^ word) * 0x9E3779B97F4A7C15u; }
    void MixText(const char16_t* text) noexcept;

    bool m_complete;
    std::uint64_t m_value = 0;
};

// The same rows at each call, ids from 1.
std::vector<Record> MakeRecords(std::size_t count);
std::vector<WideRecord> MakeWideRecords(std::size_t count);

// The name of a column of the wide table, and the columns in the order in which they are asked for: not the table's.
std::string WideName(int column);
std::array<std::string, kWideColumns> WideNames();
const std::array<int, kWideColumns>& WideOrder();

// One INSERT text a row, without parameters.
std::vector<std::u16string> MakeInsertTexts(std::size_t count);

std::u16string Widen(std::string_view ascii);
std::string ToUTF8(const char16_t* text);

// Puts values into a record's own room. Throws when they do not fit.
void Fill(Record& record, std::string_view path, std::span<const std::byte> print);

// For contenders whose text is UTF-8: into the caller's buffer, zero-terminated. False when it does not fit.
bool ToUTF16(std::string_view text, std::span<char16_t> buffer) noexcept;
} // namespace Bench
