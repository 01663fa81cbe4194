#include <host/window/LibraryTrash.h>

#include <algorithm>
#include <exception>
#include <optional>
#include <string_view>
#include <utility>

#include <host/HostError.h>
#include <host/PrintableText.h>

namespace HynHost
{
namespace
{
constexpr const char16_t* kTables[] = {
    u"CREATE TEMP TABLE IF NOT EXISTS taken (number INTEGER PRIMARY KEY, volume, path, id, name, size, mtime_ns, inode,"
    u" kind, taken, width, height, rating, problem, given)",
    u"CREATE TEMP TABLE IF NOT EXISTS taken_thumbnail (number INTEGER PRIMARY KEY, size, mtime_ns, inode, image)",
};

// A medium out of the catalogue: ?1 its number from now on, ?2 its id.
constexpr const char16_t* kTake[] = {
    (u"INSERT INTO taken SELECT ?1, volume, path, file.id, name, size, mtime_ns, inode, kind, taken, width, height,"
     u" rating, problem, given FROM file JOIN folder ON folder.id = file.folder WHERE file.id = ?2"),
    u"INSERT INTO taken_thumbnail SELECT ?1, size, mtime_ns, inode, image FROM thumbnail WHERE file = ?2",
    u"DELETE FROM file WHERE id = ?2 AND ?1",
};

// And back. Meanwhile its folder may have left the catalogue, its id may be another's, and a file of its name may have
// come and gone.
constexpr const char16_t* kGiveBack[] = {
    u"INSERT OR IGNORE INTO folder (volume, path) SELECT volume, path FROM taken WHERE number = ?1",
    u"DELETE FROM file WHERE (folder, name) IN (SELECT folder.id, name FROM taken JOIN folder ON"
    u" folder.volume = taken.volume AND folder.path = taken.path WHERE number = ?1)",
    u"INSERT INTO file (id, folder, name, size, mtime_ns, inode, kind, taken, width, height, rating, problem, given)"
    u" SELECT CASE WHEN taken.id IN (SELECT id FROM file) THEN NULL ELSE taken.id END, folder.id, name, size, mtime_ns,"
    u" inode, kind, taken.taken, width, height, rating, problem, given FROM taken JOIN folder ON"
    u" folder.volume = taken.volume AND folder.path = taken.path WHERE number = ?1",
    u"INSERT OR REPLACE INTO thumbnail (file, size, mtime_ns, inode, image)"
    u" SELECT last_insert_rowid(), size, mtime_ns, inode, image FROM taken_thumbnail WHERE number = ?1",
    u"DELETE FROM taken WHERE number = ?1",
    u"DELETE FROM taken_thumbnail WHERE number = ?1",
};
} // namespace

LibraryTrash::LibraryTrash(SharedCatalog& catalog, FailureFunction onFailure)
    : m_catalog(catalog), m_onFailure(std::move(onFailure))
{
}

void LibraryTrash::MakeTables(Database& database)
{
    database.execute(u"PRAGMA temp_store = MEMORY");
    for (const char16_t* sql : kTables)
        database.execute(sql);
}

LibraryTrash::Level LibraryTrash::Find(Database& database, const std::vector<long long>& ids,
                                       const VolumePlaces& places)
{
    Level level;
    Command find = database.prepare(u"SELECT path, volume FROM media WHERE id = ?");
    for (const long long id : ids)
    {
        const Rows rows = find.query(id);
        if (rows.at_end())
            continue; // it is gone already
        std::string path = rows.row().get<std::optional<std::string>>(0).value_or("");
        places.Correct(rows.row().get<long long>(1), path);
        level.push_back({++m_number, id, TrashItem(std::move(path))});
    }
    return level;
}

// What of the level lies in the trash now.
void LibraryTrash::Move(Level& level) const
{
    constexpr std::string_view kAction = "cannot move to the trash";
    const auto tell = [this, kAction](const TrashItem& item)
    {
        m_onFailure(HostError(kAction, PrintableText(item.Path()), item.WhyNotMoved()).what());
        return true;
    };
    std::erase_if(level, [&](const Taken& taken) { return !taken.item.IsThere() && tell(taken.item); });
    std::vector<TrashItem> items;
    for (const Taken& taken : level)
        items.push_back(taken.item);
    MoveToDesktopTrash(items);
    std::erase_if(level, [&](const Taken& taken) { return taken.item.IsThere() && tell(taken.item); });
}

// The files are moved when nothing but the disk can keep the catalogue from following.
std::size_t LibraryTrash::Take(const std::vector<long long>& ids)
{
    constexpr const char* kAction = "cannot move to the trash what is in";
    const auto places = m_catalog.Places();
    Level level;
    try
    {
        m_catalog.Read(kAction, [](Database& database) { MakeTables(database); });
        m_catalog.Write(kAction,
                        [&](Database& database)
                        {
                            level = Find(database, ids, *places);
                            Move(level);
                            for (const char16_t* sql : kTake)
                            {
                                Command take = database.prepare(sql);
                                for (const Taken& taken : level)
                                    take.execute(taken.number, taken.id);
                            }
                        });
    }
    catch (...)
    {
        static_cast<void>(Restore(level));
        throw;
    }
    const std::size_t count = level.size();
    if (count != 0)
        m_levels.push_back(std::move(level));
    return count;
}

// Brings files back; those that stay are told of and returned.
LibraryTrash::Level LibraryTrash::Restore(Level& level) const
{
    Level stay;
    std::erase_if(level,
                  [&](const Taken& taken)
                  {
                      try
                      {
                          taken.item.Restore();
                          return false;
                      }
                      catch (const HostError& failure)
                      {
                          m_onFailure(failure.what());
                          stay.push_back(taken);
                          return true;
                      }
                  });
    return stay;
}

std::size_t LibraryTrash::BringBack()
{
    if (m_levels.empty())
        return 0;
    Level level = m_levels.back();
    Level stay;
    m_catalog.Write("cannot bring back what was in",
                    [&](Database& database)
                    {
                        stay = Restore(level);
                        for (const Taken& taken : level)
                        {
                            for (const char16_t* sql : kGiveBack)
                                database.execute(sql, taken.number);
                        }
                    });
    m_levels.pop_back();
    if (!stay.empty())
        m_levels.insert(m_levels.begin(), std::move(stay));
    return level.size();
}
} // namespace HynHost
