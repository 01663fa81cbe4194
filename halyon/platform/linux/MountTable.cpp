// What is mounted where, as the kernel lists it.

#include <halyon/platform/linux/MountTable.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <halyon/platform/TovPCMac.h>

namespace Halyon
{
namespace
{
// Files of the kernel have no size; empty when there is none.
std::string ReadAll(const char* path)
{
    std::string text;
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return text;
    std::array<char, 4096> part = {};
    for (ssize_t got = 0; (got = read(file, part.data(), part.size())) > 0;)
        text.append(part.data(), static_cast<std::size_t>(got));
    close(file);
    return text;
}

// Takes what stands before the next `separator`, or all there is, off the front of `text`.
std::string_view Take(std::string_view& text, char separator)
{
    const std::string_view taken = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(taken.size() + 1, text.size()));
    return taken;
}

unsigned Number(std::string_view digits)
{
    unsigned number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

// Blanks, tabs, line ends and backslashes are listed as a backslash and three octal digits.
std::string Unescaped(std::string_view field)
{
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i)
    {
        unsigned code = 0;
        const char* digits = field.data() + i + 1;
        if (field[i] == '\\' && field.size() - i > 3 && std::from_chars(digits, digits + 3, code, 8).ptr == digits + 3)
        {
            text += static_cast<char>(code);
            i += 3;
        }
        else
        {
            text += field[i];
        }
    }
    return text;
}

// id parent major:minor root folder options [tag]... - type source options
Mount Parsed(std::string_view line)
{
    Mount mount;
    mount.id = static_cast<int>(Number(Take(line, ' ')));
    mount.parent = static_cast<int>(Number(Take(line, ' ')));
    const unsigned major = Number(Take(line, ':'));
    mount.device = makedev(major, Number(Take(line, ' ')));
    Take(line, ' ');
    mount.folder = Unescaped(Take(line, ' '));
    if (mount.folder == "/")
        mount.folder.clear();
    while (!line.empty() && Take(line, ' ') != "-")
    {
    }
    mount.type = Take(line, ' ');
    mount.source = Unescaped(Take(line, ' '));
    return mount;
}

bool LiesIn(const std::string& path, const std::string& folder)
{
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

// Without a question to a server that may not answer.
bool IsFolder(const std::string& path)
{
    struct statx info = {};
    return statx(AT_FDCWD, path.c_str(), AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC, STATX_TYPE, &info) != 0 ||
           S_ISDIR(info.stx_mode);
}

// The mounts on the way to `path`, in the order of their folders' lengths.
std::vector<Mount> MountsOnTheWay(const std::string& path)
{
    std::vector<Mount> mounts;
    const std::string table = ReadAll("/proc/self/mountinfo");
    for (std::string_view rest = table; !rest.empty();)
    {
        Mount mount = Parsed(Take(rest, '\n'));
        if (LiesIn(path, mount.folder) && (mount.folder.size() != path.size() || path.empty() || IsFolder(path)))
            mounts.push_back(std::move(mount));
    }
    std::ranges::stable_sort(mounts, {}, [](const Mount& mount) { return mount.folder.size(); });
    return mounts;
}

template <std::size_t N>
bool IsOneOf(std::string_view type, const std::array<std::string_view, N>& types)
{
    return std::ranges::find(types, type) != types.end();
}

constexpr std::array<std::string_view, 23> kRemote = {"nfs",          "nfs4",
                                                      "cifs",         "smb3",
                                                      "smbfs",        "ncpfs",
                                                      "afs",          "ceph",
                                                      "coda",         "9p",
                                                      "virtiofs",     "lustre",
                                                      "beegfs",       "davfs",
                                                      "fuse.sshfs",   "fuse.s3fs",
                                                      "fuse.rclone",  "fuse.glusterfs",
                                                      "fuse.davfs",   "fuse.davfs2",
                                                      "fuse.ceph",    "fuse.curlftpfs",
                                                      "fuse.smbnetfs"};

constexpr std::array<std::string_view, 5> kMemory = {"tmpfs", "ramfs", "rootfs", "devtmpfs", "hugetlbfs"};

// They lie on disks, though not on one of their own.
constexpr std::array<std::string_view, 14> kOnDisks = {"overlay",
                                                       "aufs",
                                                       "btrfs",
                                                       "zfs",
                                                       "bcachefs",
                                                       "ecryptfs",
                                                       "ubifs",
                                                       "jffs2",
                                                       "shiftfs",
                                                       "yaffs2",
                                                       "fuse.fuse-overlayfs",
                                                       "fuse.mergerfs",
                                                       "fuse.gocryptfs",
                                                       "fuse.encfs"};

constexpr unsigned kOpticalMajor = 11;

unsigned KindOfDevice(dev_t device)
{
    if (major(device) == kOpticalMajor)
        return kTovDriveOptical;
    const std::string entry = "/sys/dev/block/" + std::to_string(major(device)) + ":" + std::to_string(minor(device));
    for (const char* file : {"/removable", "/../removable"}) // a partition says nothing, its disk does
    {
        if (ReadAll((entry + file).c_str()).starts_with('1'))
            return kTovDriveRemovable;
    }
    return kTovDriveFixed;
}

// The block device that the mount lies on; 0 for none.
dev_t DeviceOf(const Mount& mount)
{
    if (major(mount.device) != 0)
        return mount.device;
    struct stat info = {};
    const bool isDevice =
        mount.source.starts_with('/') && stat(mount.source.c_str(), &info) == 0 && S_ISBLK(info.st_mode);
    return isDevice ? info.st_rdev : 0;
}
} // namespace

Mount FindMount(const std::string& path)
{
    std::string way = path;
    while (way.ends_with('/'))
        way.pop_back();
    const std::vector<Mount> mounts = MountsOnTheWay(way);
    const auto isAbove = [&](int id)
    {
        return std::ranges::find(mounts, id, &Mount::id) == mounts.end();
    };
    // Each step goes to the nearest mount in the one that the walk is in: what another mount covers is never met.
    Mount current;
    for (std::size_t steps = 0; steps < mounts.size(); ++steps)
    {
        const auto next =
            std::ranges::find_if(mounts,
                                 [&](const Mount& mount)
                                 {
                                     const bool isFirst =
                                         current.id < 0 && (mount.parent == mount.id || isAbove(mount.parent));
                                     return isFirst || (mount.parent == current.id && mount.id != current.id);
                                 });
        if (next == mounts.end())
            break;
        current = *next;
    }
    if (current.id < 0)
    {
        struct stat root = {};
        if (stat("/", &root) == 0)
            current.device = root.st_dev;
    }
    return current;
}

unsigned KindOfMount(const Mount& mount)
{
    if (IsOneOf(mount.type, kRemote))
        return kTovDriveRemote;
    if (IsOneOf(mount.type, kMemory))
        return kTovDriveMemory;
    if (mount.type == "iso9660")
        return kTovDriveOptical;
    const dev_t device = DeviceOf(mount);
    if (device != 0)
        return KindOfDevice(device);
    return IsOneOf(mount.type, kOnDisks) ? kTovDriveFixed : kTovDriveUnknown;
}
} // namespace Halyon
