// A workload of transactions through the module's interfaces, and the books of what it was told of each: what must be
// in the database afterwards, whatever has failed meanwhile.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tests/faults/LoadedModule.h>

namespace HalyonTest
{
class Ledger
{
public:
    struct Settings
    {
        const char* journal;     // "DELETE" or "WAL"
        const char* synchronous; // "FULL", ...
    };

    explicit Ledger(Settings settings) : m_settings(settings) {}

    // Opens the database, for the first time or again; makes the tables once. False: something has failed.
    bool Open();
    void Close();

    // A transaction of several rows and a total, larger than the engine's cache. Returns whether it said that it was
    // done; opens the database first when it is not open.
    bool Transact();

    // The database as a new connection finds it is sound and holds what was told to be done, but for the last
    // `mostLost` of that; of what failed at the commit, all or nothing; of everything else, nothing.
    void Verify(int mostLost = 0);

    [[nodiscard]] int Done() const { return m_done; }

private:
    enum class Told
    {
        Done,
        Failed,  // before the commit
        Unclear, // the commit failed
    };

    [[nodiscard]] bool InsertAtOnce(const std::string& txn) const;
    bool Tell(bool isDone);
    [[nodiscard]] bool Run(const std::string& sql) const;
    [[nodiscard]] long long Ask(const std::string& sql) const;

    Settings m_settings;
    Halyon::CHynAutoPtr<Halyon::IHynSQConnection> m_connection;
    std::vector<Told> m_told; // by transaction
    int m_done = 0;
};
} // namespace HalyonTest
