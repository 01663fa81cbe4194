#include <host/window/CatalogLock.h>

#include <map>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <halyon/platform/TovMutex.h>
#include <halyon/platform/TovPCMac.h>

namespace HynHost
{
namespace
{
// The bytes of a database file that the engine locks, as its file format has them.
constexpr off_t kPending = 0x40000000;
constexpr off_t kShared = kPending + 2;
constexpr off_t kSharedSize = 510;

constexpr std::uint32_t kAskEachMilliseconds = 2;

int KeepOpen(const std::string& name)
{
    static Halyon::TovMutex s_mutex;
    static std::map<std::pair<dev_t, ino_t>, int> s_files;
    struct stat status = {};
    const Halyon::TovMutexLock lock(s_mutex);
    if (stat(name.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return -1;
    const auto [at, isNew] = s_files.try_emplace({status.st_dev, status.st_ino}, -1);
    if (isNew || at->second < 0)
        at->second = open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    return at->second;
}

bool IsFreeFor(short type, int file, off_t start, off_t size) noexcept
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = size;
    return fcntl(file, F_OFD_GETLK, &lock) != 0 || lock.l_type == F_UNLCK;
}
} // namespace

CatalogLock::CatalogLock(const std::string& file) : m_file(KeepOpen(file)) {}

bool CatalogLock::IsFree(Transaction::Kind kind) const noexcept
{
    if (m_file < 0)
        return true;
    if (kind == Transaction::Kind::Exclusive)
        return IsFreeFor(F_WRLCK, m_file, kPending, kShared - kPending + kSharedSize);
    return IsFreeFor(F_RDLCK, m_file, kPending, 1) && IsFreeFor(F_RDLCK, m_file, kShared, kSharedSize);
}

bool CatalogLock::WaitUntilFree(Transaction::Kind kind, const std::function<bool()>& stop) const
{
    while (!IsFree(kind))
    {
        if (stop())
            return false;
        TovSleep(kAskEachMilliseconds);
    }
    return true;
}
} // namespace HynHost
