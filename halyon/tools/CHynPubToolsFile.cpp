// Deleting files.

#include <halyon/tools/CHynPubTools.h>

#include <memory>
#include <new>
#include <vector>

#include <halyon/platform/BaseFunction.h>

namespace Halyon
{
namespace
{
struct ReleaseReference
{
    void operator()(Tov0FSRRef ref) const noexcept { Tov0FSRRelease(ref); }
};
using Reference = std::unique_ptr<Tov0FSR, ReleaseReference>;

// Paths that name nothing are passed over, and those for which there is no memory.
void MoveToTrash(const std::deque<CTovStringW>& paths) noexcept
{
    std::vector<FSRef> items;
    for (const CTovStringW& path : paths)
    {
        const Reference ref(Tov0FSRCreateWithPath(path));
        FSRef item = {};
        if (ref == nullptr || Tov0FSRToAbs(ref.get(), &item, 0) == 0)
            continue;
        try
        {
            items.push_back(item);
        }
        catch (const std::bad_alloc&)
        {
            continue;
        }
    }
    if (!items.empty())
        FEMoveFilesToTrash(static_cast<std::uint32_t>(items.size()), items.data());
}
} // namespace

int CHynPubTools::DeleteFile(const std::deque<CTovStringW>& paths, OpaqueWindowPtr* /*parent*/, int toTrash,
                             int /*reserved*/) noexcept
{
    if (paths.empty())
        return 0;
    if (toTrash != 0)
    {
        MoveToTrash(paths);
        return 1;
    }
    int result = 0;
    for (const CTovStringW& path : paths)
    {
        const Reference ref(Tov0FSRCreateWithPath(path));
        if (ref == nullptr)
            break;
        result |= TovFileDeleteExt(ref.get());
    }
    return result;
}

int CHynPubTools::DeleteFile(const char16_t* path, OpaqueWindowPtr* parent, int toTrash, int /*reserved*/) noexcept
{
    if (path == nullptr)
        return 0;
    try
    {
        return DeleteFile(std::deque<CTovStringW>{path}, parent, toTrash, 0);
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
}
} // namespace Halyon
