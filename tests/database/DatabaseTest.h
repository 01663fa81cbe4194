// What the tests of the database room share: a fresh file with a connection to it, the engine itself as a second,
// independent view of that file, and sleeping that is counted instead of done.
#pragma once

#include <functional>
#include <string>

#include <sqlite3.h>

#include <gtest/gtest.h>

#include <halyon/database/CHynSQCommand.h>
#include <halyon/database/CHynSQConnection.h>
#include <halyon/database/CHynSQRecordSet.h>
#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/platform/TovPCMac.h>

#include "tests/support/TempFolder.h"
#include "tests/support/Text.h"

namespace HalyonTest
{
using namespace Halyon;

// A handle of the engine, beside the ones under test.
class Raw
{
public:
    explicit Raw(const std::u16string& path) { EXPECT_EQ(sqlite3_open16(path.c_str(), &m_database), SQLITE_OK); }
    ~Raw() { sqlite3_close_v2(m_database); }
    Raw(const Raw&) = delete;
    Raw& operator=(const Raw&) = delete;

    operator sqlite3*() const { return m_database; }

    // Runs any number of statements; returns the engine's code.
    int Run(const char* sql) const { return sqlite3_exec(m_database, sql, nullptr, nullptr, nullptr); }

    // The values of all rows, each followed by a blank; NULL as "-", a failure as the engine's message.
    [[nodiscard]] std::string Ask(const char* sql) const
    {
        std::string answer;
        const auto collect = [](void* to, int count, char** values, char** /*names*/)
        {
            for (int i = 0; i < count; ++i)
                *static_cast<std::string*>(to) += std::string(values[i] != nullptr ? values[i] : "-") + " ";
            return 0;
        };
        return sqlite3_exec(m_database, sql, collect, &answer, nullptr) == SQLITE_OK ? answer
                                                                                     : sqlite3_errmsg(m_database);
    }

private:
    sqlite3* m_database = nullptr;
};

// Replaces sleeping while it lives: counts the sleeps, checks their length, and does something at one of them.
class CountedSleep
{
public:
    explicit CountedSleep(std::uint64_t microseconds, int at = -1, std::function<void()> action = {})
    {
        s_count = 0;
        s_microseconds = microseconds;
        s_at = at;
        s_action = std::move(action);
        TovSetSleepProc(Sleep);
    }
    ~CountedSleep() { TovSetSleepProc(nullptr); }
    CountedSleep(const CountedSleep&) = delete;
    CountedSleep& operator=(const CountedSleep&) = delete;

    [[nodiscard]] static int Count() { return s_count; }

private:
    static void Sleep(std::uint64_t microseconds)
    {
        EXPECT_EQ(microseconds, s_microseconds);
        if (++s_count == s_at)
            s_action();
    }

    static inline int s_count;
    static inline std::uint64_t s_microseconds;
    static inline int s_at;
    static inline std::function<void()> s_action;
};

// What the reader of the type gives of a column, which it must be able to read.
template <class T, class Column>
T Read(IHynSQRecordSet* rows, Column column)
{
    T value{};
    EXPECT_EQ(rows->GetFieldValue(column, &value), HYN_S_OK);
    return value;
}

class DatabaseTest : public testing::Test
{
protected:
    [[nodiscard]] std::u16string Path(const char* name = "test.db") const
    {
        return (m_folder.Path() / name).u16string();
    }

    HynResult Connect() { return m_connection->Connect(Path().c_str(), u"second", u"third"); }

    // Requires success of the preparation unless `expected` says otherwise.
    CHynAutoPtr<CHynSQCommand> Prepare(const char16_t* sql, HynResult expected = HYN_S_OK)
    {
        CHynAutoPtr<IHynSQCommand> command;
        EXPECT_EQ(m_connection->CreateCommand(command.Receive()), HYN_S_OK);
        EXPECT_EQ(command->PrepareSQL(sql), expected) << U8(sql);
        return static_cast<CHynSQCommand*>(command.operator Halyon::IHynSQCommand*());
    }

    CHynAutoPtr<CHynSQRecordSet> Open(IHynSQCommand* command)
    {
        CHynAutoPtr<IHynSQRecordSet> recordSet;
        EXPECT_EQ(command->OpenRecordSet(recordSet.Receive()), HYN_S_OK);
        return static_cast<CHynSQRecordSet*>(recordSet.operator Halyon::IHynSQRecordSet*());
    }

    CHynAutoPtr<CHynSQRecordSet> Open(const char16_t* sql) { return Open(Prepare(sql)); }

    HynResult Run(const char16_t* sql) { return m_connection->ExecuteSQL(sql); }

    // The first value of the first row, through the connection under test.
    long long Number(const char16_t* sql) { return Read<long long>(Open(sql), 0); }

    const TempFolder m_folder;
    CHynAutoPtr<CHynSQConnection> m_connection = new CHynSQConnection;
};

// The same, connected.
class ConnectedTest : public DatabaseTest
{
protected:
    ConnectedTest() { EXPECT_EQ(Connect(), HYN_S_OK); }
};
} // namespace HalyonTest
