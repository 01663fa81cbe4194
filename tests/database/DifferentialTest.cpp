// Random rows of all types, written and read through the components and through the engine's own 16-bit calls: the two
// must agree on every value.

#include <cstring>
#include <random>
#include <variant>
#include <vector>

#include <halyon/tools/CHynPubTools.h>

#include "tests/database/DatabaseTest.h"

using namespace HalyonTest;

namespace
{
using Blob = std::vector<unsigned char>;
using Value =
    std::variant<std::monostate, std::int32_t, std::uint32_t, long long, double, FILETIME, std::u16string, Blob>;

class Differential : public ConnectedTest
{
protected:
    std::uint64_t Pick(std::uint64_t count) { return m_random() % count; }

    // Small and edge values more often than others.
    long long Integer()
    {
        const long long edges[] = {0, 1, -1, INT32_MAX, INT32_MIN, UINT32_MAX, INT64_MAX, INT64_MIN, 1LL << 32};
        return Pick(2) == 0 ? edges[Pick(std::size(edges))] : static_cast<long long>(m_random());
    }

    std::u16string Text()
    {
        const std::u16string pieces[] = {u"a", u"7", u"-", u".5", u" ", u"\u00df", u"\u3042", u"\U0001F600", u"\xD800"};
        std::u16string text;
        for (std::uint64_t length = Pick(Pick(4) == 0 ? 300 : 6); length > 0; --length)
            text += pieces[Pick(std::size(pieces))];
        return text;
    }

    Value RandomValue()
    {
        switch (Pick(8))
        {
        case 1:
            return static_cast<std::int32_t>(Integer());
        case 2:
            return static_cast<std::uint32_t>(Integer());
        case 3:
            return Integer();
        case 4:
            return static_cast<double>(Integer()) / static_cast<double>(1 + Pick(1000));
        case 5:
        {
            FILETIME moment{};
            // From the first moment on, to beyond what a double keeps whole.
            const double seconds = static_cast<double>(Pick(1ULL << 53)) / 65536 - 3061152000.0;
            CHynPubTools::ConvertToFileTime(&moment, seconds);
            return moment;
        }
        case 6:
            return Text();
        case 7:
        {
            Blob blob(static_cast<std::size_t>(1 + Pick(Pick(4) == 0 ? 600 : 9)));
            for (unsigned char& byte : blob)
                byte = static_cast<unsigned char>(Pick(4) == 0 ? 0 : Pick(256));
            return blob;
        }
        default:
            return {};
        }
    }

