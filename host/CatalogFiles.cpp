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
    u" VALUES (?, ?, ?, ?, ?, NULLIF(?, ''), ?, NULLIF(?, 0), "
    u"NULLIF(?, 0),"
    u" NULLIF(?, -1), NULLIF(?, ''))"
    u" ON CONFLICT (folder, name) DO UPDATE SET size = excluded.size, mtime_ns = excluded.mtime_ns,"
    u" inode = excluded.inode, kind = excluded.kind, taken = excluded.taken, width = excluded.width,"
    u" height = excluded.height, rating = excluded.rating, problem = excluded.problem";

// What begins with a folder's path sorts from "FOLDER/" to before "FOLDER0", the character after "/".
constexpr const char16_t* kCountBelow = u"SELECT count(*) FROM file JOIN folder ON folder.id = file.folder"
                                        u" WHERE folder.volume = ? AND folder.path >= ? AND folder.path < ?";

constexpr const char16_t* kFilesBelow =
    u"SELECT file.id, folder.path || file.name, kind IS NOT NULL FROM file JOIN folder ON folder.id = file.folder"
    u" WHERE folder.volume = ? AND folder.path >= ? AND folder.path < ? AND file.id > ? ORDER BY file.id LIMIT ?";

constexpr const char16_t* kRemove = u"DELETE FROM file WHERE id = ?";

constexpr const char16_t* kRemoveEmptyFolders = u"DELETE FROM folder WHERE volume = ? AND path >= ? AND path < ?"
                                                u" AND NOT EXISTS (SELECT 1 FROM file WHERE file.folder = folder.id)";

CTovStringW Wide(std::string_view text)
{
    return CTovStringW::FromUTF8(text);
}

// Binds the first three parameters: the volume, and the range of paths of a folder and all below it.
Command& BindRange(Command& command, StoredFolder folder)
{
    std::string end(folder.path);
    end.back() = '/' + 1;
    return command.Bind(0, folder.volume).Bind(1, Wide(folder.path)).Bind(2, Wide(end));
}
} // namespace

CatalogFiles::CatalogFiles(Catalog& catalog)
    : m_findFolder(catalog.GetDatabase().Prepare(kFindFolder)), m_find(catalog.GetDatabase().Prepare(kFind)),
      m_addFolder(catalog.GetDatabase().Prepare(kAddFolder)), m_store(catalog.GetDatabase().Prepare(kStore)),
      m_countBelow(catalog.GetDatabase().Prepare(kCountBelow)),
      m_filesBelow(catalog.GetDatabase().Prepare(kFilesBelow)), m_remove(catalog.GetDatabase().Prepare(kRemove)),
      m_removeEmptyFolders(catalog.GetDatabase().Prepare(kRemoveEmptyFolders))
{
}

// The folder's id; 0 when the catalogue does not hold it.
long long CatalogFiles::FindFolder(StoredFolder folder)
{
    if (!m_lastFolder || m_lastFolder->volume != folder.volume || m_lastFolder->path != folder.path)
    {
        const RecordSet rows = m_findFolder.Bind(0, folder.volume).Bind(1, Wide(folder.path)).Open();
        m_lastFolder = {rows.AtEnd() ? 0 : rows.Get<long long>(0), folder.volume, std::string(folder.path)};
    }
    return m_lastFolder->id;
}

long long CatalogFiles::AddFolder(StoredFolder folder)
{
    if (FindFolder(folder) == 0)
    {
        m_addFolder.Bind(0, folder.volume).Bind(1, Wide(folder.path)).Execute();
        m_lastFolder.reset();
    }
    return FindFolder(folder);
}

std::optional<KnownFile> CatalogFiles::Find(StoredFolder folder, const std::string& name)
{
    const long long id = FindFolder(folder);
    if (id == 0)
        return std::nullopt;
    const RecordSet rows = m_find.Bind(0, id).Bind(1, Wide(name)).Open();
    if (rows.AtEnd())
        return std::nullopt;
    const FileStamp stamp = {rows.Get<long long>(0), rows.Get<long long>(1), rows.Get<long long>(2)};
    return KnownFile{stamp, rows.Get<std::int32_t>(3) != 0, rows.Text(4).value_or("")};
}

void CatalogFiles::Store(StoredFolder folder, const std::string& name, const FileFacts& facts)
{
    m_store.Bind(0, AddFolder(folder)).Bind(1, Wide(name));
    m_store.Bind(2, facts.stamp.size).Bind(3, facts.stamp.modifiedNs).Bind(4, facts.stamp.inode);
    m_store.Bind(5, facts.kind ? Wide(MediaKindName(*facts.kind)) : CTovStringW()).Bind(6, facts.taken);
    m_store.Bind(7, facts.width).Bind(8, facts.height).Bind(9, facts.rating.value_or(-1));
    m_store.Bind(10, Wide(facts.problem)).Execute();
}

std::vector<StoredFile> CatalogFiles::FilesBelow(StoredFolder folder, long long after, int limit)
{
    std::vector<StoredFile> files;
    BindRange(m_filesBelow, folder).Bind(3, after).Bind(4, limit);
    for (RecordSet rows = m_filesBelow.Open(); !rows.AtEnd(); rows.Next())
        files.push_back({rows.Get<long long>(0), rows.Text(1).value_or(""), rows.Get<std::int32_t>(2) != 0});
    return files;
}

std::uint64_t CatalogFiles::CountBelow(StoredFolder folder)
{
    const RecordSet rows = BindRange(m_countBelow, folder).Open();
    return static_cast<std::uint64_t>(rows.Get<long long>(0));
}

void CatalogFiles::Remove(long long id)
{
    m_remove.Bind(0, id).Execute();
}

void CatalogFiles::RemoveEmptyFolders(StoredFolder folder)
{
    BindRange(m_removeEmptyFolders, folder).Execute();
}
} // namespace HynHost
