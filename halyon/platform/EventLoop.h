// The application's main event loop: its timers, its end, and the counters that other threads raise for it.
//
// A program that runs a loop of its own toolkit keeps it: timers fire in it. A program without one calls
// RunApplicationEventLoop. Not for worker threads: they wait on events.
#pragma once

#include <halyon/platform/PlatformTypes.h>

namespace Halyon
{
// Runs the main event loop on the calling thread until QuitApplicationEventLoop. When the program has no application
// object of its own, one is made for the time. A quit that came before ends the loop as soon as it starts. [main]
void RunApplicationEventLoop();

// Ends the main event loop, the program's own too. Without memory the next timer does. [any]
void QuitApplicationEventLoop() noexcept;

struct OpaqueEventLoop;
using EventLoopRef = OpaqueEventLoop*;
// Seconds.
using EventTimerInterval = double;
// A running timer.
struct OpaqueEventLoopTimer;
using EventLoopTimerRef = OpaqueEventLoopTimer*;
using EventLoopTimerProcPtr = void (*)(EventLoopTimerRef timer, void* pUserData);

// The main event loop. Never null. [any]
EventLoopRef GetMainEventLoop() noexcept;

// Calls `proc` on the main loop's thread: first after `firstDelay`, then every `interval` seconds, precise to the
// millisecond; once only for an interval of 0. A timer that is installed before the program has a loop starts with it.
// `*pTimer`, where asked for, receives the timer. memFullErr: no memory. paramErr: a null `proc`, a negative time.
// [main]
OSStatus InstallEventLoopTimer(EventLoopRef loop, EventTimerInterval firstDelay, EventTimerInterval interval,
                               EventLoopTimerProcPtr proc, void* pUserData, EventLoopTimerRef* pTimer) noexcept;

// Ends a timer; its `proc` is not called again. Null is not an error. [main]
OSStatus RemoveEventLoopTimer(EventLoopTimerRef timer) noexcept;

// A counter that one side raises and the other takes from.
struct OpaqueMPQueue;
using MPQueueID = OpaqueMPQueue*;

// Makes a counter that stands at 0. memFullErr: no memory. [any]
OSStatus MPCreateQueue(MPQueueID* pQueue) noexcept;

// Ends it. Requires: nobody uses it any more. Null is not an error. [any]
OSStatus MPDeleteQueue(MPQueueID queue) noexcept;

// Raises the counter by one. The three words are not kept. paramErr: null queue. [any]
OSStatus MPNotifyQueue(MPQueueID queue, void* pFirst, void* pSecond, void* pThird) noexcept;

// Takes one from the counter if it is not 0. Only a `nTimeout` of 0 is known: it never waits. noErr: taken.
// kMPTimeoutErr: nothing there. paramErr: null queue. [any]
inline constexpr OSStatus kMPTimeoutErr = -29296;
OSStatus MPWaitOnQueue(MPQueueID queue, void** ppFirst, void** ppSecond, void** ppThird,
                       std::int32_t nTimeout) noexcept;
} // namespace Halyon
