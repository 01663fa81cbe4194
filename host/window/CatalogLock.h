// Whether others hold a catalogue's lock, asked without running into it: once a call of the module waits for a lock, it
// cannot be asked to stop.
//
// A lock that is taken between the question and the call is waited for by the module. Of catalogues that only the
// engine can find, and of those with a write-ahead log, nothing is known: they count as free.
#pragma once

#include <functional>
#include <string>

#include <host/Database.h>

namespace HynHost
{
class CatalogLock
{
public:
    // Keeps the file open until the process ends, once for all objects: closing it would give back the locks that the
    // engine holds for this process.
    explicit CatalogLock(const std::string& file);

    // [any]
    [[nodiscard]] bool IsFree(Transaction::Kind kind) const noexcept;

    // Waits until it is free, asleep. False when it is not and `stop` is true. [any]
    [[nodiscard]] bool WaitUntilFree(Transaction::Kind kind, const std::function<bool()>& stop) const;

private:
    int m_file = -1;
};
} // namespace HynHost
