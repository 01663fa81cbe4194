// What a host finds in the module's file, as the binary tools show it, and that it can be loaded and closed any number
// of times. What every module must do is for the validator, which holds this one to it among its tests.

#include <set>
#include <sstream>
#include <string>
#include <tuple>

#include <malloc.h>

#include <gtest/gtest.h>

#include "tests/framework/ForeignHost.h"
#include "tests/support/Allocations.h"
#include "tests/support/Command.h"
#include <validate/FrozenIdentifiers.h>

using namespace ForeignHost;
using namespace HalyonTest;

namespace
{
// The last word of each line of what `tool` says of the module.
std::multiset<std::string> LastWords(const std::string& tool)
{
    std::istringstream lines(OutputOf(tool + " '" HYNSQ_MODULE "'"));
    std::multiset<std::string> words;
    for (std::string line; std::getline(lines, line);)
        words.insert(line.substr(line.find_last_of(' ') + 1));
    return words;
}

TEST(ModuleFile, ExportsTheEntryPointsAndTheIdentifiersAlone)
{
    std::multiset<std::string> expected = {"MyDllGetClassObject", "MyDllCanUnloadNow"};
    for (const auto& identifier : kIdentifiers)
        expected.insert(identifier.name);
    EXPECT_EQ(expected.size(), 70u);
    EXPECT_EQ(LastWords("nm -D --defined-only"), expected);
}

TEST(ModuleFile, NeedsTheEngineUnicodeAndTheLanguageRuntimeAlone)
{
    // The sanitizers' own libraries come with an instrumented build.
    const char* allowed[] = {"[libsqlite3.so", "[libicuuc.so", "[libstdc++.so", "[libgcc_s.so",
                             "[libc.so",       "[libm.so",     "[ld",           "[libasan.so",
                             "[libubsan.so",   "[libtsan.so",  "[libicudata.so"};
    std::multiset<std::string> needed = LastWords("readelf -dW '" HYNSQ_MODULE "' | grep NEEDED; true");
    EXPECT_GE(needed.size(), 3u);
    for (const char* name : allowed)
        std::erase_if(needed, [name](const std::string& library) { return library.starts_with(name); });
    EXPECT_TRUE(needed.empty()) << *needed.begin() << " should not be needed";
}

TEST(ModuleFile, BindsItsIdentifiersToItself)
{
    // A relocation by name would let any library in the process put another value in their place.
    const std::string relocations = OutputOf("readelf -rW '" HYNSQ_MODULE "'");
    EXPECT_NE(relocations.find("sqlite3_open16"), std::string::npos);
    for (const char* name : {" IID_", " CLSID_", " MyDll"})
        EXPECT_EQ(relocations.find(name), std::string::npos) << name;
}

TEST(ModuleFile, CarriesTheLoadTimeMarksInEachUnit)
{
    const std::multiset<std::string> names = LastWords("nm -C");
    EXPECT_GE(names.count("Halyon::ADDCTBBegin"), 10u);
    EXPECT_EQ(names.count("Halyon::ADDCTBBegin"), names.count("Halyon::ADDCTBEnd"));
}

// Of the connection the validator asks more.
TEST(ModuleObjects, AnswerQueriesByTheRules)
{
    const Module module;
    void* connection = module.MakeConnection();
    void* command = nullptr;
    void* rows = nullptr;
    ASSERT_EQ(Call<std::int32_t>(connection, kConnect, u":memory:", u"a", u"b"), kOk);
    ASSERT_EQ(Call<std::int32_t>(connection, kCreateCommand, &command), kOk);
    ASSERT_EQ(Call<std::int32_t>(connection, kOpenText, u"SELECT 1", &rows), kOk);
    for (const auto& [object, own, others] :
         {std::tuple(command, kCommand, kRecordSet), std::tuple(rows, kRecordSet, kCommand)})
    {
        void* const marker = connection;
        for (const Identifier& id : {own, kUnknown})
        {
            void* out = marker;
            EXPECT_EQ(Query(object, id, nullptr), kPointer);
            EXPECT_EQ(Query(object, id, &out), kOk);
            EXPECT_EQ(out, object);
            EXPECT_EQ(Release(object), 1u) << "a query adds one reference";
        }
        for (const Identifier& id : {kThread, kConnection, others})
        {
            void* out = marker;
            EXPECT_EQ(Query(object, id, nullptr), kNoInterface);
            EXPECT_EQ(Query(object, id, &out), kNoInterface);
            EXPECT_EQ(out, marker);
        }
        EXPECT_EQ(Release(object), 0u);
    }
    EXPECT_EQ(Release(connection), 0u);
}

// One life of the module, with an engine handle, a command and a record set in it.
void LoadUseAndClose()
{
    const Module module;
    void* connection = module.MakeConnection();
    ASSERT_EQ(Call<std::int32_t>(connection, kConnect, u":memory:", u"a", u"b"), kOk);
    void* recordSet = nullptr;
    ASSERT_EQ(Call<std::int32_t>(connection, kOpenText, u"SELECT 1 AS one", &recordSet), kOk);
    EXPECT_EQ(module.CanUnloadNow(), kOk) << "whatever is alive";
    EXPECT_EQ(Release(recordSet), 0u);
    EXPECT_EQ(Release(connection), 0u);
}

TEST(ModuleLife, LoadingAndClosingAThousandTimesLeavesNothing)
{
    const auto rounds = [](int count)
    {
        for (int i = 0; i < count; ++i)
        {
            LoadUseAndClose();
            ASSERT_EQ(dlopen(HYNSQ_MODULE, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded after round " << i;
        }
    };
    // The loader's own tables reach their size in the first half.
    rounds(500);
    const long long allocations = LiveAllocations();
    const std::size_t heap = mallinfo2().uordblks;
    rounds(500);
    EXPECT_EQ(LiveAllocations(), allocations);
    // 0 under the sanitizers, whose allocators do not count here; they look for leaks themselves.
    EXPECT_LE(mallinfo2().uordblks, heap + std::size_t{500} * 16) << "no block a round";
}
} // namespace
