// The desktop's trash: the user's own for the home volume, one on each other volume. Every item has a record beside it
// that says where it came from; the record is written first, so that no item is ever without.

#include <halyon/platform/BaseFunction.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <ctime>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>

#include <halyon/platform/linux/Descriptor.h>
#include <halyon/platform/linux/FileItem.h>
#include <halyon/platform/linux/MountTable.h>

namespace Halyon
{
namespace
{
constexpr std::string_view kRecordEnding = ".trashinfo";

// One trash: a folder of items and a folder of records.
struct TrashFolder
{
    Descriptor files;
    Descriptor info;

    explicit operator bool() const noexcept { return files && info; }
};

// Who made the folders of a trash. On a volume that others use too, a folder that is another user's, or a link to
// elsewhere, would hand the items over.
enum class Place
{
    Home,
    SharedVolume
};

Descriptor OpenFolder(int parent, const char* name, Place place) noexcept
{
    const int noFollow = place == Place::SharedVolume ? O_NOFOLLOW : 0;
    mkdirat(parent, name, S_IRWXU);
    Descriptor folder(openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | noFollow));
    struct stat info = {};
    if (!folder || fstat(folder.Get(), &info) != 0 || (place == Place::SharedVolume && info.st_uid != geteuid()))
        return {};
    return folder;
}

TrashFolder OpenTrash(const Descriptor& trash, Place place) noexcept
{
    if (!trash)
        return {};
    return {OpenFolder(trash.Get(), "files", place), OpenFolder(trash.Get(), "info", place)};
}

// `.Trash` is the administrator's, made for all users: it is used only when nobody can take another's folder away.
Descriptor OpenCommonTrash(const Descriptor& top, const std::string& user) noexcept
{
    const Descriptor common(openat(top.Get(), ".Trash", O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
    struct stat info = {};
    if (!common || fstat(common.Get(), &info) != 0 || (info.st_mode & S_ISVTX) == 0)
        return {};
    return OpenFolder(common.Get(), user.c_str(), Place::SharedVolume);
}

TrashFolder OpenHomeTrash(const std::string& library) noexcept
{
    const Descriptor folder(open(library.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return OpenTrash(OpenFolder(folder.Get(), "Trash", Place::Home), Place::Home);
}

TrashFolder OpenVolumeTrash(const std::string& volume)
{
    const Descriptor top(open(volume.empty() ? "/" : volume.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::string user = std::to_string(geteuid());
    if (TrashFolder trash = OpenTrash(OpenCommonTrash(top, user), Place::SharedVolume))
        return trash;
    return OpenTrash(OpenFolder(top.Get(), (".Trash-" + user).c_str(), Place::SharedVolume), Place::SharedVolume);
}

// The text as a record holds it: bytes beyond plain letters, digits and a few signs as %XX.
std::string Escaped(std::string_view path)
{
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const char byte : path)
    {
        const auto value = static_cast<unsigned char>(byte);
        if (kPlain.find(byte) != std::string_view::npos)
            text += byte;
        else
            text.append({'%', kDigits[value / 16], kDigits[value % 16]});
    }
    return text;
}

std::string RecordOf(std::string_view path)
{
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    char date[64] = "";
    if (localtime_r(&now, &local) != nullptr)
        std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + Escaped(path) + "\nDeletionDate=" + date + "\n";
}

// The name of the item among its equals in the trash, short enough for its record's name. What is cut off stands in
// the record.
std::string NameInTrash(std::string_view name, unsigned number)
{
    const std::string ending = number > 1 ? "." + std::to_string(number) : std::string();
    std::size_t length = std::min(name.size(), NAME_MAX - kRecordEnding.size() - ending.size());
    const auto isInside = [](char byte)
    {
        return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
    };
    while (length > 0 && length < name.size() && isInside(name[length]))
        --length;
    return std::string(name.substr(0, length)) + ending;
}

// The functions below return 0 or the system's reason.

int WriteRecord(const Descriptor& folder, const std::string& name, std::string_view content) noexcept
{
    Descriptor record(openat(folder.Get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!record)
        return errno;
    while (!content.empty())
    {
        const ssize_t written = write(record.Get(), content.data(), content.size());
        if (written < 0 && errno != EINTR)
            break;
        content.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    if (content.empty() && record.Close())
        return 0;
    const int reason = errno;
    unlinkat(folder.Get(), name.c_str(), 0);
    return reason;
}

int Move(const char* path, const Descriptor& folder, const std::string& name) noexcept
{
    if (renameat2(AT_FDCWD, path, folder.Get(), name.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // A file system that cannot promise it: the record's name is this caller's, so nobody else uses the item's.
    if (faccessat(folder.Get(), name.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0)
        return EEXIST;
    return renameat(AT_FDCWD, path, folder.Get(), name.c_str()) == 0 ? 0 : errno;
}

int MoveInto(const TrashFolder& trash, const char* path, std::string_view recordedPath)
{
    const std::string record = RecordOf(recordedPath);
    const std::string_view whole = path;
    for (unsigned number = 1; number != 0; ++number)
    {
        const std::string name = NameInTrash(whole.substr(whole.rfind('/') + 1), number);
        const std::string recordName = name + std::string(kRecordEnding);
        int reason = WriteRecord(trash.info, recordName, record);
        if (reason == 0)
        {
            reason = Move(path, trash.files, name);
            if (reason != 0)
                unlinkat(trash.info.Get(), recordName.c_str(), 0);
        }
        if (reason != EEXIST)
            return reason;
    }
    return EEXIST;
}

// The user's own library folder; empty when there is none.
std::string LibraryFolder()
{
    FSRef library = {};
    char path[sizeof library.szPath];
    const bool found = FSFindFolder(kUserDomain, kDomainLibraryFolderType, kCreateFolder, &library) == noErr &&
                       FSRefMakePath(&library, path, sizeof path) == noErr;
    return found ? path : "";
}

// Takes items, one after the other, and keeps the trash of the last one's volume open for the next.
class TrashCan
{
public:
    // Returns 0 or the system's reason.
    int Take(const char* path)
    {
        const std::string_view whole = path;
        Enter(whole.substr(0, whole.rfind('/')));
        if (m_isHome)
        {
            if (!m_home)
                m_home = OpenHomeTrash(m_library);
            const int reason = m_home ? MoveInto(m_home, path, whole) : EACCES;
            if (reason != EXDEV) // a part of the volume with a life of its own
                return reason;
        }
        if (!m_other)
            m_other = OpenVolumeTrash(m_volume.folder);
        return m_other ? MoveInto(m_other, path, whole.substr(m_volume.folder.size() + 1)) : EACCES;
    }

private:
    void Enter(std::string_view folder)
    {
        if (m_isKnown && m_folder == folder)
            return;
        m_isKnown = false;
        if (m_library.empty())
            m_library = LibraryFolder();
        m_folder = folder;
        m_volume = FindMount(m_folder);
        m_other = {};
        m_isHome = !m_library.empty() && FindMount(m_library).id == m_volume.id;
        m_isKnown = true;
    }

    std::string m_library;
    TrashFolder m_home;
    std::string m_folder; // of the last item; what follows is known of it
    bool m_isKnown = false;
    Mount m_volume;
    bool m_isHome = false; // the library's volume
    TrashFolder m_other;   // on that volume
};

OSStatus StatusOf(int reason) noexcept
{
    switch (reason)
    {
    case 0:
        return noErr;
    case ENOENT:
        return fnfErr;
    case EACCES:
    case EPERM:
    case EROFS:
        return permErr;
    default:
        return ioErr;
    }
}

OSStatus Take(TrashCan& can, const FSRef& ref)
{
    unsigned mode = 0;
    return IsStillThere(ref, mode) ? StatusOf(can.Take(ref.szPath)) : fnfErr;
}
} // namespace

OSStatus FEMoveFilesToTrash(std::uint32_t uCount, const FSRef* pRefs) noexcept
{
    if (pRefs == nullptr && uCount != 0)
        return paramErr;
    try
    {
        TrashCan can;
        OSStatus first = noErr;
        for (std::uint32_t i = 0; i < uCount; ++i)
        {
            const OSStatus status = Take(can, pRefs[i]);
            if (first == noErr)
                first = status;
        }
        return first;
    }
    catch (const std::bad_alloc&)
    {
        return memFullErr;
    }
}
} // namespace Halyon
