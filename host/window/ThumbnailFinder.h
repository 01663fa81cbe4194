// Finds the thumbnails that a window wants to show: in the catalogue, else it makes them from the files and has them
// stored.
//
// Two workers look, so that a picture that takes long does not hold up the others.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <QImage>

#include <halyon/platform/TovMutex.h>
#include <halyon/thread/CHynThreadManager.h>
#include <host/FileBytes.h>
#include <host/FunctionWorker.h>
#include <host/window/CatalogReader.h>
#include <host/window/SharedCatalog.h>

namespace HynHost
{
class ThumbnailFinder
{
public:
    // What comes of it, on the workers.
    struct Results
    {
        std::function<void(long long id, const QImage& image, const QImage& shaped)> onFound; // null: there is none
        std::function<void(MadeThumbnail made)> store; // the catalogue did not hold it
        std::function<void(const std::string& message)> onFailure;
    };

    // `catalog` outlives the finder. Throws HostError when no worker can be started.
    ThumbnailFinder(Halyon::CHynThreadManager& manager, SharedCatalog& catalog, Results results);

    // Waits for the thumbnails that are on their way. Requires: the catalogue is stopped. [any other]
    void Stop();

    // What is made of each image on the workers; it may be none.
    using Shape = std::function<QImage(const QImage& image)>;

    // Replaces what is wanted, the most urgent first. [any]
    void Want(std::vector<long long> ids, Shape shape);

private:
    void Seek();
    [[nodiscard]] std::optional<long long> Next(Shape& shape);
    void Find(long long id, const Shape& shape, FileBytes& file);
    [[nodiscard]] QImage Make(long long id, const StoredThumbnail& stored, FileBytes& file);

    SharedCatalog& m_catalog;
    const Results m_results;
    Halyon::TovMutex m_mutex;
    std::vector<long long> m_wanted HYN_GUARDED_BY(m_mutex); // the most urgent last
    Shape m_shape HYN_GUARDED_BY(m_mutex);
    std::vector<long long> m_underway HYN_GUARDED_BY(m_mutex); // one a worker at most
    std::vector<std::unique_ptr<FunctionWorker>> m_workers;    // they go first
};
} // namespace HynHost