    std::mt19937_64 m_random{20240229};
};

HynResult Bind(IHynSQCommand* command, int index, const Value& value)
{
    return std::visit(
        [&]<class T>(const T& v)
        {
            if constexpr (std::is_same_v<T, std::monostate>)
                return HYN_S_OK; // a parameter without a value is NULL
            else if constexpr (std::is_same_v<T, std::u16string>)
                return command->BindFieldValue(index, v.c_str());
            else if constexpr (std::is_same_v<T, Blob>)
                return command->BindFieldValue(index, const_cast<unsigned char*>(v.data()),
                                               static_cast<std::uint32_t>(v.size()));
            else if constexpr (std::is_same_v<T, FILETIME>)
                return command->BindFieldValue(index, const_cast<FILETIME*>(&v));
            else
                return command->BindFieldValue(index, v);
        },
        value);
}

// Whether the engine holds in `column` what was bound.
bool IsStored(sqlite3_stmt* row, int column, const Value& value)
{
    const int type = sqlite3_column_type(row, column);
    return std::visit(
        [&]<class T>(const T& v)
        {
            if constexpr (std::is_same_v<T, std::monostate>)
                return type == SQLITE_NULL;
            else if constexpr (std::is_same_v<T, std::u16string>)
                return type == SQLITE_TEXT && sqlite3_column_bytes16(row, column) == static_cast<int>(v.size() * 2) &&
                       v == static_cast<const char16_t*>(sqlite3_column_text16(row, column));
            else if constexpr (std::is_same_v<T, Blob>)
                return type == SQLITE_BLOB && sqlite3_column_bytes(row, column) == static_cast<int>(v.size()) &&
                       std::memcmp(sqlite3_column_blob(row, column), v.data(), v.size()) == 0;
            else if constexpr (std::is_same_v<T, FILETIME>)
                return type == SQLITE_FLOAT &&
                       sqlite3_column_double(row, column) == CHynPubTools::ConvertFromFileTime(&v);
            else if constexpr (std::is_same_v<T, double>)
                return type == SQLITE_FLOAT && sqlite3_column_double(row, column) == v;
            else
                return type == SQLITE_INTEGER && sqlite3_column_int64(row, column) == v;
        },
        value);
}

// Reads one column by index or name in every way and compares with the engine's calls on the same row elsewhere.
template <class Column>
void ExpectSame(IHynSQRecordSet* mine, Column column, sqlite3_stmt* row, int index)
{
    EXPECT_EQ(Read<std::int32_t>(mine, column), sqlite3_column_int(row, index));
    EXPECT_EQ(Read<long long>(mine, column), sqlite3_column_int64(row, index));
    EXPECT_EQ(Read<std::uint32_t>(mine, column), static_cast<std::uint32_t>(sqlite3_column_int64(row, index)));
    EXPECT_EQ(Read<double>(mine, column), sqlite3_column_double(row, index));
    const auto moment = Read<FILETIME>(mine, column);
    FILETIME expected{};
    CHynPubTools::ConvertToFileTime(&expected, sqlite3_column_double(row, index));
    EXPECT_EQ(std::memcmp(&moment, &expected, sizeof moment), 0);

    char16_t text[1300];
    std::uint32_t room = std::size(text);
    const HynResult result = mine->GetFieldValue(column, text, &room);
    const auto* wanted = static_cast<const char16_t*>(sqlite3_column_text16(row, index));
    ASSERT_EQ(result, wanted != nullptr ? HYN_S_OK : HYN_E_SQNULLVALUE);
    EXPECT_TRUE(wanted == nullptr || std::u16string_view(text) == wanted);

    std::uint32_t size = 0;
    Blob bytes(1300);
    ASSERT_EQ(mine->GetFieldValue(column, static_cast<void*>(nullptr), &size), HYN_S_OK);
    ASSERT_EQ(size, static_cast<std::uint32_t>(sqlite3_column_bytes16(row, index)));
    ASSERT_EQ(mine->GetFieldValue(column, static_cast<void*>(bytes.data()), &size), HYN_S_OK);
    EXPECT_TRUE(size == 0 || std::memcmp(bytes.data(), sqlite3_column_blob(row, index), size) == 0);
}

TEST_F(Differential, ComponentsAndEngineAgreeOnEveryValue)
{
    constexpr int kColumns = 6;
    constexpr int kRows = 400;
    ASSERT_EQ(Run(u"CREATE TABLE t (c0, c1, c2, c3, c4, c5)"), HYN_S_OK);
    ASSERT_EQ(m_connection->BeginTrans(), HYN_S_OK);
    std::vector<std::vector<Value>> rows;
    for (int i = 0; i < kRows; ++i)
    {
        const CHynAutoPtr<CHynSQCommand> command = Prepare(u"INSERT INTO t VALUES (?, ?, ?, ?, ?, ?)");
        std::vector<Value>& row = rows.emplace_back();
        for (int column = 0; column < kColumns; ++column)
            row.push_back(RandomValue());
        for (int column = 0; column < kColumns; ++column)
            ASSERT_EQ(Bind(command, column, row[static_cast<std::size_t>(column)]), HYN_S_OK);
        ASSERT_EQ(command->ExecuteSQL(), HYN_S_OK);
        ASSERT_EQ(m_connection->GetLastInsertID(), i + 1);
    }
    ASSERT_EQ(m_connection->CommitTrans(), HYN_S_OK);

    const Raw raw(Path());
    sqlite3_stmt* row = nullptr;
    ASSERT_EQ(sqlite3_prepare16(raw, u"SELECT * FROM t ORDER BY rowid", -1, &row, nullptr), SQLITE_OK);
    const CHynAutoPtr<CHynSQRecordSet> byIndex = Open(u"SELECT * FROM t ORDER BY rowid");
    const CHynAutoPtr<CHynSQRecordSet> byName = Open(u"SELECT * FROM t ORDER BY rowid");
    const char16_t* names[kColumns] = {u"C0", u"c1", u"C2", u"c3", u"C4", u"c5"};
    for (int i = 0; i < kRows && !HasFatalFailure(); ++i)
    {
        ASSERT_EQ(sqlite3_step(row), SQLITE_ROW);
        for (int column = 0; column < kColumns; ++column)
        {
            SCOPED_TRACE(testing::Message() << "row " << i << " column " << column);
            EXPECT_TRUE(IsStored(row, column, rows[static_cast<std::size_t>(i)][static_cast<std::size_t>(column)]));
            ExpectSame(byIndex, column, row, column);
            ExpectSame(byName, names[column], row, column);
        }
        byIndex->Next();
        byName->Next();
    }
    EXPECT_TRUE(byIndex->IsEof() == 1 && byName->IsEof() == 1);
    sqlite3_finalize(row);
}
} // namespace
