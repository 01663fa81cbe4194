#include <tests/system/HostProcess.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <stdexcept>

#include <grp.h>
#include <poll.h>
#include <pty.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <tests/support/InChild.h>

namespace HalyonTest
{
namespace
{
// A file in memory with `content`, to be read or written from its start.
int MemoryFile(const std::string& content = {})
{
    const int descriptor = memfd_create("stream", MFD_CLOEXEC);
    if (pwrite(descriptor, content.data(), content.size(), 0) != static_cast<ssize_t>(content.size()))
        throw std::runtime_error("no file in memory");
    return descriptor;
}

std::string ContentOf(int descriptor)
{
    std::string text(static_cast<std::size_t>(lseek(descriptor, 0, SEEK_END)), '\0');
    if (pread(descriptor, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
        throw std::runtime_error("the file in memory cannot be read");
    return text;
}

[[noreturn]] void Execute(const std::vector<std::string>& arguments, const HostOptions& options)
{
    for (const auto& [name, value] : options.environment)
        setenv(name.c_str(), value.c_str(), 1);
    if (options.mostFileBytes)
    {
        const rlimit most{*options.mostFileBytes, *options.mostFileBytes};
        signal(SIGXFSZ, SIG_IGN); // a write fails instead
        setrlimit(RLIMIT_FSIZE, &most);
    }
    if (options.user && (setgroups(0, nullptr) != 0 || setgid(*options.user) != 0 || setuid(*options.user) != 0))
        _exit(125);
    std::vector<char*> words{const_cast<char*>(HYNHOST)};
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    execv(HYNHOST, words.data());
    _exit(126);
}
} // namespace

HostProcess::HostProcess(const std::vector<std::string>& arguments, const HostOptions& options)
{
    if (options.terminalColumns)
    {
        const winsize size{24, *options.terminalColumns, 0, 0};
        m_pid = forkpty(&m_terminal, nullptr, nullptr, &size);
        if (m_pid == 0)
            Execute(arguments, options);
        return;
    }
    m_streams = {MemoryFile(options.input), MemoryFile(), MemoryFile()};
    m_pid = fork();
    if (m_pid == 0)
    {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            dup2(m_streams[static_cast<std::size_t>(stream)], stream);
        Execute(arguments, options);
    }
}

HostProcess::~HostProcess()
{
    if (m_pid > 0)
    {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
    close(m_terminal);
    for (const int stream : m_streams)
        close(stream);
}

bool HostProcess::ReadTerminal()
{
    // A read that sleeps can miss what is written right before the end; one behind a poll finds it.
    pollfd ready{m_terminal, POLLIN, 0};
    poll(&ready, 1, -1);
    std::array<char, 65536> buffer{};
    const ssize_t count = read(m_terminal, buffer.data(), buffer.size());
    if (count > 0)
        m_outcome.out.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
}

bool HostProcess::WaitFor(std::string_view text)
{
    while (m_outcome.out.find(text) == std::string::npos)
    {
        if (!ReadTerminal())
            return false;
    }
    return true;
}

void HostProcess::Type(std::string_view keys) const
{
    if (write(m_terminal, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
        throw std::runtime_error("the terminal takes no keys");
}

void HostProcess::Kill() const
{
    kill(m_pid, SIGKILL);
}

bool HostProcess::HasEnded() const
{
    siginfo_t info = {};
    return waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == m_pid;
}

HostOutcome HostProcess::Finish()
{
    while (m_terminal >= 0 && ReadTerminal())
    {
    }
    int status = 0;
    waitpid(m_pid, &status, 0);
    m_pid = -1;
    m_outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    if (m_terminal < 0)
    {
        m_outcome.out = ContentOf(m_streams[STDOUT_FILENO]);
        m_outcome.err = ContentOf(m_streams[STDERR_FILENO]);
    }
    return m_outcome;
}

bool CanRunAsSomebodyElse()
{
    const auto canNobody = []
    {
        BecomeNobody();
        return std::string(access(HYNHOST, X_OK) == 0 ? "yes" : "no");
    };
    return getuid() == 0 && InChild(canNobody) == "yes";
}

HostOutcome RunHost(const std::vector<std::string>& arguments, const HostOptions& options)
{
    return HostProcess(arguments, options).Finish();
}
} // namespace HalyonTest
