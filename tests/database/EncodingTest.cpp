// Databases whose text has one byte order or the other, written here and by other machines.

#include <array>
#include <bit>
#include <cstdlib>

#include <halyon/tools/CHynPubTools.h>

#include "tests/database/DatabaseTest.h"
#include "tests/support/Command.h"

using namespace HalyonTest;

namespace
{
constexpr const char16_t* kText = u"Š 日本 \U0001F30A";
constexpr long long kNumber = -0x0102030405060708;
constexpr double kReal = 0.1;
constexpr std::array<unsigned char, 4> kBytes = {1, 0, 2, 0xFF};
constexpr double kMoment = 770'000'000.5; // seconds since 2001

class Encoding : public DatabaseTest
{
protected:
    void Write(const char16_t* pragma)
    {
        ASSERT_EQ(Connect(), HYN_S_OK);
        ASSERT_EQ(Run(u"PRAGMA page_size = 512"), HYN_S_OK);
        ASSERT_EQ(Run(pragma), HYN_S_OK);
        ASSERT_EQ(Run(u"CREATE TABLE t (a, n, r, b, m, UNIQUE (a))"), HYN_S_OK);
        FILETIME moment{};
        CHynPubTools::ConvertToFileTime(&moment, kMoment);
        std::array<unsigned char, 4> bytes = kBytes;
        const CHynAutoPtr<CHynSQCommand> command = Prepare(u"INSERT INTO t VALUES (?, ?, ?, ?, ?)");
        EXPECT_EQ(command->BindFieldValue(0, kText), HYN_S_OK);
        EXPECT_EQ(command->BindFieldValue(1, kNumber), HYN_S_OK);
        EXPECT_EQ(command->BindFieldValue(2, kReal), HYN_S_OK);
        EXPECT_EQ(command->BindFieldValue(3, bytes.data(), 4), HYN_S_OK);
        EXPECT_EQ(command->BindFieldValue(4, &moment), HYN_S_OK);
        EXPECT_EQ(command->ExecuteSQL(), HYN_S_OK);
    }

    // Found by its text, so the order of the index counts too; then each value by its own reader.
    void Read()
    {
        const CHynAutoPtr<CHynSQCommand> command = Prepare(u"SELECT * FROM t WHERE a = ? AND a LIKE '%日本%'");
        EXPECT_EQ(command->BindFieldValue(0, kText), HYN_S_OK);
        const CHynAutoPtr<CHynSQRecordSet> row = Open(command);
        ASSERT_EQ(row->IsEof(), 0);
        char16_t text[20] = {};
        std::uint32_t room = 20;
        EXPECT_EQ(row->GetFieldValue(0, text, &room), HYN_S_OK);
        EXPECT_EQ(U8(text), U8(kText));
        EXPECT_EQ(HalyonTest::Read<long long>(row, 1), kNumber);
        EXPECT_EQ(HalyonTest::Read<double>(row, 2), kReal);
        std::array<unsigned char, 4> bytes{};
        std::uint32_t size = 4;
        EXPECT_EQ(row->GetFieldValue(3, static_cast<void*>(bytes.data()), &size), HYN_S_OK);
        EXPECT_EQ(bytes, kBytes);
        const auto moment = HalyonTest::Read<FILETIME>(row, 4);
        EXPECT_EQ(CHynPubTools::ConvertFromFileTime(&moment), kMoment);
    }
};

struct Order
{
    const char16_t* pragma; // null: the file of that name is one that such a machine wrote
    const char* name;
    std::string_view wave; // U+1F30A in it
};
constexpr std::string_view kLittle = "\x3C\xD8\x0A\xDF";
constexpr std::string_view kBig = "\xD8\x3C\xDF\x0A";

class EncodingTable : public Encoding, public testing::WithParamInterface<Order>
{
};

TEST_P(EncodingTable, ReadsTheSameOnEveryMachine)
{
    const Order& order = GetParam();
    if (order.pragma == nullptr)
        std::filesystem::copy_file(std::filesystem::path(HYN_WRITTEN_ON) / (std::string(order.name) + ".db"),
                                   m_folder.Path() / "test.db");
    else
        Write(order.pragma);
    // To keep what this machine wrote as a file for the others: a path in the environment.
    if (const char* keep = std::getenv("HYN_KEEP_WRITTEN"); keep != nullptr && std::string_view(order.name) == "own")
        std::filesystem::copy_file(m_folder.Path() / "test.db", keep);

    EXPECT_NE(ContentOf(m_folder.Path() / "test.db").find(order.wave), std::string::npos);
    m_connection = new CHynSQConnection;
    ASSERT_EQ(Connect(), HYN_S_OK);
    Read();
}

INSTANTIATE_TEST_SUITE_P(Files, EncodingTable,
                         testing::Values(Order{u"PRAGMA encoding = 'UTF-8'", "utf8", "\xF0\x9F\x8C\x8A"},
                                         Order{u"PRAGMA encoding = 'UTF-16le'", "utf16le", kLittle},
                                         Order{u"PRAGMA encoding = 'UTF-16be'", "utf16be", kBig},
                                         Order{u"PRAGMA user_version = 1", "own",
                                               std::endian::native == std::endian::little ? kLittle : kBig},
                                         Order{nullptr, "i386", kLittle}, Order{nullptr, "s390x", kBig}),
                         [](const auto& order) { return std::string(order.param.name); });
} // namespace
