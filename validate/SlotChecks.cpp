// The interfaces that are known here, called through the raw slots of the objects by their frozen numbers.
#include <validate/Check.h>

#include <cstring>
#include <string>

#include <validate/FrozenIdentifiers.h>
#include <validate/Step.h>
#include <validate/Subject.h>

namespace HynValidate
{
using namespace Frozen;

namespace
{
using Code = std::int32_t;

template <class... Arguments>
void Expect(Code expected, void* object, const char* name, int slot, Arguments... arguments)
{
    const std::string what = std::string(name) + " in slot " + std::to_string(slot);
    Step("calling " + what);
    ExpectCode(what, Call<Code>(object, slot, arguments...), expected);
}

void ExpectThat(bool holds, const char* what)
{
    if (!holds)
        throw Failure(what);
}

// A connection to a database in memory with the table `t`, and short names for what the tests do with it.
class Database
{
public:
    explicit Database(void* connection) : m_connection(connection)
    {
        Expect(kFail, m_connection, "Connect with a null text", kConnect, nullptr, u"second", u"third");
        Expect(kOk, m_connection, "Connect", kConnect, u":memory:", u"second", u"third");
        Execute(u"CREATE TABLE t (i, u, l, d, s, m, b)");
    }

    void Execute(const char16_t* sql, Code expected = kOk)
    {
        Expect(expected, m_connection, "ExecuteSQL", kExecuteText, sql);
    }

    void* Prepare(const char16_t* sql)
    {
        void* command = nullptr;
        Expect(kOk, m_connection, "CreateCommand", kCreateCommand, &command);
        Expect(kOk, command, "PrepareSQL", kPrepareSQL, sql);
        return command;
    }

