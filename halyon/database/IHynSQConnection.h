// The connection to one SQLite database file.
//
// A host gets one from the module's `MyDllGetClassObject` with `CLSID_HynSQConnection`. Every thread that uses it works
// on an engine handle of its own, opened on that thread's first use, so a connection may be shared freely; commands and
// record sets made from it stay on the thread that made them.
//
// Locked databases are waited for: preparing a statement waits as long as it takes, a step about 100 seconds. No engine
// option is set on a handle. A path may be anything that the engine opens, `file:` names included where the engine is
// built for them.
//
// A process that is forked off opens handles of its own; what its parent had open it neither uses nor closes. Fork
// while no statement runs and no transaction is open: the engine hands its notes on file locks down to the child.
//
// HYN_E_SQSTEP and the other codes of a failed statement come through unchanged from the command and the record set.
#pragma once

#include <halyon/framework/IHynUnknown.h>

namespace Halyon
{
class IHynSQCommand;
class IHynSQRecordSet;

class IHynSQConnection : public IHynUnknown
{
public:
    // Stores the path and two further strings, which are only kept and compared, and opens the calling thread's handle.
    // While connected it opens nothing: it succeeds when any one of the three equals its stored string without regard
    // to letter case, deliberately lenient, so that components may connect again without knowing each other's strings.
    // HYN_E_FAIL: a null argument; the file cannot be opened; connected already and all three differ; no memory.
    // A failed open is remembered for the thread until DisConnect, deliberately: nothing tries again in between.
    // [owner], and [any] while connected
    virtual HynResult Connect(const char16_t* path, const char16_t* second, const char16_t* third) = 0;

    // Closes the handles of all threads. Always HYN_S_OK. Requires: no other thread is using the connection. Statements
    // that are still alive keep their handle until the last of them goes. [owner]
    virtual HynResult DisConnect() = 0;

    // Runs "begin exclusive;" on the calling thread's handle. [any]
    virtual HynResult BeginTrans() = 0;

    // Runs "commit;"; when that fails, also "rollback;", and returns the failure of the commit. [any]
    virtual HynResult CommitTrans() = 0;

    // Runs "rollback;". [any]
    virtual HynResult RollbackTrans() = 0;

    // Runs the first statement of `sql` to its first step. Never HYN_S_FALSE: a statement without rows is HYN_S_OK.
    // HYN_E_FAIL: null or malformed `sql`, no handle. HYN_E_SQSTEP: the engine refused the step, or to keep what a
    // statement with rows wrote. [any]
    virtual HynResult ExecuteSQL(const char16_t* sql) = 0;

    // Runs the first statement of `sql` and hands over a record set that stands on its first row, or at its end when
    // there is none. The caller releases it; it keeps its command and this connection alive. On failure `*ppRecordSet`
    // is untouched. HYN_E_FAIL: null argument, malformed `sql`, no handle, no memory. [any]
    virtual HynResult OpenRecordSet(const char16_t* sql, IHynSQRecordSet** ppRecordSet) = 0;

    // Hands over a new command for the calling thread; the caller releases it. It keeps this connection alive.
    // HYN_E_FAIL: null argument, no handle for this thread, no memory. [any]
    virtual HynResult CreateCommand(IHynSQCommand** ppCommand) = 0;

    // Row id of the last insert made through the calling thread's handle; 0 without one. [any]
    virtual long long GetLastInsertID() = 0;
};

static_assert(sizeof(IHynSQConnection) == sizeof(void*));
} // namespace Halyon
