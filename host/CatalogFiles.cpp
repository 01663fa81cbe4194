#include <host/CatalogFiles.h>

namespace HynHost
{
namespace
{
constexpr const char16_t* kFindFolder = u"SELECT id FROM folder WHERE volume = ? AND path = ?";

constexpr const char16_t* kFind =
    u"SELECT size, mtime_ns, inode, kind IS NOT NULL, problem FROM file WHERE folder = ? AND name = ?";

constexpr const char16_t* kAddFolder = u"INSERT INTO folder (volume, path) VALUES (?, ?)";

// NULL cannot be bound through the interface, so a value that cannot occur stands for it.
constexpr const char16_t* kStore =
    u"INSERT INTO file (folder, name, size, mtime_ns, inode, kind, taken, width, height, rating, problem)"
    u" VALUES (?, ?, ?, ?, ?, NULLIF(?, ''), ?, NULLIF(?, 0), NULLIF(?, 0),"
    u" NULLIF(?, -1), NULLIF(?, ''))"
    u" ON CONFLICT (folder, name) DO UPDATE SET size = excluded.size, mtime_ns = excluded.mtime_ns,"
    u" inode = excluded.inode, kind = excluded.kind, taken = excluded.taken, width = excluded.width,"
    u" height = excluded.height, rating = excluded.rating, problem = excluded.problem";

constexpr const char16_t* kStoreThumbnail =
    u"INSERT OR REPLACE INTO thumbnail (file, size, mtime_ns, inode, image)"
    u" SELECT id, size, mtime_ns, inode, ?3 FROM file WHERE folder = ?1 AND name = ?2";

// What begins with a folder's path sorts from "FOLDER/" to before "FOLDER0", the character after "/".
constexpr const char16_t* kCountBelow = u"SELECT count(*) FROM file JOIN folder ON folder.id = file.folder"
                                        u" WHERE folder.volume = ? AND folder.path >= ? AND folder.path < ?";

constexpr const char16_t* kFilesBelow =
    u"SELECT file.id, folder.path || file.name, kind IS NOT NULL FROM file JOIN folder ON folder.id = file.folder"
    u" WHERE folder.volume = ? AND folder.path >= ? AND folder.path < ? AND file.id > ? ORDER BY file.id LIMIT ?";

constexpr const char16_t* kRemove = u"DELETE FROM file WHERE id = ?";

constexpr const char16_t* kRemoveEmptyFolders = u"DELETE FROM folder WHERE volume = ? AND path >= ? AND path < ?"
                                                u" AND NOT EXISTS (SELECT 1 FROM file WHERE file.folder = folder.id)";

// Just behind the paths of a folder and all below it.
std::string EndOf(StoredFolder folder)
{
    std::string end(folder.path);
    end.back() = '/' + 1;
    return end;
}
} // namespace

CatalogFiles::CatalogFiles(Catalog& catalog)
    : m_findFolder(catalog.GetDatabase().prepare(kFindFolder)), m_find(catalog.GetDatabase().prepare(kFind)),
      m_addFolder(catalog.GetDatabase().prepare(kAddFolder)), m_store(catalog.GetDatabase().prepare(kStore)),
      m_storeThumbnail(catalog.GetDatabase().prepare(kStoreThumbnail)),
      m_countBelow(catalog.GetDatabase().prepare(kCountBelow)),
      m_filesBelow(catalog.GetDatabase().prepare(kFilesBelow)), m_remove(catalog.GetDatabase().prepare(kRemove)),
      m_removeEmptyFolders(catalog.GetDatabase().prepare(kRemoveEmptyFolders))
{
}

// The folder's id; 0 when the catalogue does not hold it.
long long CatalogFiles::FindFolder(StoredFolder folder)
{
    if (!m_lastFolder || m_lastFolder->volume != folder.volume || m_lastFolder->path != folder.path)
    {
        const Rows rows = m_findFolder.query(folder.volume, folder.path);
        m_lastFolder = {rows.at_end() ? 0 : rows.row().get<long long>(0), folder.volume, std::string(folder.path)};
    }
    return m_lastFolder->id;
}

long long CatalogFiles::AddFolder(StoredFolder folder)
{
    if (FindFolder(folder) == 0)
    {
        m_addFolder.execute(folder.volume, folder.path);
        m_lastFolder.reset();
    }
    return FindFolder(folder);
}

std::optional<KnownFile> CatalogFiles::Find(StoredFolder folder, const std::string& name)
{
    const long long id = FindFolder(folder);
    if (id == 0)
        return std::nullopt;
    const Rows rows = m_find.query(id, name);
    if (rows.at_end())
        return std::nullopt;
    const auto [size, modified, inode, isMedia, problem] =
        rows.row().as<long long, long long, long long, bool, std::optional<std::string>>();
    return KnownFile{{size, modified, inode}, isMedia, problem.value_or("")};
}

void CatalogFiles::Store(StoredFolder folder, const std::string& name, const FileFacts& facts)
{
    m_store.execute(AddFolder(folder), name, facts.stamp.size, facts.stamp.modifiedNs, facts.stamp.inode,
                    facts.kind ? MediaKindName(*facts.kind) : "", facts.taken, facts.width, facts.height,
                    facts.rating.value_or(-1), facts.problem);
}

void CatalogFiles::StoreThumbnail(StoredFolder folder, const std::string& name, std::span<const std::byte> image)
{
    if (image.empty())
        m_storeThumbnail.execute(FindFolder(folder), name, std::nullopt);
    else
        m_storeThumbnail.execute(FindFolder(folder), name, image);
}

std::vector<StoredFile> CatalogFiles::FilesBelow(StoredFolder folder, long long after, int limit)
{
    std::vector<StoredFile> files;
    for (auto& row : m_filesBelow.query(folder.volume, folder.path, EndOf(folder), after, limit))
        files.push_back({row.get<long long>(0), row.get<std::optional<std::string>>(1).value_or(""), row.get<bool>(2)});
    return files;
}

std::uint64_t CatalogFiles::CountBelow(StoredFolder folder)
{
    const Rows rows = m_countBelow.query(folder.volume, folder.path, EndOf(folder));
    return static_cast<std::uint64_t>(rows.row().get<long long>(0));
}

void CatalogFiles::Remove(long long id)
{
    m_remove.execute(id);
}

void CatalogFiles::RemoveEmptyFolders(StoredFolder folder)
{
    m_removeEmptyFolders.execute(folder.volume, folder.path, EndOf(folder));
}
} // namespace HynHost
