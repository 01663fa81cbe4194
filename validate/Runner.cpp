#include <validate/Runner.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <sstream>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <validate/Step.h>
#include <validate/Subject.h>

namespace HynValidate
{
namespace
{
// What both processes see. Texts are cut where they do not fit.
struct Channel
{
    std::array<char, 1024> step;
    bool isFinished;
    Result result;
    std::array<char, 2048> reason;
    std::array<char, 65536> classes; // a line each
};

Channel* g_channel = nullptr; // of the check that runs in this process

template <std::size_t N>
void Put(std::array<char, N>& place, std::string_view text)
{
    const std::size_t length = std::min(text.size(), N - 1);
    std::memcpy(place.data(), text.data(), length);
    place[length] = '\0';
}

[[noreturn]] void ThrowSystemError(const char* action, int error)
{
    throw std::system_error(error, std::generic_category(), action);
}

class Descriptor
{
public:
    Descriptor(int descriptor, const char* action) : m_descriptor(descriptor)
    {
        if (descriptor < 0)
            ThrowSystemError(action, errno);
    }
    ~Descriptor() { close(m_descriptor); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    operator int() const { return m_descriptor; }

private:
    int m_descriptor;
};

Channel* Map(int descriptor)
{
    void* place = mmap(nullptr, sizeof(Channel), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (place == MAP_FAILED)
        ThrowSystemError("cannot share memory with the process of a check", errno);
    return static_cast<Channel*>(place);
}

// Runs this program with `words` in a process group of its own.
pid_t Spawn(std::vector<std::string> words, int output)
{
    std::vector<char*> arguments;
    std::transform(words.begin(), words.end(), std::back_inserter(arguments), [](auto& word) { return word.data(); });
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    pid_t pid = -1;
    const int error = posix_spawn(&pid, "/proc/self/exe", &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        ThrowSystemError("cannot start the process of a check", error);
    return pid;
}

// Waits for the process and ends all that it started; its wait status, and whether it ended by itself in time.
std::pair<int, bool> WaitFor(pid_t pid, std::chrono::milliseconds limit)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + limit;
    // The C library's own pidfd_open cannot be linked from C++ in every version.
    const Descriptor process(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)), "cannot watch the process of a check");
    pollfd ended{process, POLLIN, 0};
    int ready = -1;
    do
    {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        ready = poll(&ended, 1, static_cast<int>(std::max<long long>(left, 0)));
    } while (ready < 0 && errno == EINTR);
    kill(-pid, SIGKILL);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR)
    {
    }
    return {status, ready > 0};
}

// The last line of what the process wrote, for people.
std::string LastLine(int output)
{
    std::array<char, 4096> part{};
    const off_t size = lseek(output, 0, SEEK_END);
    const off_t start = std::max<off_t>(size - static_cast<off_t>(part.size()), 0);
    const ssize_t count = pread(output, part.data(), part.size(), start);
    std::istringstream lines(std::string(part.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))));
    std::string last;
    for (std::string line; std::getline(lines, line);)
        last = line.empty() ? last : line.substr(0, 200);
    return last;
}

std::string HowItEnded(int status)
{
    if (!WIFSIGNALED(status))
        return "the process ended with status " + std::to_string(WEXITSTATUS(status));
    const char* name = sigabbrev_np(WTERMSIG(status));
    return std::string("killed by SIG") + (name == nullptr ? std::to_string(WTERMSIG(status)) : name);
}

Outcome OutcomeOf(const Channel& channel, int status, bool isInTime, const Request& request, int output)
{
    Outcome outcome;
    if (channel.isFinished && isInTime && status == 0)
    {
        outcome.result = channel.result;
        outcome.reason = channel.reason.data();
        std::istringstream lines(channel.classes.data());
        for (std::string line; std::getline(lines, line);)
            outcome.classes.push_back(line);
        return outcome;
    }
    outcome.result = Result::Failed;
    if (channel.isFinished && channel.result == Result::Failed)
    {
        outcome.reason = channel.reason.data(); // what came after it is its consequence
        return outcome;
    }
    std::ostringstream reason;
    if (isInTime)
        reason << HowItEnded(status);
    else
        reason << "not done after " << std::chrono::duration<double>(request.limit).count() << " s";
    reason << (channel.isFinished ? ", after the check, " : ", ") << channel.step.data();
    if (const std::string line = LastLine(output); !line.empty())
        reason << "; it wrote: " << line;
    outcome.reason = reason.str();
    return outcome;
}
} // namespace

void Step(std::string_view text)
{
    Put(g_channel->step, text);
}

Outcome RunCheck(const Check& check, const Request& request)
{
    const auto start = std::chrono::steady_clock::now();
    const Descriptor memory(memfd_create("channel", MFD_CLOEXEC), "cannot get memory for a check");
    const Descriptor output(memfd_create("output", MFD_CLOEXEC), "cannot get memory for a check");
    if (ftruncate(memory, sizeof(Channel)) != 0)
        ThrowSystemError("cannot get memory for a check", errno);
    Channel* channel = Map(memory);

    // Goes through exec, unlike the others.
    const Descriptor inherited(fcntl(memory, F_DUPFD, 3), "cannot share memory with the process of a check");
    std::vector<std::string> words{"hynvalidate", "--run-check", check.name, "--channel", std::to_string(inherited)};
    for (const std::string& cls : request.classes)
        words.insert(words.end(), {"--class", cls});
    words.insert(words.end(), {"--", request.module});
    const pid_t pid = Spawn(words, output);
    const auto [status, isInTime] = WaitFor(pid, request.limit);

    Outcome outcome = OutcomeOf(*channel, status, isInTime, request, output);
    munmap(channel, sizeof(Channel));
    outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return outcome;
}

int RunInside(const Check& check, const Request& request, int channel)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    g_channel = Map(channel);
    close(channel);
    Step("starting");
    const auto finish = [](Result result, std::string_view reason)
    {
        Put(g_channel->reason, reason);
        g_channel->result = result;
        g_channel->isFinished = true;
    };
    try
    {
        std::vector<Class> classes;
        std::transform(request.classes.begin(), request.classes.end(), std::back_inserter(classes), Class::Parse);
        Subject subject(request.module, classes);
        check.run(subject);
        std::string found;
        for (const Class& cls : subject.Classes())
            found += cls.Text() + "\n";
        Put(g_channel->classes, found);
        finish(Result::Ok, "");
    }
    catch (const Failure& failure)
    {
        finish(Result::Failed, failure.what());
    }
    catch (const Skip& skip)
    {
        finish(Result::Skipped, skip.what());
    }
    catch (...)
    {
        finish(Result::Failed, std::string("an exception crossed the interface, ") + g_channel->step.data());
    }
    if (g_channel->result == Result::Failed)
        _exit(0); // the process is in disorder; its own end would only add to it
    return 0;
}
} // namespace HynValidate
