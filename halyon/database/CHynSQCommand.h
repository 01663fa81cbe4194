// The command component: it owns a statement, which record sets step.
//
// Hosts speak `IHynSQCommand`; this class is for the module's own parts. Nothing in it is locked: a command belongs to
// the thread that prepared it.
#pragma once

#include <halyon/database/CHynSQColumnNames.h>
#include <halyon/database/IHynSQCommand.h>
#include <halyon/framework/CHynUnknown.h>

class CHynSQConnection;
struct sqlite3_stmt;

class CHynSQCommand : public Halyon::IHynSQCommand, public Halyon::CHynUnknown
{
public:
    // Takes a reference on `connection`, which may be null: nothing can be prepared then.
    explicit CHynSQCommand(CHynSQConnection* connection);

    std::uint32_t AddRef() override { return DefaultAddRef(); }
    std::uint32_t Release() override { return DefaultRelease(); }
    Halyon::HynResult QueryInterface(const Halyon::HYN_GUID& iid, void** ppv) override
    {
        return DefaultQueryInterface(iid, ppv);
    }

    Halyon::HynResult PrepareSQL(const char16_t* sql) override;
    Halyon::HynResult BindFieldValue(std::int32_t index, std::int32_t value) override;
    Halyon::HynResult BindFieldValue(std::int32_t index, std::uint32_t value) override;
    Halyon::HynResult BindFieldValue(std::int32_t index, long long value) override;
    Halyon::HynResult BindFieldValue(std::int32_t index, double value) override;
    Halyon::HynResult BindFieldValue(std::int32_t index, const char16_t* value) override;
    Halyon::HynResult BindFieldValue(std::int32_t index, FILETIME* value) override;
    Halyon::HynResult BindFieldValue(std::int32_t index, void* data, std::uint32_t length) override;
    Halyon::HynResult ExecuteSQL() override;
    Halyon::HynResult OpenRecordSet(Halyon::IHynSQRecordSet** ppRecordSet) override;

    ~CHynSQCommand() override;
    Halyon::HynResult DefaultQueryInterface(const Halyon::HYN_GUID& iid, void** ppv) override;

    // The statement; null when nothing is prepared, and in a process that was forked off after the preparation: the
    // statement is the other process's. [owner]
    sqlite3_stmt* GetSQstmt() const noexcept;

    // Number of the statement's columns; 0 without a statement. [owner]
    std::int32_t GetColumnCount() const noexcept { return GetSQstmt() != nullptr ? m_nColumns : 0; }

    // The statement for a caller that has just learnt that this process prepared it. [owner]
    sqlite3_stmt* GetOwnStatement() const noexcept { return m_pStatement; }

    // Finalizes the statement; returns the engine's own code, 0 without a statement. [owner]
    int Close() noexcept;

    // Turns a parameter index from 0 into the engine's from 1. False: nothing is prepared or `index` is negative
    // (untouched then), or there is no such parameter. [owner]
    bool CheckAdjustBindFieldIndex(int& index) const noexcept;

    // The lowest of the first `nColumns` columns with this name, or -1. Requires: prepared, `name` not null. [owner]
    std::int32_t FindColumn(std::int32_t nColumns, const char16_t* name) noexcept;

private:
    // The statement when it has a parameter of this index from 0, else null.
    [[nodiscard]] sqlite3_stmt* StatementForParameter(std::int32_t index) const noexcept
    {
        return index >= 0 && index < m_nParameters ? GetSQstmt() : nullptr;
    }

    CHynSQConnection* m_pConnection;
    sqlite3_stmt* m_pStatement = nullptr;
    std::int32_t m_nParameters = 0; // of the statement; neither number changes while it lives
    std::int32_t m_nColumns = 0;
    std::uint32_t m_uForkCount = 0; // the process that prepared the statement
    CHynSQColumnNames m_names;
};
