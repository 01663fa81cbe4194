#include <host/window/SharedCatalog.h>

#include <filesystem>

#include <host/DatabaseFile.h>

namespace HynHost
{
namespace
{
constexpr auto kPlacesFor = std::chrono::seconds(3); // a disk that comes back is found again by then
} // namespace

bool SharedCatalog::Open(Catalog::Mode mode, const std::function<bool()>& stop)
{
    if (IsOpen())
        return true;
    std::error_code error;
    if (mode == Catalog::Mode::Existing && !IsEngineName(m_file) && !std::filesystem::exists(m_file, error) && !error)
        return false;
    auto lock = std::make_unique<CatalogLock>(m_file);
    if (!lock->WaitUntilFree(Transaction::Kind::Exclusive, WithStop(stop))) // it may have to be brought up to date
        throw Stopped();
    m_catalog = std::make_unique<Catalog>(m_file, mode);
    m_lock = std::make_unique<CatalogLock>(m_file); // there may have been no file before
    m_isOpen.store(true, std::memory_order_release);
    return true;
}

void SharedCatalog::WaitFor(Transaction::Kind kind, const std::function<bool()>& stop) const
{
    if (!m_lock->WaitUntilFree(kind, WithStop(stop)))
        throw Stopped();
}

std::function<bool()> SharedCatalog::WithStop(const std::function<bool()>& stop) const
{
    return [this, &stop]
    {
        return m_stopped.load() || (stop && stop());
    };
}

std::shared_ptr<const VolumePlaces> SharedCatalog::Places()
{
    const auto now = std::chrono::steady_clock::now();
    {
        const Halyon::TovMutexLock lock(m_mutex);
        if (m_places != nullptr && now < m_placesUntil)
            return m_places;
    }
    auto places =
        Read("cannot read", [](Database& database) { return std::make_shared<const VolumePlaces>(database); });
    const Halyon::TovMutexLock lock(m_mutex);
    m_places = places;
    m_placesUntil = now + kPlacesFor;
    return places;
}
} // namespace HynHost
