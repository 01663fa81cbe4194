// Every slot of every interface, called through the raw tables of the objects. The slot numbers are frozen: they are
// what components compiled elsewhere have in their code.

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "tests/framework/ForeignHost.h"
#include "tests/support/Allocations.h"

using namespace ForeignHost;
using HalyonTest::LiveAllocations;

namespace
{
// clang-format off
// After the last slot of its interface a component's table goes on with these: the first destroys the object's parts,
// the second frees its memory as well.
enum ComponentSlot { kDestroy, kDestroyDelete, kDefaultQuery };

// The table of the counting base, which lies right after the interface's table pointer.
enum BaseSlot { kBaseDestroy, kBaseDestroyDelete, kBaseAddRef, kBaseRelease, kBaseQuery };
// clang-format on

using Code = std::int32_t;

class Slots : public testing::Test
{
protected:
    Slots() : m_connection(m_module.MakeConnection())
    {
        EXPECT_EQ(Call<Code>(m_connection, kConnect, u":memory:", u"second", u"third"), kOk);
        EXPECT_EQ(Execute(u"CREATE TABLE t (i, u, l, d, s, m, b)"), kOk);
    }
    ~Slots() override { EXPECT_EQ(Release(m_connection), 0u); }

    Code Execute(const char16_t* sql) { return Call<Code>(m_connection, kExecuteText, sql); }

    void* Open(const char16_t* sql)
    {
        void* recordSet = nullptr;
        EXPECT_EQ(Call<Code>(m_connection, kOpenText, sql, &recordSet), kOk);
        return recordSet;
    }

    void* Prepare(const char16_t* sql)
    {
        void* command = nullptr;
        EXPECT_EQ(Call<Code>(m_connection, kCreateCommand, &command), kOk);
        EXPECT_EQ(Call<Code>(command, kPrepareSQL, sql), kOk);
        return command;
    }

    long long Count()
    {
        void* recordSet = Open(u"SELECT count(*) FROM t");
        long long count = -1;
        EXPECT_EQ(Call<Code>(recordSet, kInt64ByIndex, 0, &count), kOk);
        Release(recordSet);
        return count;
    }

