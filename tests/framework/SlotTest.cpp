// What the tables of a component hold beside the operations of its interface, and how its queries answer. The
// operations themselves, slot by slot, are for the validator: it holds the module to them among its tests.

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

struct Component
{
    const char* name;
    const Identifier& id;
    int end; // the slot after its interface's last one
};

const Component kComponents[] = {{"Connection", kConnection, kConnectionEnd},
                                 {"Command", kCommand, kCommandEnd},
                                 {"RecordSet", kRecordSet, kRecordSetEnd}};

class ComponentSlots : public testing::TestWithParam<Component>
{
protected:
    ComponentSlots() : m_connection(m_module.MakeConnection())
    {
        EXPECT_EQ(Call<Code>(m_connection, kConnect, u":memory:", u"second", u"third"), kOk);
    }
    ~ComponentSlots() override { EXPECT_EQ(Release(m_connection), 0u); }

    // A new object of the component under test, with one reference.
    void* Make()
    {
        if (&GetParam().id == &kConnection)
            return m_module.MakeConnection();
        void* object = nullptr;
        if (&GetParam().id == &kRecordSet)
        {
            EXPECT_EQ(Call<Code>(m_connection, kOpenText, u"SELECT 1", &object), kOk);
            return object;
        }
        EXPECT_EQ(Call<Code>(m_connection, kCreateCommand, &object), kOk);
        EXPECT_EQ(Call<Code>(object, kPrepareSQL, u"SELECT 1"), kOk);
        return object;
    }

    Module m_module;
    void* m_connection;
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
