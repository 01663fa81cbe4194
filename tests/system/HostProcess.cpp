#include <tests/system/HostProcess.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace HalyonTest
{
namespace
{
std::array<int, 2> Pipe()
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    return ends;
}

[[noreturn]] void Execute(const std::vector<std::string>& arguments, const HostOptions& options)
{
    for (const auto& [name, value] : options.environment)
        setenv(name.c_str(), value.c_str(), 1);
    if (options.user && (setgroups(0, nullptr) != 0 || setgid(*options.user) != 0 || setuid(*options.user) != 0))
        _exit(125);
    std::vector<char*> words{const_cast<char*>(HYNHOST)};
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    execv(HYNHOST, words.data());
    _exit(126);
}

// The input fits a pipe, so writing it never waits for the program.
void Feed(int descriptor, const std::string& input)
{
    if (write(descriptor, input.data(), input.size()) != static_cast<ssize_t>(input.size()))
        throw std::runtime_error("the input is not taken");
    close(descriptor);
}

// False at the end; a terminal whose program has ended answers with an error.
bool ReadSome(int& descriptor, std::string& text)
{
    std::array<char, 65536> buffer{};
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count > 0)
    {
        text.append(buffer.data(), static_cast<std::size_t>(count));
        return true;
    }
    close(descriptor);
    descriptor = -1;
    return false;
}
} // namespace

HostProcess::HostProcess(const std::vector<std::string>& arguments, const HostOptions& options)
{
    if (options.terminalColumns)
    {
        const winsize size{24, *options.terminalColumns, 0, 0};
        m_pid = forkpty(&m_out, nullptr, nullptr, &size);
        if (m_pid == 0)
            Execute(arguments, options);
        return;
    }
    const auto input = Pipe();
    const auto out = Pipe();
    const auto err = Pipe();
    m_pid = fork();
    if (m_pid == 0)
    {
        dup2(input[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        Execute(arguments, options);
    }
    for (const int end : {input[0], out[1], err[1]})
        close(end);
    m_out = out[0];
    m_err = err[0];
    Feed(input[1], options.input);
}

HostProcess::~HostProcess()
{
    if (m_pid > 0)
    {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
    for (const int descriptor : {m_out, m_err})
    {
        if (descriptor >= 0)
            close(descriptor);
    }
}

bool HostProcess::Read()
{
    std::array<pollfd, 2> wait{{{m_out, POLLIN, 0}, {m_err, POLLIN, 0}}}; // a negative descriptor is passed over
    if ((m_out < 0 && m_err < 0) || poll(wait.data(), wait.size(), -1) <= 0)
        return false;
    if (wait[0].revents != 0)
        ReadSome(m_out, m_outcome.out);
    if (wait[1].revents != 0)
        ReadSome(m_err, m_outcome.err);
    return true;
}

bool HostProcess::WaitFor(std::string_view text)
{
    while (m_outcome.out.find(text) == std::string::npos)
    {
        if (!Read())
            return false;
    }
    return true;
}

void HostProcess::Type(std::string_view keys) const
{
    if (write(m_out, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
        throw std::runtime_error("the terminal takes no keys");
}

HostOutcome HostProcess::Finish()
{
    while (Read())
    {
    }
    int status = 0;
    waitpid(m_pid, &status, 0);
    m_pid = -1;
    m_outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return m_outcome;
}

HostOutcome RunHost(const std::vector<std::string>& arguments, const HostOptions& options)
{
    return HostProcess(arguments, options).Finish();
}
} // namespace HalyonTest
