#include <host/Volumes.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string_view>

#include <fcntl.h>
#include <libmount.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace HynHost
{
namespace
{
// Newer kernels tell a file system's UUID to everybody; the headers of older ones lack the call.
struct KernelUUID
{
    std::uint8_t length;
    std::array<std::uint8_t, 16> bytes;
};
constexpr unsigned long kGetUUID = _IOR(0x15, 0, KernelUUID);

// In the usual groups of digits; of zeros alone it is nobody's.
std::string Text(const KernelUUID& uuid)
{
    std::string text;
    for (std::size_t i = 0; i < uuid.bytes.size(); ++i)
    {
        std::array<char, 4> digits{};
        std::snprintf(digits.data(), digits.size(), "%s%02x", i >= 4 && i <= 10 && i % 2 == 0 ? "-" : "",
                      unsigned{uuid.bytes.at(i)});
        text += digits.data();
    }
    return text;
}

std::string UUIDFromKernel(const char* mount)
{
    const int folder = open(mount, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
    if (folder < 0)
        return {};
    KernelUUID uuid{};
    const bool known =
        ioctl(folder, kGetUUID, &uuid) == 0 && uuid.length == uuid.bytes.size() && uuid.bytes != decltype(uuid.bytes){};
    close(folder);
    return known ? Text(uuid) : std::string();
}

// The device manager keeps a link for each file system, called like its UUID.
std::string UUIDFromLinks(const char* device)
{
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path target = fs::canonical(device, error);
    if (error)
        return {};
    for (fs::directory_iterator at("/dev/disk/by-uuid", error), end; !error && at != end; at.increment(error))
    {
        std::error_code broken;
        if (fs::canonical(at->path(), broken) == target)
            return at->path().filename().string();
    }
    return {};
}

std::string View(const char* text)
{
    return text == nullptr ? std::string() : text;
}

// The UUID and which part of the file system is mounted. Only what lies on a device is asked: the mount point of a
// server that is away would not answer.
std::string IdentityOf(libmnt_fs* fs)
{
    const std::string device = View(mnt_fs_get_source(fs));
    if (!device.starts_with("/dev/"))
        return {};
    std::string uuid = UUIDFromKernel(mnt_fs_get_target(fs));
    if (uuid.empty())
        uuid = UUIDFromLinks(device.c_str());
    return uuid.empty() ? uuid : uuid + ':' + View(mnt_fs_get_root(fs));
}

// File systems without inode numbers on the disk make them up, others each time.
bool KeepsInodes(libmnt_fs* fs)
{
    constexpr std::array<std::string_view, 5> kMadeUp = {"vfat", "msdos", "exfat", "fuseblk", "hfs"};
    return std::ranges::find(kMadeUp, View(mnt_fs_get_fstype(fs))) == kMadeUp.end();
}

std::string MountPoint(libmnt_fs* fs)
{
    std::string mount = View(mnt_fs_get_target(fs));
    return mount == "/" ? std::string() : mount;
}

Volume VolumeOf(libmnt_fs* fs)
{
    return {MountPoint(fs), IdentityOf(fs), KeepsInodes(fs)};
}
} // namespace

void MountedVolumes::Release::operator()(libmnt_table* table) const noexcept
{
    mnt_unref_table(table);
}

MountedVolumes::MountedVolumes() : m_table(mnt_new_table())
{
    if (m_table != nullptr && mnt_table_parse_file(m_table.get(), "/proc/self/mountinfo") != 0)
        m_table.reset(); // what cannot be read counts as one volume without an identity
}

// Visits the mounts, of several in one folder only the last: it covers the others. A visit that gives true is the last.
template <class Visit>
void MountedVolumes::ForEach(Visit visit) const
{
    if (m_table == nullptr)
        return;
    const std::unique_ptr<libmnt_iter, decltype(&mnt_free_iter)> at(mnt_new_iter(MNT_ITER_FORWARD), mnt_free_iter);
    libmnt_fs* fs = nullptr;
    while (at != nullptr && mnt_table_next_fs(m_table.get(), at.get(), &fs) == 0)
    {
        if (mnt_table_find_target(m_table.get(), mnt_fs_get_target(fs), MNT_ITER_BACKWARD) == fs && visit(fs))
            return;
    }
}

Volume MountedVolumes::At(const std::string& mount) const
{
    Volume volume{mount, {}};
    ForEach(
        [&](libmnt_fs* fs)
        {
            const bool found = MountPoint(fs) == mount;
            if (found)
                volume = VolumeOf(fs);
            return found;
        });
    return volume;
}

std::vector<Volume> MountedVolumes::Below(const std::string& folder) const
{
    const std::string start = folder.ends_with('/') ? folder : folder + '/';
    std::vector<Volume> volumes;
    ForEach(
        [&](libmnt_fs* fs)
        {
            if (MountPoint(fs).starts_with(start))
                volumes.push_back(VolumeOf(fs));
            return false;
        });
    std::ranges::sort(volumes, {}, &Volume::mount);
    return volumes;
}

std::optional<std::string> MountedVolumes::MountOf(const std::string& identity) const
{
    std::optional<std::string> mount;
    ForEach(
        [&](libmnt_fs* fs)
        {
            if (IdentityOf(fs) == identity)
                mount = MountPoint(fs);
            return mount.has_value();
        });
    return mount;
}
} // namespace HynHost
