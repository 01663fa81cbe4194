// Walks a folder and all folders below it, file by file.
//
//     FolderWalk walk(folder, FolderWalk::Links::Pass, {}, [](std::string path, std::string reason) { ... });
//     while (std::optional<WalkedFile> file = walk.Next())
//         Look(file->folder + file->name, file->stamp);
//
// It ends on every tree, circles of links included, and holds one folder open at a time, however deep the tree is. What
// cannot be walked or is no file is told to the problem function and passed over: folders that cannot be read, names
// that are not valid UTF-8, pipes, sockets and devices (which are never opened), links to nothing and in circles.
//
// Symbolic links are passed over and counted; or they are followed, to files and to folders, after everything else and
// to each folder once. The order of files is the file system's own.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <dirent.h>
#include <sys/stat.h>

#include <host/FileFacts.h>

namespace HynHost
{
struct WalkedFile
{
    std::string folder; // with a "/" at its end
    std::string name;
    FileStamp stamp;
    std::uint64_t device = 0;
};

class FolderWalk
{
public:
    enum class Links
    {
        Pass,
        Follow,
    };
    // The path as the system gives it, which need not be UTF-8, and why it was passed over.
    using ProblemFunction = std::function<void(const std::string& path, const std::string& reason)>;

    // Folders that are not entered, with a "/" at their ends, and the reasons, which are told as problems unless empty.
    using PassedFolders = std::map<std::string, std::string>;

    // `folder` is absolute and without links; `passed` outlives the walk. Throws HostError when the folder cannot be
    // read. [owner]
    FolderWalk(const std::string& folder, Links links, const PassedFolders& passed, ProblemFunction onProblem);

    // The next file, or nothing at the end. [owner]
    [[nodiscard]] std::optional<WalkedFile> Next();

    // Links that were passed over because links are not followed. [owner]
    [[nodiscard]] std::uint64_t PassedLinks() const noexcept { return m_passedLinks; }

private:
    struct DirectoryCloser
    {
        void operator()(DIR* directory) const noexcept { closedir(directory); }
    };
    using Identity = std::pair<dev_t, ino_t>;

    int Enter(std::string folder);
    bool EnterNext();
    void AddFolder(std::string folder);
    std::optional<WalkedFile> Look(const char* name);
    std::optional<WalkedFile> LookAt(const char* name, const struct stat& status);
    std::optional<WalkedFile> LookThrough(const char* name);
    [[nodiscard]] bool IsInside(const struct stat& folder) const;

    Links m_links;
    const PassedFolders& m_passed;
    ProblemFunction m_onProblem;
    std::unique_ptr<DIR, DirectoryCloser> m_directory;
    std::string m_folder; // that m_directory reads, with a "/" at its end
    std::vector<std::string> m_pending;
    std::vector<std::string> m_pendingLinks;
    std::set<Identity> m_entered; // only when links are followed
    std::uint64_t m_passedLinks = 0;
};
} // namespace HynHost
