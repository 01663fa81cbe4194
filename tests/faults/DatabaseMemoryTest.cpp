// The loaded module without memory: every operation of connection, command and record set, through its interface.
#include <tests/faults/Operations.h>

#include <cstring>
#include <string_view>

#include <halyon/database/IHynSQCommand.h>
#include <halyon/database/IHynSQRecordSet.h>
#include <halyon/framework/HynIdentifiers.h>

#include <tests/faults/LoadedModule.h>

using namespace Halyon;
using namespace HalyonTest;

namespace
{
constexpr char16_t kText[] = u"some text that is longer than what fits into small buffers, \u00fcber";
constexpr std::u16string_view kTextView = kText;

// A database with a row of each kind, in which text is kept as UTF-8 and so has to be converted.
struct DatabaseWorld
{
    DatabaseWorld()
    {
        EXPECT_EQ(connection->Connect(u":memory:", u"a", u"b"), HYN_S_OK);
        for (const char16_t* sql : {u"PRAGMA encoding = 'UTF-8'", u"CREATE TABLE t (s, n, b, z)",
                                    u"INSERT INTO t VALUES ('some text that is longer than what fits into small "
                                    u"buffers, \u00fcber', 2.5, zeroblob(50), NULL), (1, 2, 3, 4)"})
            EXPECT_EQ(connection->ExecuteSQL(sql), HYN_S_OK);
        EXPECT_EQ(connection->CreateCommand(command.Receive()), HYN_S_OK);
        EXPECT_EQ(command->PrepareSQL(u"INSERT INTO t (s, n) VALUES (?, ?)"), HYN_S_OK);
        EXPECT_EQ(connection->OpenRecordSet(u"SELECT s, n, b, z FROM t", rows.Receive()), HYN_S_OK);
    }

    // The number of rows, as a caller with memory finds it.
    long long Count() const
    {
        CHynAutoPtr<IHynSQRecordSet> counted;
        long long count = -1;
        if (connection->OpenRecordSet(u"SELECT count(*) FROM t", counted.Receive()) == HYN_S_OK)
            counted->GetFieldValue(0, &count);
        return count;
    }

