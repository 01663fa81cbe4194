#include <host/Database.h>

#include <host/HostError.h>
#include <host/Module.h>

using Halyon::HynResult;

namespace HynHost
{
Database::Database(const std::string& file) : Connection(LoadModule(), file), m_file(file) {}

Transaction::Transaction(Database& database, Kind kind) : m_database(database)
{
    // Each thread's handle has a setting of its own. With the engine's usual one the journal's deletion, and with it
    // the last transaction, may be lost with the power.
    if (kind == Kind::Exclusive)
        database.execute(u"PRAGMA synchronous = EXTRA");
    const HynResult result = m_transaction.try_begin(database, kind);
    if (result == Halyon::HYN_E_FAIL && kind == Kind::Exclusive)
        throw HostError("cannot lock", database.File(), "another program has kept it busy, or it cannot be written");
    if (Halyon::HynFailed(result))
        throw DatabaseError(result, "locking", database.File());
}

void Transaction::Commit()
{
    if (const HynResult result = m_transaction.try_commit(); Halyon::HynFailed(result))
        throw DatabaseError(result, "writing", m_database.File());
}
} // namespace HynHost
