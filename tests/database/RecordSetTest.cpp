// Stepping and reading.

#include <algorithm>
#include <span>

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

    // Calls `test` with a value of each type that is read into a single place.
    template <class Test>
    static void ForEachType(Test test)
    {
        test(std::int32_t{5});
        test(std::uint32_t{5});
        test(5LL);
        test(5.0);
        test(FILETIME{5, 5});
    }

    // Every reader, by index or by name; all are expected to fail with the same code and to leave the outputs alone.
    template <class Column>
    static void ReadEach(IHynSQRecordSet* recordSet, Column column, HynResult expected)
    {
        ForEachType(
            [&](auto value)
            {
                const auto before = value;
                EXPECT_EQ(recordSet->GetFieldValue(column, &value), expected);
                EXPECT_TRUE(
                    std::ranges::equal(std::as_bytes(std::span(&value, 1)), std::as_bytes(std::span(&before, 1))));
            });
        std::uint32_t size = 5;
        EXPECT_EQ(recordSet->GetFieldValue(column, static_cast<void*>(nullptr), &size), expected);
        EXPECT_EQ(size, 5u);
        EXPECT_EQ(Text(recordSet, column), HynResultName(expected));
    }
};

TEST_F(RecordSet, StepsPastTheLastRowAndRoundAgain)
{
    const CHynAutoPtr<CHynSQRecordSet> rows = Open(u"VALUES (1), (2)");
    EXPECT_EQ(rows->IsEof(), 0);
    EXPECT_EQ(rows->Next(), HYN_S_OK);
    EXPECT_EQ(rows->Next(), HYN_S_FALSE);
    EXPECT_EQ(rows->IsEof(), 1);
    EXPECT_EQ(rows->Next(), HYN_S_OK) << "the engine starts again by itself";
    EXPECT_EQ(rows->Next(), HYN_S_OK);
    EXPECT_EQ(rows->Reset(), HYN_S_OK);
    EXPECT_EQ(rows->IsEof(), 0);
    EXPECT_EQ(Read<int>(rows, 0), 1);

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
    EXPECT_EQ(Read<int>(recordSet, u"TWO"), 2);
}

TEST_F(RecordSet, RefusesNullOutputs)
{
    const CHynAutoPtr<CHynSQRecordSet> recordSet = Open(u"SELECT 1 AS one");
    ForEachType(
        [&](auto value)
        {
            auto* null = static_cast<decltype(value)*>(nullptr);
            EXPECT_EQ(recordSet->GetFieldValue(0, null), HYN_E_FAIL);
            EXPECT_EQ(recordSet->GetFieldValue(u"one", null), HYN_E_FAIL);
        });
    std::uint32_t length = 10;
    EXPECT_EQ(recordSet->GetFieldValue(0, static_cast<char16_t*>(nullptr), &length), HYN_E_FAIL);
    EXPECT_EQ(recordSet->GetFieldValue(0, static_cast<void*>(&length), nullptr), HYN_E_FAIL);
}

TEST_F(RecordSet, ReadsByIndexAtTheEndButNotByName)
{
    const CHynAutoPtr<CHynSQRecordSet> recordSet = Open(u"SELECT 7 AS a");
    EXPECT_EQ(recordSet->Next(), HYN_S_FALSE);
    ReadEach(recordSet, u"a", HYN_E_FAIL);
    EXPECT_EQ(Read<int>(recordSet, 0), 0) << "as NULL, from the engine";
    EXPECT_EQ(Text(recordSet, 0), "HYN_E_SQNULLVALUE");
    EXPECT_EQ(recordSet->GetFieldIndexByName(u"A"), 0);
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
        Open(u"SELECT 'abc', x'0102030405', zeroblob(4), 42, 'ab' || char(0) || 'c', '', NULL");
    using namespace std::string_view_literals;
    const auto text = [](std::u16string_view units) // in the machine's byte order
    {
        return std::string_view(reinterpret_cast<const char*>(units.data()), units.size() * 2);
    };
    const std::string_view expected[] = {text(u"abc"),     "\1\2\3\4\5"sv, "\0\0\0\0"sv, text(u"42"),
                                         text(u"ab\0c"sv), ""sv,           ""sv};
    for (int column = 0; column < 7; ++column)
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
        EXPECT_EQ(buffer, std::string(bytes) + "#") << column;
    }
}

TEST_F(RecordSet, ShareTheStatementOfTheirCommandButNotTheEnd)
{
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"VALUES (1), (2), (3)");
    const CHynAutoPtr<CHynSQRecordSet> first = Open(command);
    CHynAutoPtr<CHynSQRecordSet> second = Open(command);
    EXPECT_EQ(Read<int>(first, 0), 2) << "opening the second stepped the statement on";
    EXPECT_EQ(second->Next(), HYN_S_OK);
    EXPECT_EQ(second->Next(), HYN_S_FALSE);
    EXPECT_EQ(second->IsEof(), 1);
    EXPECT_EQ(first->IsEof(), 0);
    EXPECT_EQ(first->Next(), HYN_S_OK);
    EXPECT_EQ(first->Next(), HYN_S_OK);
    second = nullptr;
    EXPECT_EQ(first->Next(), HYN_S_OK) << "the release of the second reset the statement";
    EXPECT_EQ(Read<int>(first, 0), 1);
}

TEST_F(RecordSet, ReadsTheNewStatementAfterAnotherPreparation)
{
    const CHynAutoPtr<CHynSQCommand> command = Prepare(u"SELECT 1 AS a, 2 AS b");
    const CHynAutoPtr<CHynSQRecordSet> recordSet = Open(command);
    EXPECT_EQ(Read<int>(recordSet, u"b"), 2);
    ASSERT_EQ(command->PrepareSQL(u"SELECT 3 AS b, 4 AS c, 5 AS d"), HYN_S_OK);
    EXPECT_EQ(recordSet->IsEof(), 0) << "until it is stepped";
    EXPECT_EQ(recordSet->Next(), HYN_S_OK);
    EXPECT_EQ(recordSet->GetFieldCount(), 3);
    EXPECT_EQ(recordSet->GetFieldIndexByName(u"a"), -1);
    EXPECT_EQ(Read<int>(recordSet, u"b"), 3);
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
    EXPECT_EQ(Read<int>(Open(command), 0), 1) << "it was reset";
}
} // namespace
