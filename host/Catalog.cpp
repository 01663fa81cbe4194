#include <host/Catalog.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include <unistd.h>

#include <host/DatabaseFile.h>
#include <host/HostError.h>
#include <host/PrintableText.h>

namespace HynHost
{
namespace
{
constexpr std::int32_t kApplicationID = 0x48796E43; // "HynC"
constexpr std::int32_t kVersion = 3;

constexpr const char16_t* kMakeVolume =
    u"CREATE TABLE volume (id INTEGER PRIMARY KEY, mount TEXT NOT NULL, identity TEXT UNIQUE)";

// 978307200: from 1970 to 2001.
constexpr const char16_t* kMakeView =
    u"CREATE VIEW media AS SELECT file.id AS id, mount || folder.path || file.name AS path,"
    u" CASE mount || folder.path WHEN '/' THEN '/' ELSE rtrim(mount || folder.path, '/') END AS folder,"
    u" file.name AS name, kind, size, mtime_ns / 1e9 - 978307200.0 AS modified, taken, width, height,"
    u" CASE WHEN given IS NULL THEN rating ELSE NULLIF(given, -1) END AS rating, problem,"
    u" volume FROM file JOIN folder ON folder.id = file.folder JOIN volume ON volume.id = folder.volume"
    u" WHERE kind IS NOT NULL";

constexpr const char16_t* kMakeFolder = u"CREATE TABLE folder ("
                                        u" id INTEGER PRIMARY KEY,"
                                        u" volume INTEGER NOT NULL REFERENCES volume (id),"
                                        u" path TEXT NOT NULL,"
                                        u" UNIQUE (volume, path))";

constexpr const char16_t* kMakeFile = u"CREATE TABLE file ("
                                      u" id INTEGER PRIMARY KEY,"
                                      u" folder INTEGER NOT NULL REFERENCES folder (id),"
                                      u" name TEXT NOT NULL,"
                                      u" size INTEGER NOT NULL,"
                                      u" mtime_ns INTEGER NOT NULL,"
                                      u" inode INTEGER NOT NULL,"
                                      u" kind TEXT,"
                                      u" taken REAL,"
                                      u" width INTEGER,"
                                      u" height INTEGER,"
                                      u" rating INTEGER,"
                                      u" problem TEXT, given INTEGER,"
                                      u" UNIQUE (folder, name))";

constexpr const char16_t* kMakeThumbnail = u"CREATE TABLE thumbnail ("
                                           u" file INTEGER PRIMARY KEY REFERENCES file (id),"
                                           u" size INTEGER NOT NULL,"
                                           u" mtime_ns INTEGER NOT NULL,"
                                           u" inode INTEGER NOT NULL,"
                                           u" image BLOB)";

// Files go one by one and in more than one place; identifiers are used again.
constexpr const char16_t* kMakeTrigger =
    u"CREATE TRIGGER file_gone AFTER DELETE ON file BEGIN DELETE FROM thumbnail WHERE file = old.id; END";

constexpr const char16_t* kSetVersion = u"PRAGMA user_version = 3";

constexpr const char16_t* kSchema[] = {
    kMakeVolume, kMakeFolder, kMakeFile, kMakeThumbnail, kMakeTrigger, kMakeView, u"PRAGMA application_id = 1215917635",
    kSetVersion,
};

// Version 2 knew no thumbnails, and of stars only what the files say. The engine writes the new column where kMakeFile
// has it.
constexpr const char16_t* kFromVersion2[] = {
    u"DROP VIEW media", u"ALTER TABLE file ADD COLUMN given INTEGER", kMakeThumbnail, kMakeTrigger, kMakeView,
    kSetVersion,
};

// How earlier versions made what this one makes otherwise.
constexpr const char16_t* kFolderOfVersion1 =
    u"CREATE TABLE folder (id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE)";
constexpr const char16_t* kViewOfVersion1 =
    u"CREATE VIEW media AS SELECT file.id AS id, folder.path || file.name AS path,"
    u" CASE folder.path WHEN '/' THEN '/' ELSE rtrim(folder.path, '/') END AS folder, file.name AS name, kind, size,"
    u" mtime_ns / 1e9 - 978307200.0 AS modified, taken, width, height, rating, problem"
    u" FROM file JOIN folder ON folder.id = file.folder WHERE kind IS NOT NULL";
constexpr const char16_t* kViewOfVersion2 =
    u"CREATE VIEW media AS SELECT file.id AS id, mount || folder.path || file.name AS path,"
    u" CASE mount || folder.path WHEN '/' THEN '/' ELSE rtrim(mount || folder.path, '/') END AS folder,"
    u" file.name AS name, kind, size, mtime_ns / 1e9 - 978307200.0 AS modified, taken, width, height, rating, problem,"
    u" volume FROM file JOIN folder ON folder.id = file.folder JOIN volume ON volume.id = folder.volume"
    u" WHERE kind IS NOT NULL";

// Version 1 kept absolute paths, which are paths on the startup volume; other volumes take theirs when they are
// imported. A new table, for the old one holds each path once.
constexpr const char16_t* kFromVersion1[] = {
    kMakeVolume,
    u"INSERT INTO volume (id, mount) VALUES (1, '')",
    u"DROP VIEW media",
    u"CREATE TABLE folder_2 ("
    u" id INTEGER PRIMARY KEY,"
    u" volume INTEGER NOT NULL REFERENCES volume (id),"
    u" path TEXT NOT NULL,"
    u" UNIQUE (volume, path))",
    u"INSERT INTO folder_2 (id, volume, path) SELECT id, 1, path FROM folder",
    u"DROP TABLE folder",
    u"ALTER TABLE folder_2 RENAME TO folder",
    kViewOfVersion2,
};

// What no version has made. A table that was renamed has its name in quotes; files had no given stars before version 3.
// The engine's own statistics do no harm.
constexpr const char16_t* kFindForeign =
    u"SELECT name FROM sqlite_master WHERE sql IS NOT NULL AND sql NOT LIKE 'CREATE TABLE sqlite@_stat%' ESCAPE '@'"
    u" AND replace(sql, '\"', '') NOT IN (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, replace(?3, ' given INTEGER,', ''))"
    u" ORDER BY name LIMIT 1";

constexpr std::string_view kOpenAction = "cannot open the catalogue";

void CheckWritable(const std::string& path)
{
    if (!IsEngineName(path) && access(path.c_str(), W_OK) != 0)
        ThrowSystemError("cannot write the catalogue", path, errno);
}

std::string CheckFile(const std::string& name, Catalog::Mode mode)
{
    if (IsEngineName(name))
        return EngineName(kOpenAction, name, mode == Catalog::Mode::Create);
    DatabaseFile file = LookAtDatabaseFile(kOpenAction, name);
    if (!file.exists && mode == Catalog::Mode::Existing)
        throw HostError(kOpenAction, file.path, "there is none; import a folder first");
    if (mode == Catalog::Mode::Create)
    {
        const std::string folder = std::filesystem::path(file.path).parent_path().string();
        std::error_code error;
        if (!std::filesystem::create_directories(folder, error) && error)
            throw HostError("cannot make the folder", folder, error.message());
        if (access(folder.c_str(), W_OK) != 0) // the engine's journal lies beside the catalogue
            ThrowSystemError("cannot write the catalogue's folder", folder, errno);
        if (file.exists)
            CheckWritable(file.path);
    }
    return std::move(file.path);
}

std::int32_t Number(Database& database, const char16_t* sql)
{
    return database.query(sql).row().get<std::int32_t>(0);
}
} // namespace

std::string Catalog::DefaultFile()
{
    const auto variable = [](const char* name)
    {
        const char* value = std::getenv(name);
        return std::string(value == nullptr ? "" : value);
    };
    std::string base = variable("XDG_DATA_HOME");
    if (base.empty() || base.front() != '/') // a relative one counts as unset
    {
        base = variable("HOME");
        if (base.empty())
            throw HostError(
                "cannot choose a catalogue: neither XDG_DATA_HOME nor HOME is set; name one with --catalog");
        base += "/.local/share";
    }
    return base + "/halyon/catalog.db";
}

Catalog::Catalog(const std::string& file, Mode mode)
try : m_database(CheckFile(file, mode))
{
    if (mode == Mode::Create && Number(m_database, u"PRAGMA application_id") == 0 &&
        Number(m_database, u"PRAGMA user_version") == 0)
        Create();
    CheckSchema();
    Upgrade();
    CheckVersion();
}
catch (const DatabaseError& failure)
{
    ThrowRefusal(kOpenAction, file, failure);
}

void ThrowRefusal(std::string_view action, const std::string& catalog, const DatabaseError& failure)
{
    constexpr std::uintmax_t kNoSpace = 1000000; // bytes that are left on a full disk
    std::string reason = failure.what();
    std::error_code error;
    const auto space = std::filesystem::space(catalog, error);
    if (!error && space.available < kNoSpace)
        reason += " (its disk is full)";
    const std::string journal = catalog + "-journal";
    const std::string folder = std::filesystem::absolute(catalog, error).parent_path().string();
    if (std::filesystem::exists(journal, error) &&
        (access(catalog.c_str(), W_OK) != 0 || access(folder.c_str(), W_OK) != 0))
        reason +=
            " (what a program that was killed left in " + journal + " can only be repaired by one that may write)";
    throw HostError(action, catalog, reason);
}

// A view, a trigger or an index that someone else has put in runs with what is done here, and could run for ever.
void Catalog::CheckSchema()
{
    if (Number(m_database, u"PRAGMA application_id") != kApplicationID ||
        Number(m_database, u"PRAGMA user_version") > kVersion)
        return; // it is refused for that
    Command find = m_database.prepare(kFindForeign);
    const Rows foreign = find.query(kMakeVolume, kMakeFolder, kMakeFile, kMakeThumbnail, kMakeTrigger, kMakeView,
                                    kFolderOfVersion1, kViewOfVersion1, kViewOfVersion2);
    if (foreign.at_end())
        return;
    const std::string name = PrintableText(foreign.row().get<std::optional<std::string>>(0).value_or(""));
    throw HostError(kOpenAction, m_database.File(), "it holds \"" + name + "\", which this program did not make so");
}

// The version of a catalogue that this program brings to its own; 0 when there is nothing to do.
std::int32_t Catalog::OldVersion()
{
    if (Number(m_database, u"PRAGMA application_id") != kApplicationID)
        return 0;
    const std::int32_t version = Number(m_database, u"PRAGMA user_version");
    return version >= 1 && version < kVersion ? version : 0;
}

void Catalog::Upgrade()
{
    if (OldVersion() == 0)
        return;
    CheckWritable(m_database.File());
    Transaction transaction(m_database);
    const std::int32_t version = OldVersion();
    if (version == 0) // another program was faster
        return;
    const auto execute = [this](std::span<const char16_t* const> statements)
    {
        for (const char16_t* sql : statements)
            m_database.execute(sql);
    };
    if (version == 1)
        execute(kFromVersion1);
    execute(kFromVersion2);
    transaction.Commit();
}

void Catalog::CheckVersion()
{
    const std::int32_t version = Number(m_database, u"PRAGMA user_version");
    if (Number(m_database, u"PRAGMA application_id") != kApplicationID)
        throw HostError(kOpenAction, m_database.File(), "it is a database of something else");
    if (version != kVersion)
        throw HostError(kOpenAction, m_database.File(),
                        "it is of version " + std::to_string(version) + ", this program knows " +
                            std::to_string(kVersion));
}

void Catalog::Create()
{
    // UTF-8 sorts by code point and halves the file; the wide interface would make it UTF-16. Set before anything is
    // stored, it is no part of the transaction.
    m_database.execute(u"PRAGMA encoding = 'UTF-8'");
    Transaction transaction(m_database);
    // Another program may have been faster, and a database with tables of its own is none of ours. A statement that was
    // prepared by what the engine knew of the tables before fails and has it learn anew.
    constexpr const char16_t* kCountTables = u"SELECT count(*) FROM sqlite_master";
    static_cast<void>(m_database.try_execute(kCountTables));
    if (Number(m_database, kCountTables) == 0)
    {
        for (const char16_t* sql : kSchema)
            m_database.execute(sql);
    }
    transaction.Commit();
}
} // namespace HynHost
