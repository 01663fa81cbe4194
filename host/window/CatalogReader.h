// What a window asks of a catalogue, as queries.
//
// Everything is prepared anew for each call, which costs some microseconds: nothing stays with a thread. Calls throw
// HostError or DatabaseError, and wait while the catalogue is locked.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <host/CatalogVolumes.h>
#include <host/window/Library.h>

namespace HynHost
{
struct FoundMedia
{
    std::shared_ptr<const MediaIndex> index;
    std::size_t all = 0; // media files in the catalogue
};

// [any]
[[nodiscard]] FoundMedia FindMedia(Database& database, const MediaQuery& query);

// All but `camera` and `isThere`, which the file tells; nothing when the catalogue holds no such medium. [any]
[[nodiscard]] std::optional<MediaDetails> ReadDetails(Database& database, const VolumePlaces& places, long long id);

// A medium and what the catalogue holds to show of it.
struct StoredThumbnail
{
    std::string path;
    MediaKind kind = MediaKind::Jpeg;
    bool isKnown = false;         // the catalogue knows its thumbnail, or that there is none
    std::vector<std::byte> image; // empty when there is none
};

// [any]
[[nodiscard]] std::optional<StoredThumbnail> ReadThumbnail(Database& database, const VolumePlaces& places,
                                                           long long id);

// What was made of a medium; empty when nothing can be made.
struct MadeThumbnail
{
    long long id = 0;
    std::vector<std::byte> image;
};

// Requires: an exclusive transaction. [owner]
void StoreThumbnails(Database& database, const std::vector<MadeThumbnail>& thumbnails);
} // namespace HynHost
