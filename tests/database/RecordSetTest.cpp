// Stepping and reading.

#include <cstring>

#include <halyon/tools/CHynPubTools.h>

#include "tests/database/DatabaseTest.h"

using namespace HalyonTest;

namespace
{
class RecordSet : public ConnectedTest
{
protected:
    // What the text reader gives in a buffer of `room` units: the text, or the name of the code.
    template <class Column>
    static std::string Text(IHynSQRecordSet* recordSet, Column column, std::uint32_t room = 100)
    {
        char16_t buffer[100] = u"untouched";
        std::uint32_t length = room;
        const HynResult result = recordSet->GetFieldValue(column, buffer, &length);
        EXPECT_EQ(length, room) << "the length is only read";
        EXPECT_TRUE(result == HYN_S_OK || U8(buffer) == "untouched");
        return result == HYN_S_OK ? U8(buffer) : HynResultName(result);
    }

    // Every reader, by index or by name; all are expected to fail with the same code.
    template <class Column>
    static void ReadEach(IHynSQRecordSet* recordSet, Column column, HynResult expected)
    {
        std::int32_t i = 5;
        std::uint32_t u = 5;
        long long l = 5;
        double d = 5;
        FILETIME m{5, 5};
        std::uint32_t size = 5;
        EXPECT_EQ(recordSet->GetFieldValue(column, &i), expected);
        EXPECT_EQ(recordSet->GetFieldValue(column, &u), expected);
        EXPECT_EQ(recordSet->GetFieldValue(column, &l), expected);
        EXPECT_EQ(recordSet->GetFieldValue(column, &d), expected);
        EXPECT_EQ(recordSet->GetFieldValue(column, &m), expected);
        EXPECT_EQ(recordSet->GetFieldValue(column, static_cast<void*>(nullptr), &size), expected);
        EXPECT_EQ(Text(recordSet, column), HynResultName(expected));
        const bool same = i == 5 && u == 5 && l == 5 && d == 5 && m.dwLowDateTime == 5 && size == 5;
        EXPECT_TRUE(same) << "a failure leaves the outputs alone";
    }
};

TEST_F(RecordSet, StepsPastTheLastRowAndRoundAgain)
{
    const CHynAutoPtr<CHynSQRecordSet> rows = Open(u"VALUES (1), (2)");
    int value = 0;
    EXPECT_EQ(rows->IsEof(), 0);
    EXPECT_EQ(rows->Next(), HYN_S_OK);
    EXPECT_EQ(rows->Next(), HYN_S_FALSE);
    EXPECT_EQ(rows->IsEof(), 1);
    EXPECT_EQ(rows->Next(), HYN_S_OK) << "the engine starts again by itself";
    EXPECT_EQ(rows->Next(), HYN_S_OK);
    EXPECT_EQ(rows->Reset(), HYN_S_OK);
    EXPECT_EQ(rows->IsEof(), 0);
    EXPECT_EQ(rows->GetFieldValue(0, &value), HYN_S_OK);
    EXPECT_EQ(value, 1);

    const CHynAutoPtr<CHynSQRecordSet> none = Open(u"SELECT 1 AS a WHERE 0");
    EXPECT_EQ(none->IsEof(), 1);
    EXPECT_EQ(none->GetFieldCount(), 1);
    EXPECT_EQ(none->Reset(), HYN_S_FALSE);
}

TEST_F(RecordSet, ResetReportsTheFailedStepOnce)
{
    ASSERT_EQ(Run(u"CREATE TABLE t (x UNIQUE)"), HYN_S_OK);
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"INSERT INTO t VALUES (1)");
    const CHynAutoPtr<CHynSQRecordSet> recordSet = Open(command);
    EXPECT_EQ(recordSet->Next(), HYN_E_SQSTEP);
    EXPECT_EQ(recordSet->IsEof(), 1);
    EXPECT_EQ(recordSet->Reset(), HYN_E_FAIL);
    ASSERT_EQ(Run(u"DELETE FROM t"), HYN_S_OK);
    EXPECT_EQ(recordSet->Reset(), HYN_S_FALSE);
    EXPECT_EQ(Number(u"SELECT count(*) FROM t"), 1);
}

