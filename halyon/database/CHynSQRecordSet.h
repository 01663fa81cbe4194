// The record set component: it steps its command's statement and reads the columns.
//
// Hosts speak `IHynSQRecordSet`; this class is for the module's own parts. It never owns the statement and asks the
// command for it each time. Nothing in it is locked: it belongs to the thread of its command.
#pragma once

#include <halyon/database/IHynSQRecordSet.h>
#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/CHynUnknown.h>

class CHynSQCommand;
struct sqlite3_stmt;

class CHynSQRecordSet : public Halyon::IHynSQRecordSet, public Halyon::CHynUnknown
{
public:
    // Takes a reference on `command`, which may be null. Does not step: it stands at the end.
    explicit CHynSQRecordSet(CHynSQCommand* command);

    std::uint32_t AddRef() override { return DefaultAddRef(); }
    std::uint32_t Release() override { return DefaultRelease(); }
    Halyon::HynResult QueryInterface(const Halyon::HYN_GUID& iid, void** ppv) override
    {
        return DefaultQueryInterface(iid, ppv);
    }

    std::int32_t GetFieldCount() override;
    Halyon::HynResult Reset() override;
    Halyon::HynResult Next() override;
    Halyon::HynResult GetFieldValue(const char16_t* name, std::int32_t* value) override;
    Halyon::HynResult GetFieldValue(std::int32_t index, std::int32_t* value) override;
    Halyon::HynResult GetFieldValue(const char16_t* name, std::uint32_t* value) override;
    Halyon::HynResult GetFieldValue(std::int32_t index, std::uint32_t* value) override;
    Halyon::HynResult GetFieldValue(const char16_t* name, long long* value) override;
    Halyon::HynResult GetFieldValue(std::int32_t index, long long* value) override;
    Halyon::HynResult GetFieldValue(const char16_t* name, double* value) override;
    Halyon::HynResult GetFieldValue(std::int32_t index, double* value) override;
    Halyon::HynResult GetFieldValue(const char16_t* name, char16_t* buffer, std::uint32_t* length) override;
    Halyon::HynResult GetFieldValue(std::int32_t index, char16_t* buffer, std::uint32_t* length) override;
    Halyon::HynResult GetFieldValue(const char16_t* name, FILETIME* value) override;
    Halyon::HynResult GetFieldValue(std::int32_t index, FILETIME* value) override;
    Halyon::HynResult GetFieldValue(const char16_t* name, void* buffer, std::uint32_t* length) override;
    Halyon::HynResult GetFieldValue(std::int32_t index, void* buffer, std::uint32_t* length) override;
    std::int32_t IsEof() override { return m_nEof; }

    ~CHynSQRecordSet() override;
    Halyon::HynResult DefaultQueryInterface(const Halyon::HYN_GUID& iid, void** ppv) override;

    // The command's statement, or null. [owner]
    sqlite3_stmt* GetSQstmt() const noexcept;

    // The lowest column with this name, without regard to letter case, or -1. [owner]
    std::int32_t GetFieldIndexByName(const char16_t* name) noexcept;

    // Resets the statement and lets the command go; everything that needs the statement fails from then on. [owner]
    void Close() noexcept;

private:
    template <class... Outputs>
    Halyon::HynResult ReadByIndex(std::int32_t index, Outputs... outputs) const noexcept;
    template <class... Outputs>
    Halyon::HynResult ReadByName(const char16_t* name, Outputs... outputs) noexcept;

    Halyon::CHynAutoPtr<CHynSQCommand> m_spCommand;
    std::int32_t m_nEof = 1;
};