    Module m_module;
    void* m_connection;
};

TEST_F(Slots, OfTheConnection)
{
    EXPECT_EQ(Call<Code>(m_connection, kBeginTrans), kOk);
    EXPECT_EQ(Call<Code>(m_connection, kBeginTrans), kStep) << "already inside one";
    EXPECT_EQ(Execute(u"INSERT INTO t (i) VALUES (1)"), kOk);
    EXPECT_EQ(Call<Code>(m_connection, kRollbackTrans), kOk);
    EXPECT_EQ(Count(), 0);
    EXPECT_EQ(Call<Code>(m_connection, kBeginTrans), kOk);
    EXPECT_EQ(Execute(u"INSERT INTO t (rowid, i) VALUES (-7000000000, 1)"), kOk);
    EXPECT_EQ(Call<Code>(m_connection, kCommitTrans), kOk);
    EXPECT_EQ(Call<Code>(m_connection, kCommitTrans), kStep) << "nothing open";
    EXPECT_EQ(Count(), 1);
    EXPECT_EQ(Call<long long>(m_connection, kGetLastInsertID), -7000000000);
    EXPECT_EQ(Call<Code>(m_connection, kDisConnect), kOk);
    EXPECT_EQ(Execute(u"SELECT * FROM t"), kFail) << "the table was in memory";
}

TEST_F(Slots, OfTheCommandAndTheRecordSet)
{
    const std::uint32_t moment[2] = {0x12340001, 0x00005678};
    const unsigned char blob[] = {1, 0, 2};
    void* command = Prepare(u"INSERT INTO t VALUES (?, ?, ?, ?, ?, ?, ?)");
    EXPECT_EQ(Call<Code>(command, kBindInt, 0, -5), kOk);
    EXPECT_EQ(Call<Code>(command, kBindUnsigned, 1, 0xFFFFFFFFu), kOk);
    EXPECT_EQ(Call<Code>(command, kBindInt64, 2, -6000000000LL), kOk);
    EXPECT_EQ(Call<Code>(command, kBindDouble, 3, 2.5), kOk);
    EXPECT_EQ(Call<Code>(command, kBindText, 4, u"text"), kOk);
    EXPECT_EQ(Call<Code>(command, kBindMoment, 5, &moment[0]), kOk);
    EXPECT_EQ(Call<Code>(command, kBindBlob, 6, &blob[0], std::uint32_t{sizeof blob}), kOk);
    EXPECT_EQ(Call<Code>(command, kExecute), kOk);
    EXPECT_EQ(Release(command), 0u);

    command = Prepare(u"SELECT * FROM t");
    void* recordSet = nullptr;
    EXPECT_EQ(Call<Code>(command, kOpen, &recordSet), kOk);
    EXPECT_EQ(Release(command), 1u) << "the record set keeps it";
    EXPECT_EQ(Call<Code>(recordSet, kGetFieldCount), 7);
    EXPECT_EQ(Call<Code>(recordSet, kIsEof), 0);

    // The two slots of one type stand side by side, the one by name first.
    const auto read = [&]<class... Out>(int slot, int index, const char16_t* name, Out... out)
    {
        EXPECT_EQ(Call<Code>(recordSet, slot, name, out...), kOk) << "slot " << slot;
        EXPECT_EQ(Call<Code>(recordSet, slot + 1, index, out...), kOk) << "slot " << slot + 1;
        EXPECT_EQ(Call<Code>(recordSet, slot, u"other", out...), kFail) << "slot " << slot;
        EXPECT_EQ(Call<Code>(recordSet, slot + 1, 7, out...), kFail) << "slot " << slot + 1;
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
    EXPECT_EQ(i, -5);
    EXPECT_EQ(u, 0xFFFFFFFFu);
    EXPECT_EQ(l, -6000000000LL);
    EXPECT_EQ(d, 2.5);
    EXPECT_EQ(std::u16string(s), u"text");
    EXPECT_EQ(std::memcmp(m, moment, sizeof m), 0);
    EXPECT_EQ(std::memcmp(b, blob, sizeof b), 0);

    // The text and the blob reader take the same arguments and tell themselves apart by their failures.
    room = 4;
    EXPECT_EQ(Call<Code>(recordSet, kTextByIndex, 4, &s[0], &room), kBufferTooSmall);
    EXPECT_EQ(Call<Code>(recordSet, kBlobByIndex, 4, static_cast<void*>(s), &room), kFail);
    EXPECT_EQ(Call<Code>(recordSet, kTextByIndex, 7, &s[0], &room), kFail);

    EXPECT_EQ(Call<Code>(recordSet, kNext), kFalse);
    EXPECT_EQ(Call<Code>(recordSet, kIsEof), 1);
    EXPECT_EQ(Call<Code>(recordSet, kIntByName, u"i", &i), kFail) << "at the end";
    EXPECT_EQ(Call<Code>(recordSet, kReset), kOk);
    EXPECT_EQ(Call<Code>(recordSet, kIsEof), 0);
    EXPECT_EQ(Release(recordSet), 0u);
}

struct Component
{
    const char* name;
    const Identifier& id;
    int end; // the slot after its interface's last one
};

const Component kComponents[] = {{"Connection", kConnection, kConnectionEnd},
                                 {"Command", kCommand, kCommandEnd},
                                 {"RecordSet", kRecordSet, kRecordSetEnd}};

class ComponentSlots : public Slots, public testing::WithParamInterface<Component>
{
protected:
    // A new object of the component under test, with one reference.
    void* Make()
    {
        if (&GetParam().id == &kConnection)
            return m_module.MakeConnection();
        return &GetParam().id == &kCommand ? Prepare(u"SELECT 1") : Open(u"SELECT 1");
    }
};

INSTANTIATE_TEST_SUITE_P(Each, ComponentSlots, testing::ValuesIn(kComponents),
                         [](const auto& test) { return test.param.name; });

TEST_P(ComponentSlots, AnswerQueriesByTheRules)
{
    void* object = Make();
    int marker = 0;
    for (const Identifier& id : {GetParam().id, kUnknown})
    {
        void* out = &marker;
        EXPECT_EQ(Query(object, id, nullptr), kPointer);
        EXPECT_EQ(Query(object, id, &out), kOk);
        EXPECT_EQ(out, object);
        EXPECT_EQ(Release(object), 1u) << "a query adds one reference";
    }
    for (const Identifier& id : {kThread, kConnectionClass, &GetParam().id == &kCommand ? kRecordSet : kCommand})
    {
        void* out = &marker;
        EXPECT_EQ(Query(object, id, nullptr), kNoInterface);
        EXPECT_EQ(Query(object, id, &out), kNoInterface);
        EXPECT_EQ(out, &marker);
    }
    EXPECT_EQ(Release(object), 0u);
}

// One object is destroyed in place and one with its memory, by two slots that stand side by side.
TEST_P(ComponentSlots, GoOnWithTheDestructorsAndTheQueryOfTheComponentAndOfItsCountingBase)
{
    const int end = GetParam().end;
    const struct
    {
        std::size_t table; // where its pointer lies in the object
        int destroy;
        int query;
    } tables[] = {{0, end + kDestroy, end + kDefaultQuery}, {1, kBaseDestroy, kBaseQuery}};
    for (const auto& [table, destroy, query] : tables)
    {
        const long long before = LiveAllocations();
        void* object = Make();
        void* out = nullptr;
        EXPECT_EQ(Call<Code>(static_cast<void**>(object) + table, query, &GetParam().id, &out), kOk);
        EXPECT_EQ(out, object) << "the query moves back to the start of the object";
        Call<void>(static_cast<void**>(object) + table, destroy + 1);
        EXPECT_EQ(LiveAllocations(), before) << "table " << table;

        object = Make();
        Call<void>(static_cast<void**>(object) + table, destroy);
        EXPECT_EQ(LiveAllocations(), before + 1) << "the object's own block is left; table " << table;
        ::operator delete(object);
    }
}

TEST_P(ComponentSlots, OfTheCountingBaseCountForTheWholeObject)
{
    const long long before = LiveAllocations();
    void* base = static_cast<void**>(Make()) + 1;
    EXPECT_EQ(Call<std::uint32_t>(base, kBaseAddRef), 2u);
    EXPECT_EQ(Call<std::uint32_t>(base, kBaseRelease), 1u);
    EXPECT_EQ(Call<std::uint32_t>(base, kBaseRelease), 0u);
    EXPECT_EQ(LiveAllocations(), before) << "the last release destroys the whole object";
}
} // namespace
