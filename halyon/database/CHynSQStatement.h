// A statement of the engine: prepared with the wait for a busy database, stepped with another, gone with its owner.
//
// Commands keep one, and a one-shot execution makes one for a moment. Not for sharing: nothing in it is locked, it
// belongs to the thread whose handle prepared it.
#pragma once

#include <cstdint>

#include <halyon/framework/HynResult.h>
#include <halyon/platform/TovPCMac.h>

struct sqlite3;
struct sqlite3_stmt;

class CHynSQStatement
{
public:
    CHynSQStatement() = default;
    CHynSQStatement(const CHynSQStatement&) = delete;
    CHynSQStatement& operator=(const CHynSQStatement&) = delete;
    ~CHynSQStatement() { Finalize(); }

    // Prepares the first statement of `sql` on `database`, in place of the one held before; waits without limit,
    // asleep, while the database is busy. HYN_E_FAIL: the engine rejects the text; nothing is held then. [owner]
    Halyon::HynResult Prepare(sqlite3* database, const char16_t* sql) noexcept;

    // One step, with the waits for a busy database. HYN_S_OK: on a row. HYN_S_FALSE: at the end. HYN_E_SQSTEP: the
    // engine refused the step. HYN_E_FAIL: any other refusal; busy for about 100 seconds. Requires: prepared. [owner]
    Halyon::HynResult Step() noexcept;

    // Runs it to its first step, as Step does, and ends the run. HYN_S_OK: done. HYN_E_SQSTEP, HYN_E_FAIL: as Step,
    // also when it stood on a row and what it had written could not be kept when it ended. Requires: prepared. [owner]
    Halyon::HynResult Execute() noexcept;

    // Ends the run, so that the next step is the first again; the engine's own code. Requires: prepared. [owner]
    int Reset() noexcept;

    // Finalizes what is held; the engine's own code, 0 when nothing is. [owner]
    int Finalize() noexcept;

    // Asked where the engine gave no value: whether it had no memory for one, of the row that the statement stands on.
    // What was lost is lost until the next step. Requires: prepared. [owner]
    [[nodiscard]] bool HasLostValue() noexcept;

    // Passes `code` on, which a call on `database` gave. The engine keeps its last failure, and a later look for one
    // of its own must not find one that has been told. Null: there was no such call. [owner]
    static int Told(sqlite3* database, int code) noexcept;

    // The statement; null when nothing is prepared, and in a process that was forked off after the preparation: the
    // statement is the other process's. [owner]
    [[nodiscard]] sqlite3_stmt* Get() const noexcept { return IsOwn() ? m_pStatement : nullptr; }

    // Number of columns; 0 where Get gives null. [owner]
    [[nodiscard]] std::int32_t GetColumnCount() const noexcept { return IsOwn() ? m_nColumns : 0; }

    // The statement when it has a column, or a parameter, of this index from 0, else null. [owner]
    [[nodiscard]] sqlite3_stmt* ForColumn(std::int32_t index) const noexcept { return ForIndex(index, m_nColumns); }
    [[nodiscard]] sqlite3_stmt* ForParameter(std::int32_t index) const noexcept
    {
        return ForIndex(index, m_nParameters);
    }

private:
    [[nodiscard]] bool IsOwn() const noexcept { return m_uForkCount == TovGetForkCount(); }

    // A count above 0 implies a statement.
    [[nodiscard]] sqlite3_stmt* ForIndex(std::int32_t index, std::int32_t count) const noexcept
    {
        return index >= 0 && index < count ? Get() : nullptr;
    }

    sqlite3_stmt* m_pStatement = nullptr;
    std::int32_t m_nParameters = 0; // of the statement; neither number changes while it lives
    std::int32_t m_nColumns = 0;
    std::uint32_t m_uForkCount = 0; // the process that prepared the statement
    bool m_bLostValue = false;      // of the row that it stands on
};
