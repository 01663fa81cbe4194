#include <host/DesktopTrash.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include <halyon/tools/CHynPathHelper.h>
#include <halyon/tools/CHynPubTools.h>
#include <host/HostError.h>
#include <host/PrintableText.h>

namespace HynHost
{
namespace
{
namespace fs = std::filesystem;

constexpr std::string_view kRestoreAction = "cannot bring back from the trash";

std::string HomeTrash()
{
    const char* data = std::getenv("XDG_DATA_HOME");
    if (data != nullptr && *data == '/')
        return std::string(data) + "/Trash";
    const char* home = std::getenv("HOME");
    return std::string(home == nullptr ? "" : home) + "/.local/share/Trash";
}

int Digit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::string Unescaped(std::string_view text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const bool isCode = text[i] == '%' && i + 2 < text.size() && Digit(text[i + 1]) >= 0 && Digit(text[i + 2]) >= 0;
        bytes += isCode ? static_cast<char>(Digit(text[i + 1]) * 16 + Digit(text[i + 2])) : text[i];
        i += isCode ? 2 : 0;
    }
    return bytes;
}

// Where an item of the trash lay, as its record says; nothing without a record.
std::optional<std::string> RecordedPath(const std::string& record)
{
    std::ifstream stream(record);
    std::string line;
    while (std::getline(stream, line))
    {
        constexpr std::string_view kKey = "Path=";
        if (line.starts_with(kKey))
            return Unescaped(std::string_view(line).substr(kKey.size()));
    }
    return std::nullopt;
}

// Moves without replacing anything. Not every file system can do that in one step. Returns the system's error number.
int MoveBack(const std::string& from, const std::string& to)
{
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    struct stat status = {};
    if (lstat(to.c_str(), &status) == 0)
        return EEXIST;
    return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}
} // namespace

TrashItem::TrashItem(std::string path) : m_path(std::move(path))
{
    if (lstat(m_path.c_str(), &m_status) != 0)
        m_status = {};
}

bool TrashItem::IsThere() const
{
    struct stat now = {};
    return lstat(m_path.c_str(), &now) == 0 && now.st_dev == m_status.st_dev && now.st_ino == m_status.st_ino;
}

std::string TrashItem::WhyNotMoved() const
{
    struct stat now = {};
    if (lstat(m_path.c_str(), &now) != 0 || access(fs::path(m_path).parent_path().c_str(), W_OK) != 0)
        return SystemReason(errno);
    return "it may not be moved, or its volume has no trash of yours";
}

// Some file systems give a moved file another inode number.
bool TrashItem::IsSame(const struct stat& other) const noexcept
{
    return (other.st_dev == m_status.st_dev && other.st_ino == m_status.st_ino) ||
           (other.st_size == m_status.st_size && other.st_mtim.tv_sec == m_status.st_mtim.tv_sec &&
            other.st_mtim.tv_nsec == m_status.st_mtim.tv_nsec && other.st_mode == m_status.st_mode);
}

void TrashItem::Restore() const
{
    const std::string user = std::to_string(geteuid());
    const std::string top = Halyon::CHynPathHelper::GetPathDriver(CTovStringW::FromUTF8(m_path)).ToUTF8();
    if (!RestoreFrom(HomeTrash(), "") && !RestoreFrom(top + "/.Trash/" + user, top) &&
        !RestoreFrom(top + "/.Trash-" + user, top))
        throw HostError(kRestoreAction, PrintableText(m_path), "it is not there any more");
}

// False when this trash does not hold it. `top`: what relative records begin at.
bool TrashItem::RestoreFrom(const std::string& trash, const std::string& top) const
{
    std::error_code error;
    for (fs::directory_iterator at(trash + "/files", error), end; !error && at != end; at.increment(error))
    {
        struct stat status = {};
        if (lstat(at->path().c_str(), &status) != 0 || !IsSame(status))
            continue;
        const std::string record = trash + "/info/" + at->path().filename().string() + ".trashinfo";
        const auto recorded = RecordedPath(record);
        if (!recorded || (recorded->starts_with('/') ? *recorded : top + '/' + *recorded) != m_path)
            continue;
        std::error_code ignored;
        fs::create_directories(fs::path(m_path).parent_path(), ignored); // else the move says why
        if (const int failure = MoveBack(at->path().string(), m_path); failure != 0)
            throw HostError(kRestoreAction, PrintableText(m_path),
                            failure == EEXIST ? "something else lies in its place" : SystemReason(failure));
        unlink(record.c_str());
        return true;
    }
    return false;
}

void MoveToDesktopTrash(const std::vector<TrashItem>& items)
{
    std::deque<CTovStringW> paths;
    for (const TrashItem& item : items)
        paths.push_back(CTovStringW::FromUTF8(item.Path()));
    Halyon::CHynPubTools::DeleteFile(paths, nullptr, 1, 0);
}
} // namespace HynHost
