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

constexpr std::array<HynResult, 2> kStatement = {HYN_E_FAIL, HYN_E_SQSTEP};

const Operation<DatabaseWorld> kOperations[] = {
    {"MyDllGetClassObject",
     [](DatabaseWorld& world)
     {
         return LoadedModule::Get(IID_IHynSQConnection, reinterpret_cast<void**>(world.other.Receive()));
     }},
    {"QueryInterface",
     [](DatabaseWorld& world)
     {
         CHynAutoPtr<IHynUnknown> same;
         return world.command->QueryInterface(IID_IHynUnknown, reinterpret_cast<void**>(same.Receive()));
     }},
    {"Connect", [](DatabaseWorld& world) { return world.other->Connect(u":memory:", u"a", u"b"); }, kStatement,
     [](DatabaseWorld& world)
     {
         world.other->DisConnect();
     }}, // a failed opening is remembered until then
    {"the handle of an own thread",
     [](DatabaseWorld& world)
     {
         CHynAutoPtr<IHynSQCommand> command;
         return world.other->CreateCommand(command.Receive());
     },
     kStatement,
     [](DatabaseWorld& world)
     {
         world.other->DisConnect();
     }},
    {"DisConnect",
     [](DatabaseWorld& world)
     {
         return world.connection->DisConnect();
     }},
    {"BeginTrans", [](DatabaseWorld& world) { return world.connection->BeginTrans(); }, kStatement},
    {"a transaction", Transact, kStatement,
     [](DatabaseWorld& world)
     {
         world.connection->RollbackTrans();
     }},
    {"RollbackTrans",
     [](DatabaseWorld& world)
     {
         const HynResult result = world.connection->BeginTrans();
         return HynFailed(result) ? result : world.connection->RollbackTrans();
     },
     kStatement,
     [](DatabaseWorld& world)
     {
         world.connection->RollbackTrans();
     }},
    {"ExecuteSQL",
     [](DatabaseWorld& world) { return world.connection->ExecuteSQL(u"CREATE TABLE IF NOT EXISTS u (x)"); },
     kStatement},
    {"OpenRecordSet of a connection",
     [](DatabaseWorld& world)
     { return world.connection->OpenRecordSet(u"SELECT s || n FROM t", world.rows.Receive()); },
     kStatement},
    {"CreateCommand",
     [](DatabaseWorld& world)
     {
         return world.connection->CreateCommand(world.command.Receive());
     }},
    {"GetLastInsertID",
     [](DatabaseWorld& world)
     {
         return world.connection->GetLastInsertID() == 2 ? HYN_S_OK : kWrong;
     }},
    {"PrepareSQL",
     [](DatabaseWorld& world)
     {
         return world.command->PrepareSQL(u"SELECT * FROM t WHERE s > ? ORDER BY n");
     }},
    {"BindFieldValue of int",
     [](DatabaseWorld& world)
     {
         return world.command->BindFieldValue(0, std::int32_t{1});
     }},
    {"BindFieldValue of unsigned",
     [](DatabaseWorld& world)
     {
         return world.command->BindFieldValue(0, std::uint32_t{1});
     }},
    {"BindFieldValue of long long",
     [](DatabaseWorld& world)
     {
         return world.command->BindFieldValue(0, 1LL);
     }},
    {"BindFieldValue of double",
     [](DatabaseWorld& world)
     {
         return world.command->BindFieldValue(0, 1.5);
     }},
    {"BindFieldValue of text",
     [](DatabaseWorld& world)
     {
         return world.command->BindFieldValue(0, kText);
     }},
    {"BindFieldValue of a moment",
     [](DatabaseWorld& world)
     {
         FILETIME moment = {};
         return world.command->BindFieldValue(0, &moment);
     }},
    {"BindFieldValue of a blob",
     [](DatabaseWorld& world)
     {
         return world.command->BindFieldValue(0, const_cast<char16_t*>(kText), 10u);
     }},
    {"ExecuteSQL of a command",
     [](DatabaseWorld& world)
     {
         world.rows = nullptr; // nobody reads
         const HynResult bound = world.command->BindFieldValue(0, kText);
         return HynFailed(bound) ? bound : world.command->ExecuteSQL();
     },
     kStatement},
    {"OpenRecordSet of a command",
     [](DatabaseWorld& world)
     {
         HynResult result = world.command->PrepareSQL(u"SELECT s FROM t ORDER BY s DESC");
         if (HynSucceeded(result))
             result = world.command->OpenRecordSet(world.rows.Receive());
         return HynFailed(result) ? result : Text(world, 0, kTextView);
     },
     kStatement},
    {"Next", [](DatabaseWorld& world) { return world.rows->Next(); }, kStatement},
    {"Reset", [](DatabaseWorld& world) { return world.rows->Reset(); }, kStatement, Rewind},
    {"GetFieldCount",
     [](DatabaseWorld& world)
     {
         return world.rows->GetFieldCount() == 4 ? HYN_S_OK : kWrong;
     }},
    {"text by name",
     [](DatabaseWorld& world)
     {
         return Text(world, u"S", kTextView);
     }},
    {"text by index",
     [](DatabaseWorld& world)
     {
         return Text(world, 0, kTextView);
     }},
    {"a number as text", [](DatabaseWorld& world) { return Text(world, 1, u"2.5"); }, {HYN_E_FAIL, HYN_E_FAIL}, Rewind},
    {"no text",
     [](DatabaseWorld& world)
     {
         return Text(world, 3, u"") == HYN_E_SQNULLVALUE ? HYN_S_OK : kWrong;
     }},
    {"no text after another statement has failed",
     [](DatabaseWorld& world)
     {
         CHynAutoPtr<IHynSQRecordSet> others;
         const HynResult other = world.connection->OpenRecordSet(u"SELECT 'x' || s FROM t", others.Receive());
         if (HynSucceeded(other))
         {
             char16_t text[100];
             std::uint32_t room = 100;
             others->GetFieldValue(0, text, &room);
         }
         others = nullptr;
         return Text(world, 3, u"") == HYN_E_SQNULLVALUE ? HYN_S_OK : kWrong;
     }},
    {"a blob by name",
     [](DatabaseWorld& world)
     {
         return Blob(world, u"b", 50);
     }},
    {"a number as bytes", [](DatabaseWorld& world) { return Blob(world, 1, 6); }, {HYN_E_FAIL, HYN_E_FAIL}, Rewind},
    {"text as bytes",
     [](DatabaseWorld& world)
     {
         return Blob(world, 0, 2 * kTextView.size());
     }},
    {"no bytes",
     [](DatabaseWorld& world)
     {
         return Blob(world, 3, 0);
     }},
    {"numbers of text",
     [](DatabaseWorld& world)
     {
         double number = -1;
         long long whole = -1;
         std::int32_t small = -1;
         std::uint32_t natural = 1;
         FILETIME moment = {};
         for (const HynResult result :
              {world.rows->GetFieldValue(u"s", &number), world.rows->GetFieldValue(u"s", &whole),
               world.rows->GetFieldValue(u"s", &small), world.rows->GetFieldValue(u"s", &natural),
               world.rows->GetFieldValue(u"s", &moment)})
         {
             if (HynFailed(result))
                 return result;
         }
         return number == 0 && whole == 0 && small == 0 && natural == 0 ? HYN_S_OK : kWrong;
     }},
    {"a column of many by name",
     [](DatabaseWorld& world)
     {
         static const std::u16string s_sql = []
         {
             std::u16string sql = u"SELECT 0 AS c0";
             for (int i = 1; i < 70; ++i)
             {
                 const std::string number = std::to_string(i);
                 sql += u", 0 AS c" + std::u16string(number.begin(), number.end());
             }
             return sql;
         }();
         HynResult result = world.connection->OpenRecordSet(s_sql.c_str(), world.rows.Receive());
         std::int32_t value = -1;
         if (HynSucceeded(result))
             result = world.rows->GetFieldValue(u"C69", &value);
         return HynFailed(result) || value == 0 ? result : kWrong;
     },
     kStatement},
};

TEST(DatabaseMemory, IsMissedWithTheStatedCodeAndNothingIsLost)
{
    FaultCount count("database");
    for (const auto& operation : kOperations)
        FailEachAllocation(operation, count);
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
