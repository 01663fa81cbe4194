// The volumes of a catalogue. Its folders are kept as paths on a volume, so that they move with it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <host/Database.h>
#include <host/Volumes.h>

namespace HynHost
{
struct StoredVolume
{
    long long id = 0;
    std::string mount;    // where it was at its last import
    std::string identity; // empty: only its mount point is known
};

[[nodiscard]] std::vector<StoredVolume> StoredVolumes(Database& database);

// The id of a volume that the catalogue holds as it is now; nothing when it is new or was elsewhere. It is known by its
// identity; without one by its mount point. [owner]
[[nodiscard]] std::optional<long long> FindVolume(Database& database, const Volume& volume);

// The id of a volume, after the catalogue was told of it and where it is now. A volume that is new takes over what the
// catalogue holds below its mount point: catalogues of version 1 did not tell volumes apart. Requires: an exclusive
// transaction. [owner]
[[nodiscard]] long long EnterVolume(Database& database, const Volume& volume);

// Where the catalogue's volumes are now. A picture of the moment it is made.
class VolumePlaces
{
public:
    VolumePlaces() = default;
    explicit VolumePlaces(Database& database);

    // Whether a volume is mounted somewhere. [any]
    [[nodiscard]] bool IsHere(long long volume) const;

    // Puts a path right that is that of its volume's last import. [any]
    void Correct(long long volume, std::string& path) const;

private:
    struct Place
    {
        std::string stored;
        std::optional<std::string> now;
    };
    std::map<long long, Place> m_places;
};
} // namespace HynHost
