// One prepared statement.
//
// Prepare once, bind, execute or open, bind anew, and so on; bindings stay until they are replaced. Not for one-off
// texts: `IHynSQConnection::ExecuteSQL` does.
//
//     command->PrepareSQL(u"INSERT INTO media (path, size) VALUES (?, ?)");
//     command->BindFieldValue(0, path);          // `path` stays valid and unchanged until the command has run
//     command->BindFieldValue(1, size);
//     command->ExecuteSQL();
//
// Parameter indices start at 0. A command belongs to the thread that prepared it. All operations return HYN_E_FAIL for
// an argument or a state that is refused, and the command is then as it was.
#pragma once

#include <halyon/framework/IHynUnknown.h>

namespace Halyon
{
class IHynSQRecordSet;

class IHynSQCommand : public IHynUnknown
{
public:
    // Prepares the first statement of `sql`; what follows it is ignored. The statement held before is gone, also when
    // this fails. Waits without limit, asleep, while the database is busy.
    // HYN_E_FAIL: null or malformed `sql`, no connection, no handle for this thread. [owner]
    virtual HynResult PrepareSQL(const char16_t* sql) = 0;

    // Binds a value to a parameter. HYN_E_FAIL: nothing prepared, an index below 0 or not below the number of
    // parameters, the engine's refusal; for text and blobs also a null pointer, for blobs a length of 0. [owner &
    // prepared]
    virtual HynResult BindFieldValue(std::int32_t index, std::int32_t value) = 0;
    // Never negative in the database: 0xFFFFFFFF is stored as 4294967295.
    virtual HynResult BindFieldValue(std::int32_t index, std::uint32_t value) = 0;
    virtual HynResult BindFieldValue(std::int32_t index, long long value) = 0;
    virtual HynResult BindFieldValue(std::int32_t index, double value) = 0;
    // Zero-terminated text, which may be empty. It is not copied: it stays valid and unchanged until the statement has
    // run and the binding is replaced, or the command is prepared anew or gone.
    // Unpaired surrogates come back as they went when the database holds UTF-16 text, which a new file does. When it
    // holds UTF-8, and in SQL texts and names, the engine joins each with the unit that follows it, a closing quote
    // too: bind such text, never write it into a statement.
    virtual HynResult BindFieldValue(std::int32_t index, const char16_t* value) = 0;
    // Stored as a double of seconds since 2001-01-01 UTC; null is stored as that moment (0.0), not as NULL.
    virtual HynResult BindFieldValue(std::int32_t index, FILETIME* value) = 0;
    // `length` bytes, not copied either: the rule of the text binding holds.
    virtual HynResult BindFieldValue(std::int32_t index, void* data, std::uint32_t length) = 0;

    // Runs the statement to its first step and makes it ready to run again. HYN_S_OK with or without rows.
    // HYN_E_FAIL: nothing prepared; the database stayed busy for about 100 seconds; any other refusal without a code.
    // HYN_E_SQSTEP: the engine refused the step, or to keep what a statement with rows wrote. [owner & prepared]
    virtual HynResult ExecuteSQL() = 0;

    // Hands over a record set on this statement that stands on the first row, or at the end. The caller releases it; it
    // keeps the command alive. Record sets of one command share its statement: a step of one moves them all.
    // What a statement with rows writes outside a transaction is kept for certain only when a step has come to the end.
    // Codes as for ExecuteSQL; HYN_E_FAIL also for null or no memory. On failure `*ppRecordSet` is untouched.
    // [owner & prepared]
    virtual HynResult OpenRecordSet(IHynSQRecordSet** ppRecordSet) = 0;
};

static_assert(sizeof(IHynSQCommand) == sizeof(void*));
} // namespace Halyon
