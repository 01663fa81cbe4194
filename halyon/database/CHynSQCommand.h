// The command component: it owns a statement, which record sets step.
//
// Hosts speak `IHynSQCommand`; this class is for the module's own parts. Nothing in it is locked: a command belongs to
// the thread that prepared it.
#pragma once

#include <halyon/database/CHynSQColumnNames.h>
#include <halyon/database/CHynSQStatement.h>
#include <halyon/database/IHynSQCommand.h>
#include <halyon/framework/CHynUnknown.h>

class CHynSQConnection;

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

    // The engine's statement, or null as CHynSQStatement::Get says. [owner]
    sqlite3_stmt* GetSQstmt() const noexcept { return m_statement.Get(); }

    // What the record sets of this command step and read. [owner]
    CHynSQStatement& GetStatement() noexcept { return m_statement; }

    // Finalizes the statement; returns the engine's own code, 0 without a statement. [owner]
    int Close() noexcept;

    // Turns a parameter index from 0 into the engine's from 1. False: nothing is prepared or `index` is negative
    // (untouched then), or there is no such parameter. [owner]
    bool CheckAdjustBindFieldIndex(int& index) const noexcept;

    // The lowest column with this name, without regard to letter case, or -1. Requires: `name` is not null. [owner]
    std::int32_t FindColumn(const char16_t* name) noexcept
    {
        sqlite3_stmt* statement = m_statement.Get();
        return statement != nullptr ? m_names.Find(statement, name) : -1;
    }

private:
    CHynSQConnection* m_pConnection;
    CHynSQStatement m_statement;
    CHynSQColumnNames m_names; // of the statement
};
