#include <host/Catalog.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

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

// The engine's own complaint about a foreign file would be a bare code, so the first bytes are looked at here.
std::string CheckFile(const std::string& file, Catalog::Mode mode)
{
    constexpr std::string_view kMagic("SQLite format 3\0", 16);
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (!std::filesystem::exists(status))
    {
        if (error && error != std::errc::no_such_file_or_directory)
            throw HostError("cannot open the catalogue", file, error.message());
        if (mode == Catalog::Mode::Existing)
            throw HostError("cannot open the catalogue", file, "there is none; import a folder first");
        const auto folder = std::filesystem::absolute(file).parent_path();
        if (!std::filesystem::create_directories(folder, error) && error)
            throw HostError("cannot make the folder", folder.string(), error.message());
        return file;
    }
    if (!std::filesystem::is_regular_file(status))
        throw HostError("cannot open the catalogue", file, "it is not a regular file");
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw HostError("cannot open the catalogue", file, "it cannot be read");
    std::array<char, kMagic.size()> head{};
    stream.read(head.data(), head.size());
    if (stream.gcount() != 0 && std::string_view(head.data(), head.size()) != kMagic)
        throw HostError("cannot open the catalogue", file, "it is not a database");
    return file;
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
        throw HostError("cannot open the catalogue", m_database.File(), "it is a database of something else");
    if (version != kVersion)
        throw HostError("cannot open the catalogue", m_database.File(),
                        "it is of version " + std::to_string(version) + ", this program knows version " +
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
