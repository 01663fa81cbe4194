// The catalogue: a database of the media files under the folders that were imported.
//
// Tables (paths are UTF-8 and absolute, a folder's ends in "/"):
//   folder(id, path)
//   file(id, folder, name, size, mtime_ns, inode, kind, taken, width, height, rating, problem)
//       one row for each file that was looked at; `kind` is NULL when it is no medium, so that it is not read again
// and the view that everything else reads, media files only:
//   media(id, path, folder, name, kind, size, modified, taken, width, height, rating, problem)
//       `modified` and `taken` are FILETIMEs as the module stores them, seconds since 2001-01-01 UTC; width, height,
//       rating and problem may be NULL
//
// A catalogue carries an application id and a version in the database header; a file that is something else, or of a
// later version, is refused and left as it is.
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

    // Opens it and checks that it is a catalogue. Throws HostError or DatabaseError.
    Catalog(const std::string& file, Mode mode);

    [[nodiscard]] Database& GetDatabase() noexcept { return m_database; }

private:
    void CheckVersion();
    void Create();

    Database m_database;
};
} // namespace HynHost
