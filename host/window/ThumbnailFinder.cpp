#include <host/window/ThumbnailFinder.h>

#include <algorithm>
#include <exception>
#include <utility>

#include <host/window/Thumbnails.h>

namespace HynHost
{
namespace
{
constexpr std::size_t kWorkers = 2;
} // namespace

ThumbnailFinder::ThumbnailFinder(Halyon::CHynThreadManager& manager, SharedCatalog& catalog, Results results)
    : m_catalog(catalog), m_results(std::move(results))
{
    for (std::size_t i = 0; i < kWorkers; ++i)
        m_workers.push_back(std::make_unique<FunctionWorker>(manager, "thumbnails"));
}

void ThumbnailFinder::Stop()
{
    for (const auto& worker : m_workers)
        worker->Stop();
}

void ThumbnailFinder::Want(std::vector<long long> ids, Shape shape)
{
    std::ranges::reverse(ids);
    {
        const Halyon::TovMutexLock lock(m_mutex);
        m_wanted = std::move(ids);
        m_shape = std::move(shape);
        if (m_wanted.empty())
            return;
    }
    for (const auto& worker : m_workers)
        worker->Post([this] { Seek(); });
}

// Looks until nothing is wanted any more. On a worker.
void ThumbnailFinder::Seek()
{
    FileBytes file;
    Shape shape;
    try
    {
        while (const auto id = Next(shape))
        {
            Find(*id, shape, file);
            const Halyon::TovMutexLock lock(m_mutex);
            std::erase(m_underway, *id);
        }
    }
    catch (const Stopped&)
    {
        return;
    }
    catch (const std::exception& failure)
    {
        {
            const Halyon::TovMutexLock lock(m_mutex);
            m_wanted.clear(); // the next one would fail as well
            m_underway.clear();
        }
        m_results.onFailure(failure.what());
    }
}

std::optional<long long> ThumbnailFinder::Next(Shape& shape)
{
    const Halyon::TovMutexLock lock(m_mutex);
    while (!m_wanted.empty() && m_catalog.IsOpen() && !m_catalog.IsStopped())
    {
        const long long id = m_wanted.back();
        m_wanted.pop_back();
        if (std::ranges::find(m_underway, id) != m_underway.end())
            continue;
        m_underway.push_back(id);
        shape = m_shape;
        return id;
    }
    return std::nullopt;
}

void ThumbnailFinder::Find(long long id, const Shape& shape, FileBytes& file)
{
    const auto places = m_catalog.Places();
    const auto stored = m_catalog.Read("cannot read a thumbnail in",
                                       [&](Database& database) { return ReadThumbnail(database, *places, id); });
    QImage image;
    if (stored && stored->isKnown)
        image = UnpackThumbnail(stored->image);
    else if (stored && IsPicture(stored->kind))
        image = Make(id, *stored, file);
    m_results.onFound(id, image, shape && !image.isNull() ? shape(image) : QImage());
}

// A file that cannot be had now may be there later, so nothing is stored of it.
QImage ThumbnailFinder::Make(long long id, const StoredThumbnail& stored, FileBytes& file)
{
    if (file.Open(stored.path) != 0)
        return {};
    QImage image = MakeThumbnail(file.Bytes());
    if (!file.Failed())
        m_results.store({id, PackThumbnail(image)});
    return image;
}
} // namespace HynHost
