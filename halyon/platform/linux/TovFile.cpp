// Items of the file system: whether they exist, references to them, deletion.

#include <halyon/platform/TovPCMac.h>

#include <memory>
#include <new>

#include <sys/stat.h>
#include <unistd.h>

#include <halyon/platform/linux/FileItem.h>

using Halyon::BytesOfPath;

struct Tov0FSR
{
    Halyon::FSRef item;
};

namespace
{
// The mode of what the path leads to; 0 for nothing.
mode_t ModeOf(const char16_t* path) noexcept
{
    char bytes[PATH_MAX];
    struct stat info = {};
    return BytesOfPath(path, bytes) && stat(bytes, &info) == 0 ? info.st_mode : 0;
}
} // namespace

int TovPathIsDirectory(const char16_t* pszPath) noexcept
{
    return S_ISDIR(ModeOf(pszPath)) ? 1 : 0;
}

int TovPathFileExists(const char16_t* pszPath) noexcept
{
    return ModeOf(pszPath) != 0 ? 1 : 0;
}

Tov0FSRRef Tov0FSRCreateWithPath(const char16_t* pszPath) noexcept
{
    std::unique_ptr<Tov0FSR> ref(new (std::nothrow) Tov0FSR);
    return ref != nullptr && Halyon::MakeItemRef(pszPath, ref->item) ? ref.release() : nullptr;
}

int Tov0FSRToAbs(Tov0FSRRef ref, Halyon::FSRef* pRef, int nFlags) noexcept
{
    if (pRef == nullptr)
        return 0;
    *pRef = {};
    unsigned mode = 0;
    if (ref == nullptr || nFlags != 0 || !Halyon::IsStillThere(ref->item, mode))
        return 0;
    *pRef = ref->item;
    return 1;
}

void Tov0FSRRelease(Tov0FSRRef ref) noexcept
{
    delete ref;
}

int TovFileDeleteExt(Tov0FSRRef ref) noexcept
{
    unsigned mode = 0;
    if (ref == nullptr || !Halyon::IsStillThere(ref->item, mode))
        return 0;
    const char* path = ref->item.szPath;
    return (S_ISDIR(mode) ? rmdir(path) : unlink(path)) == 0 ? 1 : 0;
}