    long long Count()
    {
        void* rows = nullptr;
        long long count = -1;
        Expect(kOk, m_connection, "OpenRecordSet", kOpenText, u"SELECT count(*) FROM t", &rows);
        Expect(kOk, rows, "GetFieldValue of a long long by index", kInt64ByIndex, 0, &count);
        Release(rows);
        return count;
    }

private:
    void* m_connection;
};

void CheckConnection(Database& database, void* connection)
{
    Expect(kFail, connection, "CreateCommand with a null pointer", kCreateCommand, nullptr);
    Expect(kFail, connection, "OpenRecordSet with a null pointer", kOpenText, u"SELECT 1", nullptr);
    Expect(kOk, connection, "BeginTrans", kBeginTrans);
    Expect(kStep, connection, "BeginTrans inside a transaction", kBeginTrans);
    database.Execute(u"INSERT INTO t (i) VALUES (1)");
    Expect(kOk, connection, "RollbackTrans", kRollbackTrans);
    ExpectNumber("the count of rows after RollbackTrans in slot 7", database.Count(), 0);
    Expect(kOk, connection, "BeginTrans", kBeginTrans);
    database.Execute(u"INSERT INTO t (rowid, i) VALUES (-7000000000, 1)");
    Expect(kOk, connection, "CommitTrans", kCommitTrans);
    Expect(kStep, connection, "CommitTrans outside a transaction", kCommitTrans);
    ExpectNumber("the count of rows after CommitTrans in slot 6", database.Count(), 1);
    ExpectNumber("GetLastInsertID in slot 11", Call<long long>(connection, kGetLastInsertID), -7000000000);
    database.Execute(u"DELETE FROM t");
}

// Few seconds and a fraction in either byte order: a number must hold all of it.
constexpr std::uint32_t kMoment[2] = {0x00020001, 0x00035678};
constexpr unsigned char kBlob[] = {1, 0, 2};

void CheckCommand(Database& database)
{
    void* command = database.Prepare(u"INSERT INTO t VALUES (?, ?, ?, ?, ?, ?, ?)");
    const char* name = "BindFieldValue";
    Expect(kOk, command, name, kBindInt, 0, -5);
    Expect(kOk, command, name, kBindUnsigned, 1, 0xFFFFFFFFu);
    Expect(kOk, command, name, kBindInt64, 2, -6000000000LL);
    Expect(kOk, command, name, kBindDouble, 3, 2.5);
    Expect(kOk, command, name, kBindText, 4, u"text");
    Expect(kOk, command, name, kBindMoment, 5, &kMoment[0]);
    Expect(kOk, command, name, kBindBlob, 6, &kBlob[0], std::uint32_t{sizeof kBlob});
    Expect(kOk, command, "ExecuteSQL", kExecute);
    ExpectNumber("Release of the command", Release(command), 0);
}

// What CheckCommand wrote, column by column. The two slots of one type stand side by side, the one by name first.
void CheckReaders(void* rows)
{
    const auto read = [&]<class... Out>(int slot, int index, const char16_t* column, Out... out)
    {
        const char* name = "GetFieldValue";
        Expect(kOk, rows, name, slot, column, out...);
        Expect(kOk, rows, name, slot + 1, index, out...);
        Expect(kFail, rows, name, slot, u"other", out...);
        Expect(kFail, rows, name, slot + 1, 7, out...);
    };
    int i = 0;
    std::uint32_t u = 0;
    long long l = 0;
    double d = 0;
    char16_t s[5] = {};
    std::uint32_t room = 5;
    std::uint32_t m[2] = {};
    unsigned char b[3] = {};
    std::uint32_t size = 3;
    read(kIntByName, 0, u"I", &i);
    read(kUnsignedByName, 1, u"U", &u);
    read(kInt64ByName, 2, u"L", &l);
    read(kDoubleByName, 3, u"D", &d);
    read(kTextByName, 4, u"S", &s[0], &room);
    read(kMomentByName, 5, u"M", &m[0]);
    read(kBlobByName, 6, u"B", static_cast<void*>(b), &size);
    ExpectThat(i == -5, "the int that was bound in slot 4 is read otherwise in slots 6 and 7");
    ExpectThat(u == 0xFFFFFFFFu, "the unsigned number that was bound in slot 5 is read otherwise in slots 8 and 9");
    ExpectThat(l == -6000000000, "the long long that was bound in slot 6 is read otherwise in slots 10 and 11");
    ExpectThat(d == 2.5, "the double that was bound in slot 7 is read otherwise in slots 12 and 13");
    ExpectThat(std::u16string(s) == u"text", "the text that was bound in slot 8 is read otherwise in slots 14 and 15");
    ExpectThat(std::memcmp(m, kMoment, sizeof m) == 0,
               "the moment that was bound in slot 9 is read otherwise in slots 16 and 17");
    ExpectThat(std::memcmp(b, kBlob, sizeof b) == 0,
               "the blob that was bound in slot 10 is read otherwise in slots 18 and 19");

    // The text and the blob reader take the same arguments and tell themselves apart by their failures.
    room = 4;
    Expect(kBufferTooSmall, rows, "GetFieldValue of a text without room", kTextByIndex, 4, &s[0], &room);
    Expect(kFail, rows, "GetFieldValue of a blob without room", kBlobByIndex, 4, static_cast<void*>(s), &room);
}

void CheckRecordSet(Database& database)
{
    void* command = database.Prepare(u"SELECT * FROM t");
    void* rows = nullptr;
    Expect(kOk, command, "OpenRecordSet", kOpen, &rows);
    ExpectNumber("Release of a command that its record set keeps", Release(command), 1);
    Expect(7, rows, "GetFieldCount", kGetFieldCount);
    Expect(0, rows, "IsEof", kIsEof);
    CheckReaders(rows);
    int i = 0;
    Expect(kFalse, rows, "Next after the only row", kNext);
    Expect(1, rows, "IsEof", kIsEof);
    Expect(kFail, rows, "GetFieldValue at the end", kIntByName, u"i", &i);
    Expect(kOk, rows, "Reset", kReset);
    Expect(0, rows, "IsEof", kIsEof);
    ExpectNumber("Release of the record set", Release(rows), 0);
}

void CheckDatabase(void* connection)
{
    Database database(connection);
    CheckConnection(database, connection);
    CheckCommand(database);
    CheckRecordSet(database);
    Expect(kOk, connection, "DisConnect", kDisConnect);
    database.Execute(u"SELECT * FROM t", kFail); // it was in memory
    ExpectNumber("the last Release of the connection", Release(connection), 0);
}
} // namespace

void CheckSlots(Subject& subject)
{
    const Module module(subject.Path());
    bool isAnyKnown = false;
    for (const Class& cls : subject.Classes())
    {
        for (const Identifier& iid : cls.interfaces)
        {
            for (const auto& [name, text, slots] : kIdentifiers)
            {
                if (slots <= kRootEnd || !(FromText(text) == iid))
                    continue;
                isAnyKnown = true;
                ExpectSlotsOfCode(module.Make(cls.id, iid), slots, std::string(name) + " of " + NameOf(cls.id));
            }
            if (iid == kConnection)
                CheckDatabase(module.Make(cls.id, iid));
        }
    }
    if (!isAnyKnown)
        throw Skip("answers no interface that is known here but IID_IHynUnknown");
}
} // namespace HynValidate
