// What is to be changed in a catalogue, one after the other on the writer. While somebody else holds the catalogue's
// lock, changes wait here and the writer goes on with other work.
#pragma once

#include <deque>
#include <functional>

#include <halyon/platform/TovMutex.h>
#include <host/FunctionWorker.h>

namespace HynHost
{
class EditQueue
{
public:
    // May throw Stopped before it has changed anything, and is called again later then; nothing else.
    using Edit = std::function<void()>;

    // `writer` outlives the queue.
    explicit EditQueue(FunctionWorker& writer) : m_writer(writer) {}

    // [any]
    void Post(Edit edit);

    // Does what can be done without waiting, and forgets the rest. [the writer]
    void Finish() noexcept;

private:
    void Run() noexcept;
    void DoAll();
    [[nodiscard]] Edit First();

    FunctionWorker& m_writer;
    Halyon::TovMutex m_mutex;
    std::deque<Edit> m_edits HYN_GUARDED_BY(m_mutex);
};
} // namespace HynHost