TEST_F(RecordSet, ResetStandsAtTheEndAlsoWhenItFails)
{
    const CHynAutoPtr<CHynSQCommand> command =
        Prepare(u"SELECT abs(column1) FROM (VALUES (1), (-9223372036854775808))");
    const CHynAutoPtr<CHynSQRecordSet> recordSet = Open(command);
    const CHynAutoPtr<CHynSQRecordSet> second = new CHynSQRecordSet(command);
    EXPECT_EQ(second->Next(), HYN_E_SQSTEP);
    EXPECT_EQ(recordSet->IsEof(), 0) << "another record set took that step";
    EXPECT_EQ(recordSet->Reset(), HYN_E_FAIL);
    EXPECT_EQ(recordSet->IsEof(), 1);
}

TEST_F(RecordSet, RefusesIndicesAndNamesThatAreNoColumns)
{
    const CHynAutoPtr<CHynSQRecordSet> recordSet = Open(u"SELECT 1 AS one, 2 AS two");
    for (const int index : {-1, 2, INT32_MIN, INT32_MAX})
    {
        SCOPED_TRACE(index);
        ReadEach(recordSet, index, HYN_E_FAIL);
    }
    for (const char16_t* name : {u"three", u"", u"on", u"one ", static_cast<const char16_t*>(nullptr)})
    {
        SCOPED_TRACE(U8(name));
        ReadEach(recordSet, name, HYN_E_FAIL);
    }
    int value = 5;
    EXPECT_EQ(recordSet->GetFieldValue(u"TWO", &value), HYN_S_OK);
    EXPECT_EQ(value, 2);
}

TEST_F(RecordSet, RefusesNullOutputs)
{
    const CHynAutoPtr<CHynSQRecordSet> recordSet = Open(u"SELECT 1 AS one");
    const auto refuse = [&](auto* null)
    {
        EXPECT_EQ(recordSet->GetFieldValue(0, null), HYN_E_FAIL);
        EXPECT_EQ(recordSet->GetFieldValue(u"one", null), HYN_E_FAIL);
    };
    refuse(static_cast<std::int32_t*>(nullptr));
    refuse(static_cast<std::uint32_t*>(nullptr));
    refuse(static_cast<long long*>(nullptr));
    refuse(static_cast<double*>(nullptr));
    refuse(static_cast<FILETIME*>(nullptr));
    std::uint32_t length = 10;
    EXPECT_EQ(recordSet->GetFieldValue(0, static_cast<char16_t*>(nullptr), &length), HYN_E_FAIL);
    EXPECT_EQ(recordSet->GetFieldValue(0, static_cast<void*>(&length), nullptr), HYN_E_FAIL);
}

TEST_F(RecordSet, ReadsByIndexAtTheEndButNotByName)
{
    const CHynAutoPtr<CHynSQRecordSet> recordSet = Open(u"SELECT 7 AS a");
    EXPECT_EQ(recordSet->Next(), HYN_S_FALSE);
    ReadEach(recordSet, u"a", HYN_E_FAIL);
    int value = 5;
    EXPECT_EQ(recordSet->GetFieldValue(0, &value), HYN_S_OK) << "as NULL, from the engine";
    EXPECT_EQ(value, 0);
    EXPECT_EQ(Text(recordSet, 0), "HYN_E_SQNULLVALUE");
    EXPECT_EQ(recordSet->GetFieldIndexByName(u"A"), 0);
}

TEST_F(RecordSet, ReadsNullAsZeroEmptyOrItsOwnCode)
{
    const CHynAutoPtr<CHynSQRecordSet> recordSet = Open(u"SELECT NULL");
    std::int32_t i = 5;
    std::uint32_t u = 5;
    long long l = 5;
    double d = 5;
    FILETIME m{5, 5};
    FILETIME zero{};
    std::uint32_t size = 5;
    unsigned char buffer[1] = {5};
    CHynPubTools::ConvertToFileTime(&zero, 0.0);
    EXPECT_EQ(recordSet->GetFieldValue(0, &i), HYN_S_OK);
    EXPECT_EQ(recordSet->GetFieldValue(0, &u), HYN_S_OK);
    EXPECT_EQ(recordSet->GetFieldValue(0, &l), HYN_S_OK);
    EXPECT_EQ(recordSet->GetFieldValue(0, &d), HYN_S_OK);
    EXPECT_EQ(recordSet->GetFieldValue(0, &m), HYN_S_OK);
    EXPECT_TRUE(i == 0 && u == 0 && l == 0 && d == 0);
    EXPECT_EQ(std::memcmp(&m, &zero, sizeof m), 0);
    EXPECT_EQ(Text(recordSet, 0), "HYN_E_SQNULLVALUE");
    EXPECT_EQ(recordSet->GetFieldValue(0, buffer, &size), HYN_S_OK);
    EXPECT_TRUE(size == 5 && buffer[0] == 5);
    EXPECT_EQ(recordSet->GetFieldValue(0, static_cast<void*>(nullptr), &size), HYN_S_OK);
    EXPECT_EQ(size, 0u);
}

