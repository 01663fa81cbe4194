#include "Records.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>
#include <random>
#include <stdexcept>

#include <unicode/ustring.h>

namespace Bench
{
namespace
{
std::uint64_t Load(const void* from) noexcept
{
    std::uint64_t word = 0;
    std::memcpy(&word, from, sizeof(word));
    return word;
}

void SetText(std::span<char16_t> buffer, std::u16string_view text)
{
    text.copy(buffer.data(), buffer.size() - 1);
    buffer[text.size()] = 0;
}

constexpr std::array kFolders{u"Sommerferien an der Küste", u"Wanderung zum Großen See ",
                              u"Hochzeit von Anna und Ben", u"Un après-midi au marché   ",
                              u"京都の春と秋の庭の写真集 ", u"Kindergeburtstag im Garten"};
} // namespace

void Digest::MixText(const char16_t* text) noexcept
{
    for (; *text != 0; ++text)
        Mix(*text);
}

void Digest::Add(const Record& record) noexcept
{
    const auto taken = std::bit_cast<std::uint64_t>(record.taken);
    Mix(static_cast<std::uint64_t>(record.id) + static_cast<std::uint64_t>(record.size) + std::rotl(taken, 17) +
        static_cast<std::uint32_t>(record.rating) + Load(record.path.data() + 4) + Load(record.path.data() + 44) +
        Load(record.print.data()) + Load(record.print.data() + kPrintSize - 8));
    if (!m_complete)
        return;
    MixText(record.path.data());
    for (const unsigned char byte : record.print)
        Mix(byte);
}

void Digest::Add(const WideRecord& record) noexcept
{
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < kWideThird; ++i)
        sum += static_cast<std::uint64_t>(record.numbers[i]) + std::bit_cast<std::uint64_t>(record.reals[i]) +
               Load(record.texts[i].data());
    Mix(sum);
    if (!m_complete)
        return;
    for (const auto& text : record.texts)
        MixText(text.data());
}

std::vector<Record> MakeRecords(std::size_t count)
{
    std::mt19937_64 random(20260707);
    std::vector<Record> records(count);
    std::int64_t id = 0;
    for (Record& record : records)
    {
        record = {};
        record.id = ++id;
        std::array<char, 32> digits{};
        std::snprintf(digits.data(), digits.size(), "/IMG_%07lld.HEIC", static_cast<long long>(id));
        const std::u16string path =
            std::u16string(u"/home/ann/Bilder/") + kFolders[random() % kFolders.size()] + Widen(digits.data());
        SetText(record.path, path);
        record.pathUnits = static_cast<std::uint32_t>(path.size());
        record.size = static_cast<std::int64_t>(random() % 40'000'000'000u);
        record.taken = static_cast<double>(random() % 800'000'000u) + 0.25;
        record.rating = static_cast<std::int32_t>(random() % 6);
        for (unsigned char& byte : record.print)
            byte = static_cast<unsigned char>(random());
    }
    return records;
}

std::vector<WideRecord> MakeWideRecords(std::size_t count)
{
    std::mt19937_64 random(60);
    std::vector<WideRecord> records(count);
    for (WideRecord& record : records)
    {
        record = {};
        for (std::size_t i = 0; i < kWideThird; ++i)
        {
            record.numbers[i] = static_cast<std::int64_t>(random() % 1'000'000'000'000u);
            record.reals[i] = static_cast<double>(random() % 1'000'000u) / 8;
            SetText(record.texts[i], u"Stichwort " + Widen(std::to_string(random() % 1'000'000u)));
        }
    }
    return records;
}

std::string WideName(int column)
{
    constexpr std::array kKinds{"number", "measure", "keyword"};
    return std::string(kKinds[static_cast<std::size_t>(column % 3)]) + "_" + std::to_string(column);
}

std::array<std::string, kWideColumns> WideNames()
{
    std::array<std::string, kWideColumns> names;
    for (int column = 0; column < kWideColumns; ++column)
        names[static_cast<std::size_t>(column)] = WideName(column);
    return names;
}

const std::array<int, kWideColumns>& WideOrder()
{
    static const auto order = []
    {
        std::array<int, kWideColumns> columns{};
        for (int i = 0; i < kWideColumns; ++i)
            columns[static_cast<std::size_t>(i)] = i * 37 % kWideColumns;
        return columns;
    }();
    return order;
}

std::vector<std::u16string> MakeInsertTexts(std::size_t count)
{
    std::vector<std::u16string> texts;
    for (const Record& record : MakeRecords(count))
        texts.push_back(u"INSERT INTO note (id, path, size, rating) VALUES (" + Widen(std::to_string(record.id)) +
                        u", '" + record.path.data() + u"', " + Widen(std::to_string(record.size)) + u", " +
                        Widen(std::to_string(record.rating)) + u")");
    return texts;
}

std::u16string Widen(std::string_view ascii)
{
    return {ascii.begin(), ascii.end()};
}

std::string ToUTF8(const char16_t* text)
{
    const std::size_t units = std::char_traits<char16_t>::length(text);
    std::string result(units * 3, '\0');
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strToUTF8(result.data(), static_cast<std::int32_t>(result.size()), &length, text,
                static_cast<std::int32_t>(units), &error);
    result.resize(static_cast<std::size_t>(length));
    return result;
}

void Fill(Record& record, std::string_view path, std::span<const std::byte> print)
{
    if (!ToUTF16(path, record.path) || print.size() != kPrintSize)
        throw std::runtime_error("a value does not fit");
    std::memcpy(record.print.data(), print.data(), kPrintSize);
}

bool ToUTF16(std::string_view text, std::span<char16_t> buffer) noexcept
{
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8(buffer.data(), static_cast<std::int32_t>(buffer.size()), nullptr, text.data(),
                  static_cast<std::int32_t>(text.size()), &error);
    return error == U_ZERO_ERROR;
}
} // namespace Bench
