// The files of a catalogue, as an import looks them up, stores them and removes them.
//
// For the thread that writes; everything else reads the view `media`. Works with prepared statements and in whatever
// transaction its caller has open: without one, every call would wait for the disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <host/Catalog.h>
#include <host/FileFacts.h>

namespace HynHost
{
// What the catalogue knows of a file.
struct KnownFile
{
    FileStamp stamp;
    bool isMedia = false;
    std::string problem; // that it had when it was read
};

// A folder as the catalogue keeps it.
struct StoredFolder
{
    long long volume = 0;
    std::string_view path; // on its volume: begins and ends with a "/"
};

// A file that the catalogue holds.
struct StoredFile
{
    long long id = 0;
    std::string path; // on its volume
    bool isMedia = false;
};

class CatalogFiles
{
public:
    explicit CatalogFiles(Catalog& catalog);

    // Forgets which folder was looked up last. At the start of each transaction: between two, another program may have
    // removed it. [owner]
    void BeginTransaction() noexcept { m_lastFolder.reset(); }

    // [owner]
    [[nodiscard]] std::optional<KnownFile> Find(StoredFolder folder, const std::string& name);

    // Adds the file or replaces what was known of it. [owner]
    void Store(StoredFolder folder, const std::string& name, const FileFacts& facts);

    // Adds or replaces the thumbnail of a file that was stored; empty: there can be none. [owner]
    void StoreThumbnail(StoredFolder folder, const std::string& name, std::span<const std::byte> image);

    // Up to `limit` files below `folder` with ids above `after`, in the order of ids. [owner]
    [[nodiscard]] std::vector<StoredFile> FilesBelow(StoredFolder folder, long long after, int limit);

    // How many files it holds below `folder`. [owner]
    [[nodiscard]] std::uint64_t CountBelow(StoredFolder folder);

    // [owner]
    void Remove(long long id);

    // Removes the folders below `folder` that hold no file any more. [owner]
    void RemoveEmptyFolders(StoredFolder folder);

private:
    // Files come folder by folder.
    struct KnownFolder
    {
        long long id = 0; // 0: the catalogue holds none
        long long volume = 0;
        std::string path;
    };

    long long FindFolder(StoredFolder folder);
    long long AddFolder(StoredFolder folder);

    std::optional<KnownFolder> m_lastFolder;
    Command m_findFolder;
    Command m_find;
    Command m_addFolder;
    Command m_store;
    Command m_storeThumbnail;
    Command m_countBelow;
    Command m_filesBelow;
    Command m_remove;
    Command m_removeEmptyFolders;
};
} // namespace HynHost
