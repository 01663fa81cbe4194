#include <validate/ProcessState.h>

#include <chrono>
#include <clocale>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <thread>

#include <malloc.h>

#include <validate/Check.h>

#if defined(HYNVALIDATE_SANITIZED)
extern "C" std::size_t __sanitizer_get_current_allocated_bytes(); // not every compiler brings its header
#endif

namespace HynValidate
{
namespace
{
std::string EntriesOf(const char* folder)
{
    using Entries = std::filesystem::directory_iterator;
    return std::to_string(std::distance(Entries(folder), Entries()));
}

std::string HandlerOf(int signal)
{
    struct sigaction action = {};
    if (sigaction(signal, nullptr, &action) != 0)
        return "none";
    char text[32];
    std::snprintf(text, sizeof text, "%p", reinterpret_cast<void*>(action.sa_handler));
    return text;
}

// The sanitizers bring allocators of their own, which the C library does not know.
long long MemoryInUse()
{
#if defined(HYNVALIDATE_SANITIZED)
    return static_cast<long long>(__sanitizer_get_current_allocated_bytes());
#else
    const struct mallinfo2 info = mallinfo2();
    return static_cast<long long>(info.uordblks) + static_cast<long long>(info.hblkhd);
#endif
}
} // namespace

ProcessState::ProcessState()
{
    m_values["threads"] = EntriesOf("/proc/self/task");
    m_values["open descriptors"] = EntriesOf("/proc/self/fd");
    m_values["the locale"] = std::setlocale(LC_ALL, nullptr);
    std::error_code ignored;
    m_values["the working folder"] = std::filesystem::current_path(ignored).string();
    for (int signal = 1; signal < NSIG; ++signal)
        m_values["the handler of signal " + std::to_string(signal)] = HandlerOf(signal);
}

void ProcessState::ExpectUnchanged(const std::string& afterWhat) const
{
    // A thread that was joined is listed a moment longer.
    ProcessState now;
    for (int wait = 0; wait < 200 && now.m_values.at("threads") != m_values.at("threads"); ++wait)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        now = ProcessState();
    }
    for (const auto& [what, value] : m_values)
    {
        const std::string& current = now.m_values.at(what);
        if (current == value)
            continue;
        std::string reason = "after ";
        reason.append(afterWhat).append(": ").append(what).append(" ").append(value).append(" before, ");
        throw Failure(reason.append(current).append(" now"));
    }
}

void ExpectNoGrowth(const std::string& what, const std::function<void()>& action, int rounds, long long noise)
{
    const auto run = [&](int count)
    {
        for (int i = 0; i < count; ++i)
            action();
    };
    run(rounds / 4); // tables that are made once reach their size
    const ProcessState state;
    const long long before = MemoryInUse();
    run(rounds);
    const long long growth = MemoryInUse() - before;
    if (growth >= rounds * noise)
        throw Failure(what + " leaves " + std::to_string(growth / rounds) + " bytes of memory each time");
    state.ExpectUnchanged(what);
}
} // namespace HynValidate
