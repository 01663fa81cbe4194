// A forward cursor over the rows of a statement.
//
//     for (; recordSet->IsEof() == 0; recordSet->Next())
//     {
//         char16_t path[1024];
//         std::uint32_t length = 1024;
//         recordSet->GetFieldValue(u"path", path, &length);
//     }
//
// Columns are read by index from 0, or by name without regard to letter case (the first of equal names wins). Readers
// convert as the engine does: NULL reads as 0, 0.0 and an empty blob. Reading by name fails at the end, reading by
// index does not look, deliberately: a loop by index pays for no test that it has made itself.
//
// Used on the thread that prepared its command. On failure no output is written.
#pragma once

#include <halyon/framework/IHynUnknown.h>

namespace Halyon
{
class IHynSQRecordSet : public IHynUnknown
{
public:
    // Number of columns; 0 once the record set is closed. [owner]
    virtual std::int32_t GetFieldCount() = 0;

    // Starts the statement again, bindings kept, and steps to the first row. HYN_S_OK: on a row. HYN_S_FALSE: no rows.
    // HYN_E_FAIL: no statement, or the engine reports the failure of the last step again. Else the codes of Next.
    // [owner]
    virtual HynResult Reset() = 0;

    // Steps to the next row. HYN_S_OK: on a row. HYN_S_FALSE: past the last one. A busy or locked database is retried
    // 10000 times, 10 ms apart. HYN_E_SQSTEP: the engine refused the step. HYN_E_FAIL: no statement, busy to the last,
    // or any other refusal. [owner]
    virtual HynResult Next() = 0;

    // Reads a column of the row, by name or by index. HYN_E_FAIL: an unknown, null or empty name, or the end, by name;
    // an index that is no column; a null output. [owner & on a row]
    virtual HynResult GetFieldValue(const char16_t* name, std::int32_t* value) = 0;
    virtual HynResult GetFieldValue(std::int32_t index, std::int32_t* value) = 0;
    // The low 32 bits of the 64-bit value.
    virtual HynResult GetFieldValue(const char16_t* name, std::uint32_t* value) = 0;
    virtual HynResult GetFieldValue(std::int32_t index, std::uint32_t* value) = 0;
    virtual HynResult GetFieldValue(const char16_t* name, long long* value) = 0;
    virtual HynResult GetFieldValue(std::int32_t index, long long* value) = 0;
    virtual HynResult GetFieldValue(const char16_t* name, double* value) = 0;
    virtual HynResult GetFieldValue(std::int32_t index, double* value) = 0;
    // Text, up to its first zero unit, with its terminator. `*length` is the room in `buffer` in units, terminator
    // included; it is only read, deliberately: no size comes back. Requires: `length` is not null.
    // HYN_E_BUFFERTOOSMALL: nothing copied. HYN_E_SQNULLVALUE: the column is NULL. HYN_E_FAIL: also no memory.
    virtual HynResult GetFieldValue(const char16_t* name, char16_t* buffer, std::uint32_t* length) = 0;
    virtual HynResult GetFieldValue(std::int32_t index, char16_t* buffer, std::uint32_t* length) = 0;
    // A moment that was stored as seconds since 2001-01-01 UTC.
    virtual HynResult GetFieldValue(const char16_t* name, FILETIME* value) = 0;
    virtual HynResult GetFieldValue(std::int32_t index, FILETIME* value) = 0;
    // Bytes; a text column gives its UTF-16 bytes without terminator. A null `buffer` asks for the size, which comes
    // back in `*length`. Else `*length` is the room in bytes and stays as it is. HYN_E_FAIL: the room is too small
    // (not HYN_E_BUFFERTOOSMALL, deliberately), `length` is null, or no memory.
    virtual HynResult GetFieldValue(const char16_t* name, void* buffer, std::uint32_t* length) = 0;
    virtual HynResult GetFieldValue(std::int32_t index, void* buffer, std::uint32_t* length) = 0;

    // 1 when there is no current row, else 0. [owner]
    virtual std::int32_t IsEof() = 0;
};

static_assert(sizeof(IHynSQRecordSet) == sizeof(void*));
} // namespace Halyon
