#include <host/FileBytes.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <mutex>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace HynHost
{
namespace
{
constexpr std::size_t kLargestRead = 262144;

// The mapping that this thread looks at; the signal handler reads and writes it.
struct Guarded
{
    volatile std::uintptr_t begin = 0;
    volatile std::uintptr_t end = 0;
    volatile std::sig_atomic_t failed = 0;
};
thread_local Guarded t_guarded;
std::uintptr_t g_pageSize = 4096;

// A page of a mapped file that cannot be had raises SIGBUS. Zeros take its place and the reader goes on.
void OnBusError(int signal, siginfo_t* info, void*)
{
    const auto address = reinterpret_cast<std::uintptr_t>(info->si_addr);
    if (address >= t_guarded.begin && address < t_guarded.end)
    {
        void* page = reinterpret_cast<void*>(address & ~(g_pageSize - 1));
        t_guarded.failed = 1;
        if (mmap(page, g_pageSize, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) != MAP_FAILED)
            return;
    }
    std::signal(signal, SIG_DFL); // not ours: the same access raises it again and ends the program
}

void GuardOnce()
{
    static std::once_flag once;
    std::call_once(once,
                   []
                   {
                       g_pageSize = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
                       struct sigaction action = {};
                       action.sa_sigaction = &OnBusError;
                       action.sa_flags = SA_SIGINFO;
                       sigaction(SIGBUS, &action, nullptr);
                   });
}
} // namespace

FileBytes::FileBytes()
{
    GuardOnce();
    m_buffer.resize(kLargestRead);
}

FileBytes::~FileBytes()
{
    Close();
}

int FileBytes::Open(const std::string& path)
{
    Close();
    // Not blocking: what was a file a moment ago may be a pipe by now.
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return errno;
    int error = 0;
    if (fstat(descriptor, &m_status) != 0)
        error = errno;
    else if (!S_ISREG(m_status.st_mode))
        error = EINVAL;
    else if (!std::in_range<std::ptrdiff_t>(m_status.st_size))
        error = EFBIG; // a 32-bit machine cannot see it whole
    else if (static_cast<std::size_t>(m_status.st_size) <= kLargestRead)
        error = Read(descriptor);
    else
        error = Map(descriptor);
    close(descriptor);
    return error;
}

bool FileBytes::Failed() const noexcept
{
    return t_guarded.failed != 0;
}

int FileBytes::Read(int descriptor)
{
    const auto size = static_cast<std::size_t>(m_status.st_size);
    std::size_t done = 0;
    while (done < size)
    {
        const ssize_t count = pread(descriptor, m_buffer.data() + done, size - done, static_cast<off_t>(done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return errno;
        if (count == 0) // it became shorter
            break;
        done += static_cast<std::size_t>(count);
    }
    m_bytes = {m_buffer.data(), done};
    return 0;
}

int FileBytes::Map(int descriptor)
{
    const auto size = static_cast<std::size_t>(m_status.st_size);
    void* address = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
    if (address == MAP_FAILED)
        return errno;
    m_mapped = true;
    m_bytes = {static_cast<const std::uint8_t*>(address), size};
    t_guarded.begin = reinterpret_cast<std::uintptr_t>(address);
    t_guarded.end = t_guarded.begin + size;
    return 0;
}

void FileBytes::Close() noexcept
{
    t_guarded.begin = 0;
    t_guarded.end = 0;
    t_guarded.failed = 0;
    if (m_mapped)
        munmap(const_cast<std::uint8_t*>(m_bytes.data()), m_bytes.size());
    m_mapped = false;
    m_bytes = {};
}
} // namespace HynHost
