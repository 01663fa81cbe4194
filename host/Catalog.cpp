#include <host/Catalog.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

#include <unistd.h>

#include <host/DatabaseFile.h>
#include <host/HostError.h>

namespace HynHost
{
namespace
{
constexpr std::int32_t kApplicationID = 0x48796E43; // "HynC"
constexpr std::int32_t kVersion = 1;

constexpr const char16_t* kSchema[] = {
    u"CREATE TABLE folder (id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE)",
    u"CREATE TABLE file ("
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
    u" problem TEXT,"
    u" UNIQUE (folder, name))",
    // 978307200: from 1970 to 2001.
    u"CREATE VIEW media AS SELECT file.id AS id, folder.path || file.name AS path,"
    u" CASE folder.path WHEN '/' THEN '/' ELSE rtrim(folder.path, '/') END AS folder, file.name AS name, kind, size,"
    u" mtime_ns / 1e9 - 978307200.0 AS modified, taken, width, height, rating, problem"
    u" FROM file JOIN folder ON folder.id = file.folder WHERE kind IS NOT NULL",
    u"PRAGMA application_id = 1215917635",
    u"PRAGMA user_version = 1",
};

constexpr std::string_view kOpenAction = "cannot open the catalogue";

std::string CheckFile(const std::string& name, Catalog::Mode mode)
{
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
        if (file.exists && access(file.path.c_str(), W_OK) != 0)
            ThrowSystemError("cannot write the catalogue", file.path, errno);
    }
    return std::move(file.path);
}

std::int32_t Number(Database& database, const char16_t* sql)
{
    return database.Query(sql).Get<std::int32_t>(0);
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

Catalog::Catalog(const std::string& file, Mode mode) : m_database(CheckFile(file, mode))
{
    if (mode == Mode::Create && Number(m_database, u"PRAGMA application_id") == 0 &&
        Number(m_database, u"PRAGMA user_version") == 0)
        Create();
    CheckVersion();
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
    m_database.Execute(u"PRAGMA encoding = 'UTF-8'");
    Transaction transaction(m_database);
    // Another program may have been faster, and a database with tables of its own is none of ours.
    if (Number(m_database, u"SELECT count(*) FROM sqlite_master") == 0)
    {
        for (const char16_t* sql : kSchema)
            m_database.Execute(sql);
    }
    transaction.Commit();
}
} // namespace HynHost
