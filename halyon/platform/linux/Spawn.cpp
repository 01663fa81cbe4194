// Programs that live on by themselves: a child starts the program as a child of its own and ends, so that the system
// takes the program over and reaps it. A pipe that closes when the program starts brings back why it did not.

#include <halyon/platform/linux/Spawn.h>

#include <cerrno>
#include <climits>
#include <csignal>

#include <fcntl.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <halyon/platform/linux/Descriptor.h>

namespace Halyon
{
namespace
{
// From here to the start of the program only calls that are safe in a child of a process with threads.

[[noreturn]] void Report(int pipe) noexcept
{
    const int reason = errno;
    // There is nobody to tell when this fails.
    [[maybe_unused]] const ssize_t written = write(pipe, &reason, sizeof reason);
    _exit(127);
}

// An ignored signal stays ignored in the new program, a blocked one blocked.
void ResetSignals() noexcept
{
    struct sigaction usual = {};
    usual.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal)
        sigaction(signal, &usual, nullptr);
    sigset_t none = {};
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

[[noreturn]] void Become(const char* program, char* const* arguments, const char* folder, int pipe) noexcept
{
    ResetSignals();
    const int nothing = open("/dev/null", O_RDONLY);
    if ((folder != nullptr && chdir(folder) != 0) || nothing < 0 || dup2(nothing, STDIN_FILENO) < 0)
        Report(pipe);
    close_range(STDERR_FILENO + 1, UINT_MAX, CLOSE_RANGE_CLOEXEC);
    execv(program, arguments);
    Report(pipe);
}

[[noreturn]] void StartAndEnd(const char* program, char* const* arguments, const char* folder, int pipe) noexcept
{
    setsid();
    const pid_t grandchild = _Fork();
    if (grandchild == 0)
        Become(program, arguments, folder, pipe);
    if (grandchild < 0)
        Report(pipe);
    _exit(0);
}

// The reason that comes through the pipe; 0 when it closes without one.
int Await(const Descriptor& pipe) noexcept
{
    int reason = 0;
    ssize_t got = 0;
    do
        got = read(pipe.Get(), &reason, sizeof reason);
    while (got < 0 && errno == EINTR);
    return got == sizeof reason ? reason : 0;
}

// An end of a pipe, away from the standard descriptors, which the child puts in place.
Descriptor AboveStandard(int end) noexcept
{
    const Descriptor low(end);
    return Descriptor(fcntl(end, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}
} // namespace

int SpawnDetached(const char* program, char* const* arguments, const char* folder) noexcept
{
    int ends[2] = {};
    if (pipe2(ends, O_CLOEXEC) != 0)
        return errno;
    const Descriptor reading = AboveStandard(ends[0]);
    Descriptor writing = AboveStandard(ends[1]);
    if (!reading || !writing)
        return EMFILE;
    // A handler of this program must not run in the child.
    sigset_t all = {};
    sigset_t before = {};
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t child = fork();
    if (child == 0)
        StartAndEnd(program, arguments, folder, writing.Get());
    int reason = errno;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    writing.Close();
    if (child < 0)
        return reason;
    reason = Await(reading);
    // The program may have taken the child already, in a handler of its own.
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR)
        ;
    return reason;
}
} // namespace Halyon
