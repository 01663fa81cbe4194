// The volumes that paths lie on.

#include <halyon/platform/TovPCMac.h>

#include <algorithm>
#include <climits>
#include <new>

#include <sys/stat.h>
#include <unistd.h>

#include <halyon/platform/linux/FileItem.h>
#include <halyon/platform/linux/MountTable.h>

using Halyon::Mount;

namespace
{
// As far as a volume's folder can reach: what lies behind it does not matter, however long it is.
std::string StartOf(const char16_t* path)
{
    const std::size_t length = path != nullptr ? std::min(tov_wcslen(path), kTovPathUnits) : 0;
    char bytes[3 * kTovPathUnits];
    return {bytes, TovTextToUTF8(path, length, bytes, sizeof bytes)};
}

bool HasVolume(const char16_t* path) noexcept
{
    return path != nullptr && *path == u'/' && TovPathIsUNC(path) == 0;
}

// The same path from the root folder on; empty when the working folder is unknown.
std::string Absolute(std::string path)
{
    if (path.starts_with('/'))
        return path;
    char folder[PATH_MAX];
    return getcwd(folder, sizeof folder) != nullptr && folder[0] == '/' ? folder + ("/" + path) : std::string();
}

// Units of "//host/share", without what follows.
std::size_t LengthOfShare(const char16_t* path) noexcept
{
    std::size_t length = 2;
    for (int separators = 0; path[length] != 0; ++length)
    {
        if (path[length] == path[0] && ++separators == 2)
            break;
    }
    return length;
}

// Runs `ask`, which may throw for want of memory; then the answer is `otherwise`.
template <class T, class Ask>
T OrElse(T otherwise, Ask ask) noexcept
{
    try
    {
        return ask();
    }
    catch (const std::bad_alloc&)
    {
        return otherwise;
    }
}

int IsSameVolume(const char16_t* a, const char16_t* b)
{
    const std::string paths[] = {Absolute(StartOf(a)), Absolute(StartOf(b))};
    if (paths[0].empty() || paths[1].empty())
        return 0;
    return Halyon::FindMount(paths[0]).id == Halyon::FindMount(paths[1]).id ? 1 : 0;
}
} // namespace

int TovGetPathDriver(const char16_t* pszPath, char16_t* pszDriver) noexcept
{
    *pszDriver = 0;
    if (!HasVolume(pszPath))
        return 0;
    return OrElse(-1,
                  [&]
                  {
                      const std::string folder = Halyon::FindMount(StartOf(pszPath)).folder;
                      const std::size_t length =
                          TovTextFromUTF8(folder.data(), folder.size(), pszDriver, kTovPathUnits - 1);
                      pszDriver[length < kTovPathUnits ? length : 0] = 0;
                      return *pszDriver != 0 ? 1 : 0;
                  });
}

std::uint32_t TovGetDriveType(const char16_t* pszPath) noexcept
{
    return OrElse(kTovDriveUnknown,
                  [&]() -> std::uint32_t
                  {
                      char bytes[PATH_MAX] = "/";
                      if (pszPath != nullptr && *pszPath != 0 && !Halyon::BytesOfPath(pszPath, bytes))
                          return kTovDriveUnknown;
                      const std::string path = Absolute(bytes);
                      if (path.empty())
                          return kTovDriveUnknown;
                      const Mount mount = Halyon::FindMount(path);
                      // A volume's own folder is there; to ask for it could mean to wait for a server.
                      struct stat info = {};
                      if (path != mount.folder && stat(bytes, &info) != 0)
                          return kTovDriveUnknown;
                      return Halyon::KindOfMount(mount);
                  });
}

int TovPathIsSameRoot(const char16_t* pszA, const char16_t* pszB) noexcept
{
    const bool network = TovPathIsUNC(pszA) != 0;
    if (network != (TovPathIsUNC(pszB) != 0) || pszA == nullptr || pszB == nullptr)
        return 0;
    if (!network)
        return OrElse(0, [&] { return IsSameVolume(pszA, pszB); });
    const std::size_t length = LengthOfShare(pszA);
    return LengthOfShare(pszB) == length && tov_wcsnicmp(pszA, pszB, length) == 0 ? 1 : 0;
}

int TovPathIsRoot(const char16_t* pszPath) noexcept
{
    if (!HasVolume(pszPath))
        return 0;
    return OrElse(0,
                  [&]
                  {
                      std::string path = StartOf(pszPath);
                      while (path.ends_with('/'))
                          path.pop_back();
                      return Halyon::FindMount(path).folder == path ? 1 : 0;
                  });
}
