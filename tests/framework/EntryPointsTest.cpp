// What a host finds in the module: identifiers, entry points, and a file that can be loaded and closed any number of
// times.

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include <malloc.h>

#include <gtest/gtest.h>

#include "tests/framework/ForeignHost.h"
#include "tests/support/Allocations.h"
#include <validate/FrozenIdentifiers.h>

using namespace ForeignHost;
using HalyonTest::FailAllocation;
using HalyonTest::LiveAllocations;

namespace
{
TEST(Identifiers, AreExportedUnderTheirPlainNamesWithTheirValues)
{
    const Module module;
    EXPECT_EQ(std::size(kIdentifiers), 68u);
    for (const auto& [name, text, slots] : kIdentifiers)
    {
        const void* exported = module.Symbol(name);
        ASSERT_NE(exported, nullptr) << name;
        const Identifier expected = FromText(text);
        EXPECT_EQ(std::memcmp(exported, &expected, sizeof expected), 0) << name;
    }
}

TEST(EntryPoints, RefuseInOrderAndLeaveNothingBehind)
{
    const Module module;
    int marker = 0;
    const struct
    {
        const Identifier& cls;
        const Identifier& id;
        bool hasOut;
        std::int32_t expected;
    } cases[] = {
        {kConnection, kConnection, true, kNoInterface},   {kConnection, kConnection, false, kNoInterface},
        {kCommand, kThread, false, kNoInterface},         {kConnectionClass, kThread, true, kNoInterface},
        {kConnectionClass, kCommand, true, kNoInterface}, {kConnectionClass, kThread, false, kNoInterface},
        {kConnectionClass, kConnection, false, kPointer}, {kConnectionClass, kUnknown, false, kPointer},
    };
    for (const auto& test : cases)
    {
        void* out = &marker;
        const long long before = LiveAllocations();
        EXPECT_EQ(module.GetClassObject(test.cls, test.id, test.hasOut ? &out : nullptr), test.expected);
        EXPECT_EQ(LiveAllocations(), before);
        EXPECT_EQ(out, &marker);
    }
    // For an unknown class nothing is even asked for.
    const FailAllocation first(1);
    EXPECT_EQ(module.GetClassObject(kCommand, kUnknown, nullptr), kNoInterface);
    EXPECT_FALSE(FailAllocation::HasFailed());
}

TEST(EntryPoints, ReportMissingMemoryAndWorkAfterwards)
{
    const Module module;
    int marker = 0;
    void* out = &marker;
    {
        const FailAllocation guard(1);
        EXPECT_EQ(module.GetClassObject(kConnectionClass, kConnection, &out), kFail);
        EXPECT_TRUE(FailAllocation::HasFailed());
    }
    EXPECT_EQ(out, &marker);
    void* connection = module.MakeConnection();
    EXPECT_EQ(Release(connection), 0u);
}

TEST(EntryPoints, HandOverTheOnlyReferenceAndNeverForbidUnloading)
{
    const Module module;
    const long long before = LiveAllocations();
    void* connection = module.MakeConnection();
    EXPECT_GT(LiveAllocations(), before);
    EXPECT_EQ(module.CanUnloadNow(), kOk);
    EXPECT_EQ(AddRef(connection), 2u);
    EXPECT_EQ(Release(connection), 1u);
    EXPECT_EQ(Release(connection), 0u);
    EXPECT_EQ(LiveAllocations(), before);
}

// One life of the module, with an engine handle, a command and a record set in it.
void LoadUseAndClose()
{
    const Module module;
    constexpr int kConnect = 3;
    constexpr int kOpenText = 9;
    void* connection = module.MakeConnection();
    ASSERT_EQ(Call<std::int32_t>(connection, kConnect, u":memory:", u"a", u"b"), kOk);
    void* recordSet = nullptr;
    ASSERT_EQ(Call<std::int32_t>(connection, kOpenText, u"SELECT 1 AS one", &recordSet), kOk);
    EXPECT_EQ(Release(recordSet), 0u);
    EXPECT_EQ(Release(connection), 0u);
}

#if defined(__SANITIZE_THREAD__)
constexpr bool kThreadSanitizer = true;
#else
constexpr bool kThreadSanitizer = false;
#endif

std::ptrdiff_t CountMappings()
{
    std::ifstream maps("/proc/self/maps");
    const std::string text(std::istreambuf_iterator<char>(maps), {});
    return std::count(text.begin(), text.end(), '\n');
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
    const std::ptrdiff_t mappings = CountMappings();
    rounds(500);
    EXPECT_EQ(LiveAllocations(), allocations);
    // The thread sanitizer maps memory of its own for each library that is loaded; allocators map some now and then.
    if (!kThreadSanitizer)
    {
        EXPECT_LT(CountMappings(), mappings + 50) << "no mapping a round";
    }
    // 0 under the sanitizers, whose allocators do not count here; they look for leaks themselves.
    EXPECT_LE(mallinfo2().uordblks, heap + std::size_t{500} * 16) << "no block a round";
}
} // namespace