    CHynAutoPtr<IHynSQConnection> connection = LoadedModule::Connection();
    CHynAutoPtr<IHynSQConnection> other = LoadedModule::Connection(); // not connected
    CHynAutoPtr<IHynSQCommand> command;
    CHynAutoPtr<IHynSQRecordSet> rows;
};

template <class Column>
HynResult Text(DatabaseWorld& world, Column column, std::u16string_view expected)
{
    char16_t text[100] = {};
    std::uint32_t room = 100;
    const HynResult result = world.rows->GetFieldValue(column, text, &room);
    return HynFailed(result) || text == expected ? result : kWrong;
}

template <class Column>
HynResult Blob(DatabaseWorld& world, Column column, std::uint32_t expected)
{
    char bytes[200];
    std::uint32_t size = 0;
    const HynResult result = world.rows->GetFieldValue(column, static_cast<void*>(nullptr), &size);
    if (HynFailed(result))
        return size == 0 ? result : kWrong;
    return size == expected ? world.rows->GetFieldValue(column, static_cast<void*>(bytes), &size) : kWrong;
}

// A transaction that adds a row: there as a whole once it says so, else not there at all.
HynResult Transact(DatabaseWorld& world)
{
    HynResult result = world.connection->BeginTrans();
    if (HynFailed(result))
        return result;
    result = world.connection->ExecuteSQL(u"INSERT INTO t (s) VALUES (zeroblob(3000))");
    if (HynSucceeded(result))
        return world.connection->CommitTrans();
    world.connection->RollbackTrans();
    return result;
}

// To the first row again; the first reset after a failure still reports that.
void Rewind(DatabaseWorld& world)
{
    world.rows->Reset();
    world.rows->Reset();
}

// The out pointer is left alone when there is no object to hand over.
HynResult GetClassObject(DatabaseWorld& world)
{
    void* out = &world;
    const HynResult result = LoadedModule::Get(IID_IHynSQConnection, &out);
    if (HynFailed(result))
        return out == &world ? result : kWrong;
    static_cast<IHynSQConnection*>(out)->Release();
    return result;
}

void DisConnect(DatabaseWorld& world)
{
    world.other->DisConnect();
}

void RollBack(DatabaseWorld& world)
{
    world.connection->RollbackTrans();
}

// A text that is a NULL tells so, and not that memory is missing.
HynResult NoText(DatabaseWorld& world)
{
    return IsDone(Text(world, 3, u"") == HYN_E_SQNULLVALUE);
}

HynResult NoTextAfterAnotherStatementHasFailed(DatabaseWorld& world)
{
    CHynAutoPtr<IHynSQRecordSet> others;
    if (HynSucceeded(world.connection->OpenRecordSet(u"SELECT 'x' || s FROM t", others.Receive())))
    {
        char16_t text[100];
        std::uint32_t room = 100;
        others->GetFieldValue(0, text, &room);
    }
    others = nullptr;
    return NoText(world);
}

HynResult RollBackWhatBegan(DatabaseWorld& world)
{
    const HynResult result = world.connection->BeginTrans();
    return HynFailed(result) ? result : world.connection->RollbackTrans();
}

HynResult ExecuteCommand(DatabaseWorld& world)
{
    world.rows = nullptr; // nobody reads
    const HynResult bound = world.command->BindFieldValue(0, kText);
    return HynFailed(bound) ? bound : world.command->ExecuteSQL();
}

HynResult OpenRecordSetOfCommand(DatabaseWorld& world)
{
    HynResult result = world.command->PrepareSQL(u"SELECT s FROM t ORDER BY s DESC");
    if (HynSucceeded(result))
        result = world.command->OpenRecordSet(world.rows.Receive());
    return HynFailed(result) ? result : Text(world, 0, kTextView);
}

HynResult NumbersOfText(DatabaseWorld& world)
{
    double number = -1;
    long long whole = -1;
    std::int32_t small = -1;
    std::uint32_t natural = 1;
    FILETIME moment = {};
    for (const HynResult result : {world.rows->GetFieldValue(u"s", &number), world.rows->GetFieldValue(u"s", &whole),
                                   world.rows->GetFieldValue(u"s", &small), world.rows->GetFieldValue(u"s", &natural),
                                   world.rows->GetFieldValue(u"s", &moment)})
    {
        if (HynFailed(result))
            return result;
    }
    return IsDone(number == 0 && whole == 0 && small == 0 && natural == 0);
}

HynResult ColumnOfMany(DatabaseWorld& world)
{
    static const std::u16string s_sql = []
    {
        std::string sql = "SELECT 0 AS c0";
        for (int i = 1; i < 70; ++i)
            sql += ", 0 AS c" + std::to_string(i);
        return std::u16string(sql.begin(), sql.end());
    }();
    HynResult result = world.connection->OpenRecordSet(s_sql.c_str(), world.rows.Receive());
    std::int32_t value = -1;
    if (HynSucceeded(result))
        result = world.rows->GetFieldValue(u"C69", &value);
    return HynFailed(result) || value == 0 ? result : kWrong;
}

using World = DatabaseWorld;
using Op = Operation<DatabaseWorld>;
constexpr Op::Failing kStatement = {{HYN_E_FAIL, HYN_E_SQSTEP}};
constexpr Op::Failing kOpening = {kStatement.answers, DisConnect}; // a failed one is remembered until then
constexpr Op::Failing kTransaction = {kStatement.answers, RollBack};
constexpr Op::Failing kReset = {kStatement.answers, Rewind};
constexpr Op::Failing kConversion = {{HYN_E_FAIL, HYN_E_FAIL}, Rewind};

const Op kOperations[] = {
    Op("MyDllGetClassObject", GetClassObject),
    Op("QueryInterface",
       [](World& world)
       {
           CHynAutoPtr<IHynUnknown> same;
           return world.command->QueryInterface(IID_IHynUnknown, reinterpret_cast<void**>(same.Receive()));
       }),
    Op("Connect", kOpening, [](World& world) { return world.other->Connect(u":memory:", u"a", u"b"); }),
    Op("the handle of an own thread", kOpening,
       [](World& world)
       {
           CHynAutoPtr<IHynSQCommand> command;
           return world.other->CreateCommand(command.Receive());
       }),
    Op("DisConnect", [](World& world) { return world.connection->DisConnect(); }),
    Op("BeginTrans", kStatement, [](World& world) { return world.connection->BeginTrans(); }),
    Op("a transaction", kTransaction, Transact),
    Op("RollbackTrans", kTransaction, RollBackWhatBegan),
    Op("ExecuteSQL", kStatement,
       [](World& world) { return world.connection->ExecuteSQL(u"CREATE TABLE IF NOT EXISTS u (x)"); }),
    Op("OpenRecordSet of a connection", kStatement,
       [](World& world) { return world.connection->OpenRecordSet(u"SELECT s || n FROM t", world.rows.Receive()); }),
    Op("CreateCommand", [](World& world) { return world.connection->CreateCommand(world.command.Receive()); }),
    Op("GetLastInsertID", [](World& world) { return IsDone(world.connection->GetLastInsertID() == 2); }),
    Op("PrepareSQL", [](World& world) { return world.command->PrepareSQL(u"SELECT * FROM t WHERE s > ? ORDER BY n"); }),
    Op("BindFieldValue of int", [](World& world) { return world.command->BindFieldValue(0, std::int32_t{1}); }),
    Op("BindFieldValue of unsigned", [](World& world) { return world.command->BindFieldValue(0, std::uint32_t{1}); }),
    Op("BindFieldValue of long long", [](World& world) { return world.command->BindFieldValue(0, 1LL); }),
    Op("BindFieldValue of double", [](World& world) { return world.command->BindFieldValue(0, 1.5); }),
    Op("BindFieldValue of text", [](World& world) { return world.command->BindFieldValue(0, kText); }),
    Op("BindFieldValue of a moment",
       [](World& world)
       {
           FILETIME moment = {};
           return world.command->BindFieldValue(0, &moment);
       }),
    Op("BindFieldValue of a blob",
       [](World& world) { return world.command->BindFieldValue(0, const_cast<char16_t*>(kText), 10u); }),
    Op("ExecuteSQL of a command", kStatement, ExecuteCommand),
    Op("OpenRecordSet of a command", kStatement, OpenRecordSetOfCommand),
    Op("Next", kStatement, [](World& world) { return world.rows->Next(); }),
    Op("Reset", kReset, [](World& world) { return world.rows->Reset(); }),
    Op("GetFieldCount", [](World& world) { return IsDone(world.rows->GetFieldCount() == 4); }),
    Op("text by name", [](World& world) { return Text(world, u"S", kTextView); }),
    Op("text by index", [](World& world) { return Text(world, 0, kTextView); }),
    Op("a number as text", kConversion, [](World& world) { return Text(world, 1, u"2.5"); }),
    Op("no text", NoText),
    Op("no text after another statement has failed", NoTextAfterAnotherStatementHasFailed),
    Op("a blob by name", [](World& world) { return Blob(world, u"b", 50); }),
    Op("a number as bytes", kConversion, [](World& world) { return Blob(world, 1, 6); }),
    Op("text as bytes", [](World& world) { return Blob(world, 0, 2 * kTextView.size()); }),
    Op("no bytes", [](World& world) { return Blob(world, 3, 0); }),
    Op("numbers of text", NumbersOfText),
    Op("a column of many by name", kStatement, ColumnOfMany),
};

TEST(DatabaseMemory, IsMissedWithTheStatedCodeAndNothingIsLost)
{
    FailEachAllocation("database", kOperations);
}

// What says that it failed must not be there, what says that it is done must.
TEST(DatabaseMemory, TransactionsAreThereIffTheySaySo)
{
    DatabaseWorld world;
    long long rows = world.Count();
    for (const bool forGood : {false, true})
    {
        bool failed = true;
        int nth = 1;
        for (; failed; ++nth)
        {
            HynResult result = HYN_S_OK;
            {
                const FailAllocation fail(nth, forGood);
                result = Transact(world);
                failed = FailAllocation::HasFailed();
            }
            rows += HynSucceeded(result) ? 1 : 0;
            world.connection->RollbackTrans();
            ASSERT_EQ(world.Count(), rows) << nth;
        }
        EXPECT_GT(nth, 30);
    }
}

TEST(DatabaseMemory, AFailedConnectStoresAndOpensNothing)
{
    DatabaseWorld world;
    for (int nth = 1; nth <= 3; ++nth) // copies of the texts
    {
        const FailAllocation fail(nth);
        EXPECT_EQ(world.other->Connect(u"/no/folder/a.db", u"second", u"third"), HYN_E_FAIL);
    }
    EXPECT_EQ(world.other->GetLastInsertID(), 0) << "opens the empty path, which is what is stored";
    EXPECT_EQ(world.other->Connect(u"x", u"y", u""), HYN_S_OK);
}
} // namespace
