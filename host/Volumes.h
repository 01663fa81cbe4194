// The volumes that are mounted now, and how to know one again when it comes back under another mount point.
//
//     const MountedVolumes volumes;
//     Volume disk = volumes.At("/media/ann/Photos"); // the mount point, as CHynPathHelper::GetPathDriver gives it
//     volumes.MountOf(disk.identity);                // where it is mounted, also years later
//
// A picture of the moment it is made. Costs about a millisecond, so it is made once for a command, not for a file.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

struct libmnt_fs;
struct libmnt_table;

namespace HynHost
{
struct Volume
{
    std::string mount;       // the folder that it is mounted in, without a "/" at its end; empty: the startup volume
    std::string identity;    // the same wherever it is mounted; empty when the machine gives none
    bool keepsInodes = true; // whether files have the same inode numbers when it is mounted again
};

class MountedVolumes
{
public:
    MountedVolumes();

    // The volume that is mounted in a folder; without an identity when there is none. [any]
    [[nodiscard]] Volume At(const std::string& mount) const;

    // The volumes mounted below a folder, the outer before the inner. [any]
    [[nodiscard]] std::vector<Volume> Below(const std::string& folder) const;

    // Where a volume is mounted; nothing when it is not. [any]
    [[nodiscard]] std::optional<std::string> MountOf(const std::string& identity) const;

private:
    struct Release
    {
        void operator()(libmnt_table* table) const noexcept;
    };
    template <class Visit>
    void ForEach(Visit visit) const;

    std::unique_ptr<libmnt_table, Release> m_table;
};
} // namespace HynHost
