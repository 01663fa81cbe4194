#include <host/FolderWalk.h>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include <host/HostError.h>
#include <host/PrintableText.h>
#include <host/Recogniser.h>

namespace HynHost
{
namespace
{
// What a file is that is neither a file, a folder nor a link.
const char* SpecialName(mode_t mode)
{
    if (S_ISFIFO(mode))
        return "a named pipe, not a file";
    if (S_ISSOCK(mode))
        return "a socket, not a file";
    return "a device, not a file";
}
} // namespace

FolderWalk::FolderWalk(const std::string& folder, Links links, const PassedFolders& passed, ProblemFunction onProblem)
    : m_links(links), m_passed(passed), m_onProblem(std::move(onProblem))
{
    if (const int error = Enter(folder.ends_with('/') ? folder : folder + '/'); error != 0)
        ThrowSystemError("cannot read the folder", folder, error);
}

std::optional<WalkedFile> FolderWalk::Next()
{
    for (;;)
    {
        errno = 0;
        const dirent* entry = m_directory == nullptr ? nullptr : readdir(m_directory.get());
        if (entry == nullptr)
        {
            if (errno != 0)
                m_onProblem(m_folder, SystemReason(errno));
            m_directory.reset();
            if (!EnterNext())
                return std::nullopt;
            continue;
        }
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
            continue;
        if (auto file = Look(entry->d_name); file)
            return file;
    }
}

// Opens a folder. Returns 0, also for one that was entered before and is not entered again, or an error number.
int FolderWalk::Enter(std::string folder)
{
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        return errno;
    if (m_links == Links::Follow)
    {
        struct stat status = {};
        if (fstat(descriptor, &status) == 0 && !m_entered.emplace(status.st_dev, status.st_ino).second)
        {
            close(descriptor);
            return 0;
        }
    }
    m_directory.reset(fdopendir(descriptor));
    if (m_directory == nullptr)
    {
        const int error = errno;
        close(descriptor);
        return error;
    }
    m_folder = std::move(folder);
    return 0;
}

// Goes on to the next folder that can be entered. Folders reached through links come last, so that what lies in the
// tree itself is found under its own path.
bool FolderWalk::EnterNext()
{
    while (m_directory == nullptr)
    {
        auto& pending = m_pending.empty() ? m_pendingLinks : m_pending;
        if (pending.empty())
            return false;
        std::string folder = std::move(pending.back());
        pending.pop_back();
        if (const int error = Enter(folder); error != 0)
            m_onProblem(folder, SystemReason(error));
    }
    return true;
}

void FolderWalk::AddFolder(std::string folder)
{
    const auto passed = m_passed.find(folder);
    if (passed == m_passed.end())
        m_pending.push_back(std::move(folder));
    else if (!passed->second.empty())
        m_onProblem(folder, "passed over: " + passed->second);
}

std::optional<WalkedFile> FolderWalk::Look(const char* name)
{
    struct stat status = {};
    if (!IsUTF8(name))
        m_onProblem(m_folder + name, "its name is not valid UTF-8");
    else if (fstatat(dirfd(m_directory.get()), name, &status, AT_SYMLINK_NOFOLLOW) != 0)
        m_onProblem(m_folder + name, SystemReason(errno));
    else if (S_ISDIR(status.st_mode))
        AddFolder(m_folder + name + '/');
    else if (S_ISLNK(status.st_mode))
        return LookThrough(name);
    else
        return LookAt(name, status);
    return std::nullopt;
}

std::optional<WalkedFile> FolderWalk::LookAt(const char* name, const struct stat& status)
{
    if (!S_ISREG(status.st_mode))
    {
        m_onProblem(m_folder + name, SpecialName(status.st_mode));
        return std::nullopt;
    }
    return WalkedFile{m_folder, name, StampOf(status), status.st_dev};
}

// A symbolic link. Circles are told in either mode: a tree with one is not as its owner meant it.
std::optional<WalkedFile> FolderWalk::LookThrough(const char* name)
{
    struct stat target = {};
    if (fstatat(dirfd(m_directory.get()), name, &target, 0) != 0)
    {
        const bool circle = errno == ELOOP;
        const bool nothing = errno == ENOENT;
        m_onProblem(m_folder + name, circle    ? "a link in a circle"
                                     : nothing ? "a link to nothing"
                                               : SystemReason(errno));
        return std::nullopt;
    }
    if (S_ISDIR(target.st_mode) && IsInside(target))
        m_onProblem(m_folder + name, "a link in a circle: it leads to a folder that holds it");
    else if (m_links == Links::Pass)
        ++m_passedLinks;
    else if (S_ISDIR(target.st_mode))
        m_pendingLinks.push_back(m_folder + name + '/');
    else
        return LookAt(name, target);
    return std::nullopt;
}

// Whether the current folder is `folder` or lies below it, along the path that led here.
bool FolderWalk::IsInside(const struct stat& folder) const
{
    for (std::size_t end = m_folder.size(); end != std::string::npos;)
    {
        struct stat status = {};
        if (stat(m_folder.substr(0, end).c_str(), &status) == 0 && status.st_dev == folder.st_dev &&
            status.st_ino == folder.st_ino)
            return true;
        end = end <= 1 ? std::string::npos : m_folder.rfind('/', end - 2) + 1;
    }
    return false;
}
} // namespace HynHost
