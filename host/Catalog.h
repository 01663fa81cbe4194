// The catalogue: a database of the media files under the folders that were imported.
//
// Tables (text is UTF-8):
//   volume(id, mount, identity)
//       where it was mounted at its last import, without a "/" at its end, so empty for the startup volume; `identity`
//       is NULL when the machine gave none
//   folder(id, volume, path)
//       `path` begins at the volume's mount point and with a "/", and ends in one
//   file(id, folder, name, size, mtime_ns, inode, kind, taken, width, height, rating, problem, given)
//       one row for each file that was looked at; `kind` is NULL when it is no medium, so that it is not read again;
//       `rating` is what the file says, `given` what a user said instead: 0 to 5 stars, -1 for none, or NULL
//   thumbnail(file, size, mtime_ns, inode, image)
//       of a file with these marks, and of no other state of it; `image` is a JPEG or PNG, or NULL when none can be
//       made
// and the view that everything else reads, media files only:
//   media(id, path, folder, name, kind, size, modified, taken, width, height, rating, problem, volume)
//       `path` and `folder` are absolute, by the volume's `mount`; `modified` and `taken` are FILETIMEs as the module
//       stores them, seconds since 2001-01-01 UTC; `rating` is what was given, else what was read; width, height,
//       rating and problem may be NULL
//
// A catalogue carries an application id and a version in the database header. One of an earlier version is brought to
// this one when it is opened, in one transaction; a file that is something else, or of a later version, or that holds
// tables, views, indexes or triggers beside these, is refused and left as it is.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <host/Database.h>
#include <host/FileFacts.h>

namespace HynHost
{
class Catalog
{
public:
    enum class Mode
    {
        Existing, // it must exist
        Create,   // it is made when it is missing, its folder too
    };

    // $XDG_DATA_HOME/halyon/catalog.db, or the same under ~/.local/share. Throws HostError without a home. [any]
    [[nodiscard]] static std::string DefaultFile();

    // Opens it and checks that it is a catalogue. Throws HostError.
    Catalog(const std::string& file, Mode mode);

    [[nodiscard]] Database& GetDatabase() noexcept { return m_database; }

private:
    void Create();
    std::int32_t OldVersion();
    void Upgrade();
    void CheckSchema();
    void CheckVersion();

    Database m_database;
};

// Throws a HostError for what the database refused, with the reason where it can be found out: the module's codes do
// not tell a full disk or a missing right from other refusals.
[[noreturn]] void ThrowRefusal(std::string_view action, const std::string& catalog, const DatabaseError& failure);
} // namespace HynHost