TEST_F(RecordSet, ReadsUnsignedAsTheLowHalf)
{
    const CHynAutoPtr<CHynSQRecordSet> recordSet = Open(u"SELECT 4294967303, -1, '12x', 3.9");
    const std::uint32_t expected[] = {7, 0xFFFFFFFF, 12, 3};
    for (int column = 0; column < 4; ++column)
    {
        std::uint32_t value = 0;
        EXPECT_EQ(recordSet->GetFieldValue(column, &value), HYN_S_OK);
        EXPECT_EQ(value, expected[column]);
    }
}

TEST_F(RecordSet, CopiesTextOnlyWithRoomForItsTerminator)
{
    const CHynAutoPtr<CHynSQRecordSet> recordSet = Open(u"SELECT 'äöü', '', 12.5, 'ab' || char(0) || 'cd'");
    const struct
    {
        int column;
        std::uint32_t room;
        const char* expected;
    } cases[] = {
        {0, 4, "äöü"},  {0, 3, "HYN_E_BUFFERTOOSMALL"}, {0, 0, "HYN_E_BUFFERTOOSMALL"}, {1, 1, ""},
        {2, 5, "12.5"}, {1, 0, "HYN_E_BUFFERTOOSMALL"}, {2, 4, "HYN_E_BUFFERTOOSMALL"}, {3, 3, "ab"},
    };
    for (const auto& test : cases)
        EXPECT_EQ(Text(recordSet, test.column, test.room), test.expected) << test.column << " " << test.room;
}

TEST_F(RecordSet, MeasuresAndCopiesBlobsInBytesOfUTF16)
{
    const CHynAutoPtr<CHynSQRecordSet> recordSet =
        Open(u"SELECT 'abc', x'0102030405', zeroblob(4), 42, 'ab' || char(0) || 'c', ''");
    using namespace std::string_view_literals;
    const auto text = [](std::u16string_view units) // in the machine's byte order
    {
        return std::string_view(reinterpret_cast<const char*>(units.data()), units.size() * 2);
    };
    const std::string_view expected[] = {text(u"abc"), "\1\2\3\4\5"sv,   "\0\0\0\0"sv,
                                         text(u"42"),  text(u"ab\0c"sv), ""sv};
    for (int column = 0; column < 6; ++column)
    {
        const std::string_view bytes = expected[column];
        std::uint32_t size = 99;
        EXPECT_EQ(recordSet->GetFieldValue(column, static_cast<void*>(nullptr), &size), HYN_S_OK);
        ASSERT_EQ(size, bytes.size()) << column;
        std::string buffer(size + 1, '#');
        EXPECT_EQ(recordSet->GetFieldValue(column, static_cast<void*>(buffer.data()), &size), HYN_S_OK);
        EXPECT_EQ(buffer, std::string(bytes) + "#") << column;
        std::uint32_t little = size - 1;
        EXPECT_EQ(recordSet->GetFieldValue(column, static_cast<void*>(buffer.data()), &little),
                  size == 0 ? HYN_S_OK : HYN_E_FAIL);
        EXPECT_EQ(little, size - 1);
    }
}

TEST_F(RecordSet, MomentsComeBackAsTheyWent)
{
    ASSERT_EQ(Run(u"CREATE TABLE t (m)"), HYN_S_OK);
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"INSERT INTO t VALUES (?)");
    // Before and after 2001, with the greatest fraction, and the ends of what the database's double holds exactly.
    for (const double seconds : {0.0, -1.0, 725846400.0, 725846400.0 + 65535.0 / 65536, -3061152000.0, 1e11 + 0.5})
    {
        FILETIME moment{};
        FILETIME back{};
        CHynPubTools::ConvertToFileTime(&moment, seconds);
        command->BindFieldValue(0, &moment);
        ASSERT_EQ(command->ExecuteSQL(), HYN_S_OK);
        ASSERT_EQ(Open(u"SELECT m FROM t ORDER BY rowid DESC")->GetFieldValue(u"M", &back), HYN_S_OK);
        EXPECT_EQ(std::memcmp(&back, &moment, sizeof back), 0) << seconds;
    }
}

