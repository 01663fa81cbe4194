// The ready-made worker.
//
//     CHynAutoPtr<CHynWorkerThread> worker = new CHynWorkerThread(1000, "reader");
//     int started = 0;
//     worker->Start(manager, &started);
//     worker->RegisterHandler(handler, receiver);
//     worker->PostEvent(kReadFile, 0, 0, param, receiver);
//     …
//     worker->Stop();
#pragma once

#include <halyon/thread/CHynThread.h>

namespace Halyon
{
class CHynWorkerThread : public CHynThread
{
public:
    // At most `capacity` events are pending, with 0 or less none. `name`, which may be null, is copied and cut after 15
    // bytes.
    explicit CHynWorkerThread(std::int32_t capacity = 65535, const char* name = nullptr) : CHynThread(capacity, name) {}
    ~CHynWorkerThread() override { CHynThread::Stop(); }
};
} // namespace Halyon
