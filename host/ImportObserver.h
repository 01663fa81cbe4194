// What an import asks of whoever runs it, and tells: a terminal and a window wait, stop and show in different ways.
//
// All calls but MustStop come from the thread that writes.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include <host/Database.h>

namespace HynHost
{
// What an import did. Media files are counted once, in one of the first three.
struct ImportReport
{
    std::uint64_t added = 0;
    std::uint64_t changed = 0;
    std::uint64_t unchanged = 0;
    std::uint64_t gone = 0;   // no longer there, or no media files any more
    std::uint64_t others = 0; // files that are no media
    std::uint64_t done = 0;   // files of all sorts that are behind it
    std::uint64_t passedLinks = 0;
    bool interrupted = false;

    struct Problem
    {
        std::string path; // as the system gives it
        std::string reason;
    };
    std::vector<Problem> problems; // the first of them
    std::uint64_t moreProblems = 0;
};

class ImportObserver
{
public:
    virtual ~ImportObserver() = default;

    // Whether the user wants no more of it; asked between two steps. [any]
    [[nodiscard]] virtual bool MustStop() const noexcept = 0;

    // The catalogue is about to be locked, which may take long. What is returned is kept until the lock is there. What
    // is thrown ends the import.
    [[nodiscard]] virtual std::shared_ptr<void> BeforeLock(const ImportReport& soFar, Transaction::Kind kind) = 0;

    // A few times a second. `looked`: files that are behind it, also those whose facts are not stored yet; `folder`:
    // where it is.
    virtual void OnProgress(const ImportReport& soFar, std::uint64_t looked, const std::string& folder) = 0;

    // It is over, once. `failure`: what it ran into, HostError or DatabaseError or what BeforeLock threw; null:
    // nothing.
    virtual void OnEnded(const ImportReport& report, std::exception_ptr failure) = 0;
};
} // namespace HynHost
