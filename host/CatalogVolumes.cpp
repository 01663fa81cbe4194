#include <host/CatalogVolumes.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace HynHost
{
namespace
{
constexpr const char16_t* kTakeOver =
    u"UPDATE OR IGNORE folder SET volume = ?1, path = substr(path, length(?2) + 1)"
    u" WHERE volume IN (SELECT id FROM volume WHERE mount = '') AND path >= ?2 || '/' AND path < ?2 || '0'";

// What the catalogue knows the volume as. There is always but one startup volume, also after the system has moved to
// another disk.
const StoredVolume* Match(const std::vector<StoredVolume>& stored, const Volume& volume)
{
    const auto find = [&stored](auto matches)
    {
        const auto found = std::ranges::find_if(stored, matches);
        return found == stored.end() ? nullptr : &*found;
    };
    const StoredVolume* match = nullptr;
    if (!volume.identity.empty())
        match = find([&](const StoredVolume& row) { return row.identity == volume.identity; });
    if (match == nullptr)
        match = find([&](const StoredVolume& row)
                     { return row.mount == volume.mount && (row.identity.empty() || volume.mount.empty()); });
    return match;
}

bool IsAsStored(const StoredVolume& row, const Volume& volume)
{
    return row.mount == volume.mount && (volume.identity.empty() || row.identity == volume.identity);
}

void Run(Database& database, const char16_t* sql, long long id, const std::string& text)
{
    database.execute(sql, id, text);
}
} // namespace

std::vector<StoredVolume> StoredVolumes(Database& database)
{
    std::vector<StoredVolume> volumes;
    for (auto& row : database.query(u"SELECT id, mount, identity FROM volume ORDER BY id"))
        volumes.push_back({row.get<long long>(0), row.get<std::optional<std::string>>(1).value_or(""),
                           row.get<std::optional<std::string>>(2).value_or("")});
    return volumes;
}

std::optional<long long> FindVolume(Database& database, const Volume& volume)
{
    const auto stored = StoredVolumes(database);
    const StoredVolume* match = Match(stored, volume);
    return match != nullptr && IsAsStored(*match, volume) ? std::optional(match->id) : std::nullopt;
}

long long EnterVolume(Database& database, const Volume& volume)
{
    const auto stored = StoredVolumes(database);
    const StoredVolume* match = Match(stored, volume);
    const bool isNew = match == nullptr;
    if (isNew)
        database.execute(u"INSERT INTO volume (mount) VALUES ('')");
    const long long id = isNew ? database.last_insert_id() : match->id;
    Run(database, u"UPDATE volume SET mount = ?2 WHERE id = ?1", id, volume.mount);
    if (isNew && !volume.mount.empty())
        Run(database, kTakeOver, id, volume.mount);
    if (!volume.identity.empty())
        Run(database, u"UPDATE volume SET identity = ?2 WHERE id = ?1", id, volume.identity);
    return id;
}

VolumePlaces::VolumePlaces(Database& database)
{
    const MountedVolumes mounted;
    for (StoredVolume& volume : StoredVolumes(database))
    {
        Place place{std::move(volume.mount), std::nullopt};
        place.now = volume.identity.empty() ? place.stored : mounted.MountOf(volume.identity);
        m_places.emplace(volume.id, std::move(place));
    }
}

bool VolumePlaces::IsHere(long long volume) const
{
    const auto at = m_places.find(volume);
    return at == m_places.end() || at->second.now;
}

void VolumePlaces::Correct(long long volume, std::string& path) const
{
    const auto at = m_places.find(volume);
    if (at != m_places.end() && at->second.now && *at->second.now != at->second.stored)
        path.replace(0, at->second.stored.size(), *at->second.now);
}
} // namespace HynHost
