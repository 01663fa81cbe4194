// Catalogues that are damaged, or made by someone who means ill: the host's commands either work or throw what its
// user is told.

#include <array>

#include <dlfcn.h>

#include <CLI/CLI.hpp>
#include <sqlite3.h>

#include <host/Catalog.h>
#include <host/HostError.h>
#include <host/ImportCommand.h>
#include <host/ListCommand.h>
#include <host/SqlCommand.h>
#include <tests/support/TempFolder.h>

#include "Input.h"

using HalyonFuzz::Hold;

namespace
{
constexpr const char* kRows = "INSERT INTO volume VALUES (11, '/disk', NULL), (12, '/gone', 'uuid'), (13, '', 'root');"
                              "INSERT INTO folder VALUES (11, 11, '/a/'), (12, 12, '/b/'), (13, 13, '/home/');"
                              "INSERT INTO file VALUES (11, 11, 'x.jpg', 10, 1, 1, 'JPEG', 1e8, 4, 3, 5, NULL, 2),"
                              " (12, 12, 'y.mp4', 2000000, 2, 2, 'MPEG', -1e9, NULL, NULL, NULL, 'cut short', NULL),"
                              " (13, 13, 'z.txt', 1, 3, 3, NULL, NULL, NULL, NULL, NULL, NULL, NULL)";

// What SQL can make of a catalogue, in bounded time and without other files.
void ChangeBySql(const std::string& file, const std::string& sql)
{
    sqlite3* database = nullptr;
    Hold(sqlite3_open(file.c_str(), &database) == SQLITE_OK, "the catalogue opens");
    int left = 200;
    sqlite3_progress_handler(
        database, 100, [](void* count) { return --*static_cast<int*>(count) <= 0 ? 1 : 0; }, &left);
    sqlite3_limit(database, SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_limit(database, SQLITE_LIMIT_LENGTH, 100000);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
    sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr);
    sqlite3_close(database);
}

struct Place
{
    Place()
    {
        setenv("HALYON_MODULE", HALYON_MODULE_FILE, 1);
        // The commands let go of the module each time; a fuzzer's counters in it must stay.
        Hold(dlopen(HALYON_MODULE_FILE, RTLD_NOW | RTLD_NODELETE) != nullptr, "the module loads");
        std::filesystem::create_symlink("catalog.db", link);
        std::filesystem::create_directory(folder.Path() / "media");
        folder.Write("media/a.txt");
        folder.Write("media/b.jpg", "\xFF\xD8\xFF");
        const HynHost::Catalog made(base, HynHost::Catalog::Mode::Create);
        ChangeBySql(base, kRows);
        std::ifstream stream(base, std::ios::binary);
        baseBytes.assign(std::istreambuf_iterator<char>(stream), {});
        Hold(std::freopen("/dev/null", "w", stdout) != nullptr, "what the commands print goes nowhere");
    }

    HalyonTest::TempFolder folder;
    std::string base = (folder.Path() / "base.db").native();
    std::string file = (folder.Path() / "catalog.db").native();
    std::string link = (folder.Path() / "link.db").native();
    std::string baseBytes;
};

// Single bytes of it: where, twice eight bits, and what.
std::string Damaged(std::string bytes, HalyonFuzz::Input& input)
{
    while (!input.IsEmpty())
    {
        const auto at = input.Take<std::uint16_t>();
        bytes[at % bytes.size()] = static_cast<char>(input.Take<std::uint8_t>());
    }
    return bytes;
}

void Run(const std::string& line)
{
    CLI::App app;
    HynHost::AddListCommand(app);
    HynHost::AddSqlCommand(app);
    HynHost::AddImportCommand(app);
    try
    {
        app.parse(line);
    }
    catch (const CLI::ParseError&)
    {
        Hold(false, "the command line can be read");
    }
    catch (const std::runtime_error& failure)
    {
        Hold(*failure.what() != '\0', "a refusal says why");
    }
}
// Makes the catalogue of an input; returns its name.
std::string Make(const Place& place, unsigned how, HalyonFuzz::Input& input)
{
    for (const char* suffix : {"", "-journal", "-wal", "-shm"})
        std::filesystem::remove(place.file + suffix);
    std::string bytes = place.baseBytes;
    if (how % 4 == 1)
        bytes = Damaged(bytes, input);
    else if (how % 4 == 2)
        bytes = input.TakeRest();
    std::ofstream(place.file, std::ios::binary) << bytes;
    if (how % 4 == 0)
        ChangeBySql(place.file, std::string(input.TakeRest()));
    else if (how % 4 == 3) // what a program that broke off would have left
        std::ofstream(place.file + "-journal", std::ios::binary) << input.TakeRest();
    return (how & 8) == 0 ? place.file : place.link;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Place place;
    HalyonFuzz::Input input(data, size);
    const auto how = input.Take<std::uint8_t>();
    const std::string catalog = Make(place, how, input);
    constexpr std::array<const char*, 5> kLists = {"", "--by day ", "--by folder ", "--by kind ", "--by size "};
    Run("list --limit 3 " + std::string(kLists[how / 16 % kLists.size()]) + "--catalog " + catalog);
    Run("sql --json " + catalog + " 'PRAGMA integrity_check(3); PRAGMA table_info(file); SELECT * FROM file LIMIT 9'");
    if ((how & 4) != 0) // takes its time: threads and the recognition of files
        Run("import --jobs 1 --catalog " + catalog + " " + (place.folder.Path() / "media").native());
    return 0;
}