TEST_F(RecordSet, KeepsUnpairedSurrogatesOfAUTF16Database)
{
    ASSERT_EQ(Run(u"CREATE TABLE t (s)"), HYN_S_OK);
    const char16_t text[] = {u'a', 0xD800, u'b', 0xDC00, 0};
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"INSERT INTO t VALUES (?)");
    command->BindFieldValue(0, text);
    ASSERT_EQ(command->ExecuteSQL(), HYN_S_OK);
    char16_t back[5];
    std::uint32_t room = 5;
    EXPECT_EQ(Open(u"SELECT s FROM t")->GetFieldValue(0, back, &room), HYN_S_OK);
    EXPECT_EQ(std::u16string_view(back), std::u16string_view(text));
}

TEST_F(RecordSet, ShareTheStatementOfTheirCommandButNotTheEnd)
{
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"VALUES (1), (2), (3)");
    const CHynAutoPtr<CHynSQRecordSet> first = Open(command);
    CHynAutoPtr<CHynSQRecordSet> second = Open(command);
    int value = 0;
    EXPECT_EQ(first->GetFieldValue(0, &value), HYN_S_OK);
    EXPECT_EQ(value, 2) << "opening the second stepped the statement on";
    EXPECT_EQ(second->Next(), HYN_S_OK);
    EXPECT_EQ(second->Next(), HYN_S_FALSE);
    EXPECT_EQ(second->IsEof(), 1);
    EXPECT_EQ(first->IsEof(), 0);
    EXPECT_EQ(first->Next(), HYN_S_OK);
    EXPECT_EQ(first->Next(), HYN_S_OK);
    second = nullptr;
    EXPECT_EQ(first->Next(), HYN_S_OK) << "the release of the second reset the statement";
    EXPECT_EQ(first->GetFieldValue(0, &value), HYN_S_OK);
    EXPECT_EQ(value, 1);
}

TEST_F(RecordSet, ReadsTheNewStatementAfterAnotherPreparation)
{
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"SELECT 1 AS a, 2 AS b");
    const CHynAutoPtr<CHynSQRecordSet> recordSet = Open(command);
    int value = 0;
    EXPECT_EQ(recordSet->GetFieldValue(u"b", &value), HYN_S_OK);
    ASSERT_EQ(command->PrepareSQL(u"SELECT 3 AS b, 4 AS c, 5 AS d"), HYN_S_OK);
    EXPECT_EQ(recordSet->IsEof(), 0) << "until it is stepped";
    EXPECT_EQ(recordSet->Next(), HYN_S_OK);
    EXPECT_EQ(recordSet->GetFieldCount(), 3);
    EXPECT_EQ(recordSet->GetFieldIndexByName(u"a"), -1);
    EXPECT_EQ(recordSet->GetFieldValue(u"b", &value), HYN_S_OK);
    EXPECT_EQ(value, 3);
    EXPECT_EQ(command->PrepareSQL(u"no SQL"), HYN_E_FAIL);
    EXPECT_EQ(recordSet->GetFieldIndexByName(u"b"), -1);
    EXPECT_EQ(recordSet->Next(), HYN_E_FAIL);
    EXPECT_EQ(recordSet->Reset(), HYN_E_FAIL);
    EXPECT_EQ(recordSet->IsEof(), 0) << "nothing was stepped";
}

TEST_F(RecordSet, HasNothingLeftAfterClose)
{
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"VALUES (1), (2)");
    const CHynAutoPtr<CHynSQRecordSet> recordSet = Open(command);
    recordSet->Close();
    recordSet->Close();
    EXPECT_EQ(recordSet->Next(), HYN_E_FAIL);
    EXPECT_EQ(recordSet->Reset(), HYN_E_FAIL);
    EXPECT_EQ(recordSet->GetFieldCount(), 0);
    EXPECT_EQ(recordSet->IsEof(), 1);
    ReadEach(recordSet, 0, HYN_E_FAIL);
    EXPECT_EQ(command->AddRef(), 2u) << "the record set let it go";
    EXPECT_EQ(command->Release(), 1u);
    int value = 0;
    EXPECT_EQ(Open(command)->GetFieldValue(0, &value), HYN_S_OK);
    EXPECT_EQ(value, 1) << "it was reset";
}
} // namespace
