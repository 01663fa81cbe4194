// Moving files to the desktop's trash, and back.
//
// Not for deleting for good.
#pragma once

#include <string>
#include <vector>

#include <sys/stat.h>

namespace HynHost
{
// A file or folder as it lies, or lay, at its absolute path.
class TrashItem
{
public:
    // Remembers what lies there now; a link itself.
    explicit TrashItem(std::string path);

    [[nodiscard]] const std::string& Path() const noexcept { return m_path; }

    // Whether the item itself, and nothing else by now, lies at its path. [any]
    [[nodiscard]] bool IsThere() const;

    // Why it cannot be moved, as far as that can be found out: the tool that moves does not tell. [any]
    [[nodiscard]] std::string WhyNotMoved() const;

    // Moves it from the trash back to its path, whose folders are made again. Throws HostError when it is in no trash
    // of this user any more, something lies at its path by now, or it cannot be moved; then everything is as it was.
    // [any]
    void Restore() const;

private:
    [[nodiscard]] bool IsSame(const struct stat& other) const noexcept;
    [[nodiscard]] bool RestoreFrom(const std::string& trash, const std::string& top) const;

    std::string m_path;
    struct stat m_status = {}; // all zeros when there was nothing
};

// Moves what can be moved; IsThere() of an item tells whether it was. [any]
void MoveToDesktopTrash(const std::vector<TrashItem>& items);
} // namespace HynHost
