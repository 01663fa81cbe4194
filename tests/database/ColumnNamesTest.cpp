// What is learnt of column names must never change an answer.

#include <random>
#include <vector>

#include <halyon/database/CHynSQColumnNames.h>

#include "tests/database/DatabaseTest.h"

using namespace HalyonTest;

namespace
{
// The rule itself: the lowest column whose name is equal but for letter case.
int Expected(sqlite3_stmt* statement, const char16_t* name)
{
    for (int column = 0; column < sqlite3_column_count(statement); ++column)
        if (tov_wcscmpi(name, static_cast<const char16_t*>(sqlite3_column_name16(statement, column))) == 0)
            return column;
    return -1;
}

class ColumnNames : public DatabaseTest
{
protected:
    ~ColumnNames() override { sqlite3_finalize(m_statement); }

    sqlite3_stmt* Prepare(const std::u16string& sql)
    {
        sqlite3_finalize(m_statement);
        EXPECT_EQ(sqlite3_prepare16(m_engine, sql.c_str(), -1, &m_statement, nullptr), SQLITE_OK) << U8(sql);
        m_names.Forget();
        return m_statement;
    }

    int Find(const char16_t* name) { return m_names.Find(m_statement, name); }

    const Raw m_engine{u":memory:"};
    sqlite3_stmt* m_statement = nullptr;
    CHynSQColumnNames m_names;
};

TEST_F(ColumnNames, AnswerByContentWhateverTheAddress)
{
    // Few and similar names, so that many are equal; asked through buffers whose content changes under their address.
    const char16_t* parts[] = {u"a",      u"A",      u"b",      u"\u00e4",     u"\u00c4",     u"\u03c3",
                               u"\u03c2", u"\u03a3", u"\u0130", u"\U00010400", u"\U00010428", u"\xD800"};
    std::mt19937 random(4711);
    const auto pick = [&](std::size_t count)
    {
        return random() % count;
    };
    const auto makeName = [&]
    {
        std::u16string name;
        for (std::size_t length = 1 + pick(2); length > 0; --length)
            name += parts[pick(std::size(parts) - 1)];
        return name;
    };
    int found = 0;
    // Few columns are learnt inside the object, more beside it.
    for (std::size_t round = 0; round < 280; ++round)
    {
        const std::size_t columns = 1 + round % 140;
        std::u16string sql = u"SELECT 0 AS \"" + makeName();
        for (std::size_t i = 1; i < columns; ++i)
            sql += u"\", 0 AS \"" + makeName();
        sqlite3_stmt* statement = Prepare(sql + u"\"");
        std::u16string asked[7];
        for (std::u16string& name : asked)
            name.reserve(8);
        for (int i = 0; i < 40; ++i)
        {
            std::u16string& name = asked[pick(std::size(asked))];
            if (pick(2) == 0)
                name = pick(8) == 0 ? std::u16string(parts[pick(std::size(parts))]) : makeName();
            const int column = Expected(statement, name.c_str());
            ASSERT_EQ(Find(name.c_str()), column) << U8(name) << " in " << U8(sql);
            found += column >= 0 ? 1 : 0;
        }
    }
    EXPECT_GT(found, 2000);
}

TEST_F(ColumnNames, OfAStatementWithoutColumnsAreNone)
{
    Prepare(u"BEGIN");
    EXPECT_EQ(Find(u"x"), -1);
    EXPECT_EQ(Find(u"x"), -1);
}
} // namespace
