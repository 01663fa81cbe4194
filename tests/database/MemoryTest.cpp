// Running out of memory, in the components and in the engine: each allocation in turn fails, and every time the stated
// code comes, nothing is lost, and the same connection does the same work right afterwards.

#include <atomic>
#include <cstring>

#include "tests/database/DatabaseTest.h"
#include "tests/support/Allocations.h"

using namespace HalyonTest;

namespace
{
// The engine's allocator, with one allocation that fails. It must be in place before the engine is first used.
class EngineMemory
{
public:
    EngineMemory()
    {
        sqlite3_config(SQLITE_CONFIG_GETMALLOC, &s_real);
        sqlite3_mem_methods failing = s_real;
        failing.xMalloc = [](int size)
        {
            return Fails() ? nullptr : s_real.xMalloc(size);
        };
        failing.xRealloc = [](void* block, int size)
        {
            return Fails() ? nullptr : s_real.xRealloc(block, size);
        };
        sqlite3_config(SQLITE_CONFIG_MALLOC, &failing);
    }

    // The `nth` allocation from now on fails; 0: none does.
    static void FailAt(int nth) { s_untilFailure = nth; }
    static bool HasFailed() { return s_untilFailure <= 0; }

private:
    static bool Fails() { return s_untilFailure > 0 && --s_untilFailure == 0; }

    static inline sqlite3_mem_methods s_real;
    static inline std::atomic<int> s_untilFailure = 0;
};
const EngineMemory g_engineMemory;

class Memory : public DatabaseTest
{
protected:
    // All the work that a host does, on a connection that is not connected. Returns the first failure; what succeeds is
    // right.
    HynResult Journey()
    {
        CHynAutoPtr<IHynSQCommand> command;
        CHynAutoPtr<IHynSQRecordSet> recordSet;
        HynResult result = m_connection->Connect(u":memory:", u"a", u"b");
        const auto step = [&](auto&& work)
        {
            if (HynSucceeded(result))
                result = work();
        };
        step([&] { return m_connection->ExecuteSQL(u"PRAGMA encoding = 'UTF-8'"); });
        step([&] { return m_connection->ExecuteSQL(u"CREATE TABLE t (s, n, b)"); });
        step([&] { return m_connection->BeginTrans(); });
        step([&] { return m_connection->CreateCommand(command.Receive()); });
        step([&] { return command->PrepareSQL(u"INSERT INTO t VALUES (?, ?, zeroblob(50))"); });
        step([&] { return command->BindFieldValue(0, kText); });
        step([&] { return command->BindFieldValue(1, 2.5); });
        step([&] { return command->ExecuteSQL(); });
        step([&] { return m_connection->CommitTrans(); });
        step([&] { return m_connection->OpenRecordSet(u"SELECT s, n, b, n AS m FROM t", recordSet.Receive()); });
        step([&] { return Read(recordSet); });
        step([&] { return m_connection->OpenRecordSet(u"SELECT zeroblob(5000)", recordSet.Receive()); });
        step([&] { return ReadBlob(recordSet, 0, 5000); });
        return result;
    }

    static HynResult Read(IHynSQRecordSet* recordSet)
    {
        char16_t text[100];
        std::uint32_t room = 100;
        HynResult result = recordSet->GetFieldValue(u"S", text, &room);
        EXPECT_TRUE(HynFailed(result) || std::u16string_view(text) == kText);
        if (HynSucceeded(result))
        {
            result = recordSet->GetFieldValue(1, text, &room);
            EXPECT_TRUE(HynFailed(result) || std::u16string_view(text) == u"2.5");
        }
        if (HynSucceeded(result))
            result = ReadBlob(recordSet, 2, 50);
        return HynSucceeded(result) ? ReadBlob(recordSet, 3, 6) : result;
    }

    // A blob is read whole or not at all: never empty in place of a failure.
    static HynResult ReadBlob(IHynSQRecordSet* recordSet, int column, std::uint32_t expectedSize)
    {
        char bytes[5000];
        std::uint32_t size = 0;
        HynResult result = recordSet->GetFieldValue(column, static_cast<void*>(nullptr), &size);
        EXPECT_EQ(size, HynSucceeded(result) ? expectedSize : 0);
        if (HynSucceeded(result))
            result = recordSet->GetFieldValue(column, static_cast<void*>(bytes), &size);
        return result;
    }

    // Everything again after a failure, without one.
    void ExpectRecovery(HynResult result, int nth)
    {
        m_codes[result] += 1;
        EXPECT_TRUE(result == HYN_E_FAIL || result == HYN_E_SQSTEP || result == HYN_S_OK)
            << HynResultName(result) << " at " << nth;
        EXPECT_EQ(m_connection->DisConnect(), HYN_S_OK);
        ASSERT_EQ(Journey(), HYN_S_OK) << "after failure " << nth;
        EXPECT_EQ(m_connection->DisConnect(), HYN_S_OK);
    }

    static constexpr char16_t kText[] = u"some text that is longer than what fits into small buffers, \u00fcber";
    std::map<HynResult, int> m_codes;
};

TEST_F(Memory, ComponentsRecoverFromEachFailedAllocation)
{
    ASSERT_EQ(Journey(), HYN_S_OK);
    m_connection->DisConnect();
    const long long before = LiveAllocations();
    const long long engineBefore = sqlite3_memory_used();
    bool failed = true;
    for (int nth = 1; failed && !HasFatalFailure(); ++nth)
    {
        HynResult result = HYN_S_OK;
        {
            const FailAllocation guard(nth);
            result = Journey();
            failed = FailAllocation::HasFailed();
        }
        // Names are found without memory for learning them, so not every failure is one.
        EXPECT_TRUE(result == HYN_S_OK || result == HYN_E_FAIL) << HynResultName(result) << " at " << nth;
        ExpectRecovery(result, nth);
        m_codes.clear();
        EXPECT_EQ(LiveAllocations(), before) << nth;
        EXPECT_EQ(sqlite3_memory_used(), engineBefore) << nth;
    }
}

TEST_F(Memory, EngineFailuresComeThroughAndPass)
{
    ASSERT_EQ(Journey(), HYN_S_OK);
    m_connection->DisConnect();
    const long long before = sqlite3_memory_used();
    bool failed = true;
    for (int nth = 1; failed && !HasFatalFailure(); ++nth)
    {
        EngineMemory::FailAt(nth);
        const HynResult result = Journey();
        failed = EngineMemory::HasFailed();
        EngineMemory::FailAt(0);
        ExpectRecovery(result, nth);
        EXPECT_EQ(sqlite3_memory_used(), before) << nth;
    }
    EXPECT_GT(m_codes[HYN_E_FAIL], 100);
}

TEST_F(Memory, AFailedConnectStoresAndOpensNothing)
{
    const std::u16string path = Path();
    for (int nth = 1; nth <= 3; ++nth)
    {
        {
            const FailAllocation guard(nth);
            EXPECT_EQ(m_connection->Connect(path.c_str(), u"second", u"third"), HYN_E_FAIL);
        }
        EXPECT_FALSE(std::filesystem::exists(Path()));
    }
    EXPECT_EQ(m_connection->GetLastInsertID(), 0) << "opens the empty path, which is what is stored";
    EXPECT_FALSE(std::filesystem::exists(Path()));
    EXPECT_EQ(m_connection->Connect(u"x", u"y", u""), HYN_S_OK);
}
} // namespace
