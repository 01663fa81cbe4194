#include <host/ListCommand.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

#include <CLI/CLI.hpp>

#include <halyon/tools/CHynPubTools.h>
#include <host/Catalog.h>
#include <host/CatalogVolumes.h>
#include <host/NumberText.h>
#include <host/Terminal.h>
#include <host/TextTable.h>

using Halyon::CHynPubTools;

namespace HynHost
{
namespace
{
using Align = TextTable::Align;

struct Options
{
    std::string by;
    std::string catalog;
    std::size_t limit = std::numeric_limits<std::size_t>::max();
};

struct Medium
{
    std::string path;
    std::string folder;
    std::string kind;
    long long size = 0;
    FILETIME taken{};
    std::int32_t width = 0; // 0: not known
    std::int32_t height = 0;
    std::int32_t rating = -1; // -1: none
    bool problem = false;
    bool absent = false; // its volume is not mounted now
};

// The greatest or the smallest number where the sum is none: a catalogue may claim any sizes.
long long Sum(long long a, long long b)
{
    long long sum = 0;
    if (!__builtin_add_overflow(a, b, &sum))
        return sum;
    return a < 0 ? std::numeric_limits<long long>::min() : std::numeric_limits<long long>::max();
}

// What is counted over the files of a group, or over all. They come with the latest first.
struct Totals
{
    void Add(const Medium& medium)
    {
        last = files == 0 ? medium.taken : last;
        first = medium.taken;
        if (files == 0 || medium.size > largestSize)
        {
            largestSize = medium.size;
            largestPath = medium.path;
        }
        ++files;
        bytes = Sum(bytes, medium.size);
        problems += medium.problem ? 1 : 0;
        absent += medium.absent ? 1 : 0;
    }

    long long files = 0;
    long long bytes = 0;
    long long problems = 0;
    long long absent = 0;
    FILETIME first{}; // by the moment taken
    FILETIME last{};
    long long largestSize = 0;
    std::string largestPath;
};

std::string LocalText(const char16_t* format, const FILETIME& moment)
{
    return CHynPubTools::FileTimeToString(format, &moment).ToUTF8();
}

std::string LocalDay(const FILETIME& moment)
{
    return LocalText(u"%04d-%02d-%02d", moment);
}

// The time of day. A format takes the date first, whether it is wanted or not.
std::string LocalTime(const FILETIME& moment)
{
    const std::string whole = LocalText(u"%04d-%02d-%02d %02d:%02d:%02d", moment);
    return whole.substr(whole.find(' ') + 1);
}

std::string Weekday(const FILETIME& moment)
{
    constexpr std::array<const char*, 7> kNames = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    std::uint32_t year = 0;
    std::uint32_t month = 0;
    std::uint32_t day = 0;
    CHynPubTools::GetDateFromFileTime(&moment, year, month, day);
    return kNames.at(CHynPubTools::GetDayofweek(static_cast<std::uint16_t>(year), static_cast<std::uint16_t>(month),
                                                static_cast<std::uint16_t>(day)));
}

// Puts right where a medium lies whose paths are those of its last import.
void Correct(const VolumePlaces& places, long long volume, Medium& medium)
{
    medium.absent = !places.IsHere(volume);
    places.Correct(volume, medium.path);
    places.Correct(volume, medium.folder);
    if (medium.folder.ends_with('/') && medium.folder.size() > 1) // it was the root folder
        medium.folder.pop_back();
}

template <class Visit>
void ForEachMedium(Catalog& catalog, Visit visit)
{
    const VolumePlaces places(catalog.GetDatabase());
    const auto text = [](const Row& row, std::int32_t column)
    {
        return row.get<std::optional<std::string>>(column).value_or("");
    };
    Medium medium;
    for (auto& row : catalog.GetDatabase().query(u"SELECT path, folder, kind, size, taken, width, height,"
                                                 u" ifnull(rating, -1), problem IS NOT NULL, volume"
                                                 u" FROM media ORDER BY taken DESC, path"))
    {
        medium.path = text(row, 0);
        medium.folder = text(row, 1);
        medium.kind = text(row, 2);
        row.read(3, medium.size);
        row.read(4, medium.taken);
        row.read(5, medium.width);
        row.read(6, medium.height);
        row.read(7, medium.rating);
        row.read(8, medium.problem);
        Correct(places, row.get<long long>(9), medium);
        visit(medium);
    }
}

void Print(const TextTable& table, const Totals& all, std::size_t shown, std::size_t count, const char* noun)
{
    std::fputs(table.Text(TerminalWidth(STDOUT_FILENO)).c_str(), stdout);
    if (shown < count)
        std::printf("%s of %s %s are shown; the total counts all.\n", NumberText(shown).c_str(),
                    NumberText(count).c_str(), noun);
    if (all.problems != 0)
        std::printf("%s of these files could not be read wholly.\n", NumberText(all.problems).c_str());
    if (all.absent != 0)
        std::printf("%s of these files are on a disk that is not here now; their paths are those of its last import.\n",
                    NumberText(all.absent).c_str());
}

// --- one line a file -------------------------------------------------------------------------------------------------

std::string Pixels(const Medium& medium)
{
    if (medium.width == 0 || medium.height == 0)
        return {};
    return std::to_string(medium.width) + "x" + std::to_string(medium.height);
}

std::string Stars(const Medium& medium)
{
    return std::string(static_cast<std::size_t>(std::clamp(medium.rating, 0, 5)), '*');
}

void ListFiles(Catalog& catalog, std::size_t limit)
{
    TextTable table({{"Taken"},
                     {"Kind"},
                     {"Bytes", Align::Right},
                     {"Pixels", Align::Right},
                     {"Stars"},
                     {"Path", Align::Left, true}});
    Totals all;
    ForEachMedium(catalog,
                  [&](const Medium& medium)
                  {
                      all.Add(medium);
                      if (std::cmp_less_equal(all.files, limit))
                          table.AddRow({LocalDay(medium.taken) + " " + LocalTime(medium.taken), medium.kind,
                                        NumberText(medium.size), Pixels(medium), Stars(medium), medium.path});
                  });
    table.AddRule();
    table.AddRow({"Total " + NumberText(all.files) + (all.files == 1 ? " file" : " files"), "", NumberText(all.bytes)});
    const auto count = static_cast<std::size_t>(all.files);
    Print(table, all, std::min(limit, count), count, "files");
}

// --- one line a group ------------------------------------------------------------------------------------------------

// Groups by a key that sorts them.
template <class Key>
struct Grouping
{
    const char* noun;
    std::vector<TextTable::Column> columns; // one for the group's name, files, bytes, and more
    Key (*keyOf)(const Medium&);
    std::vector<std::string> (*cellsOf)(const Key&, const Totals&);
};

template <class Key>
void ListGroups(Catalog& catalog, std::size_t limit, Grouping<Key> grouping)
{
    std::map<Key, Totals> groups;
    Totals all;
    ForEachMedium(catalog,
                  [&](const Medium& medium)
                  {
                      all.Add(medium);
                      groups[grouping.keyOf(medium)].Add(medium);
                  });
    TextTable table(std::move(grouping.columns));
    std::size_t shown = 0;
    for (const auto& [key, totals] : groups)
    {
        if (shown == limit)
            break;
        table.AddRow(grouping.cellsOf(key, totals));
        ++shown;
    }
    table.AddRule();
    table.AddRow({"Total", NumberText(all.files), NumberText(all.bytes)});
    Print(table, all, shown, groups.size(), grouping.noun);
}

Grouping<std::int64_t> ByDay()
{
    return {"days",
            {{"Day"}, {"Files", Align::Right}, {"Bytes", Align::Right}, {"First"}, {"Last"}},
            [](const Medium& medium) { // the latest day first
                return -static_cast<std::int64_t>(CHynPubTools::ConvertFromFileTimeDW(&medium.taken));
            },
            [](const std::int64_t&, const Totals& totals) -> std::vector<std::string>
            {
                return {LocalDay(totals.first) + " " + Weekday(totals.first), NumberText(totals.files),
                        NumberText(totals.bytes), LocalTime(totals.first), LocalTime(totals.last)};
            }};
}

Grouping<std::string> ByFolder()
{
    return {"folders",
            {{"Folder", Align::Left, true}, {"Files", Align::Right}, {"Bytes", Align::Right}, {"From"}, {"To"}},
            [](const Medium& medium) { return medium.folder; },
            [](const std::string& folder, const Totals& totals) -> std::vector<std::string>
            {
                return {folder, NumberText(totals.files), NumberText(totals.bytes), LocalDay(totals.first),
                        LocalDay(totals.last)};
            }};
}

Grouping<std::string> ByKind()
{
    return {"kinds",
            {{"Kind"}, {"Files", Align::Right}, {"Bytes", Align::Right}, {"Largest", Align::Left, true}},
            [](const Medium& medium) { return medium.kind; },
            [](const std::string& kind, const Totals& totals) -> std::vector<std::string>
            {
                return {kind, NumberText(totals.files), NumberText(totals.bytes), totals.largestPath};
            }};
}

// Powers of ten, from 1,000 bytes on.
Grouping<long long> BySize()
{
    return {"sizes",
            {{"Size"}, {"Files", Align::Right}, {"Bytes", Align::Right}, {"Largest", Align::Left, true}},
            [](const Medium& medium)
            {
                long long above = 1000;
                while (above <= medium.size / 10)
                    above *= 10;
                return medium.size < above ? 0 : above;
            },
            [](const long long& from, const Totals& totals) -> std::vector<std::string>
            {
                return {from == 0 ? "below " + NumberText(1000) : "from " + NumberText(from), NumberText(totals.files),
                        NumberText(totals.bytes), totals.largestPath};
            }};
}

void RunList(const Options& options)
{
    Catalog catalog(options.catalog.empty() ? Catalog::DefaultFile() : options.catalog, Catalog::Mode::Existing);
    if (options.by == "day")
        ListGroups(catalog, options.limit, ByDay());
    else if (options.by == "folder")
        ListGroups(catalog, options.limit, ByFolder());
    else if (options.by == "kind")
        ListGroups(catalog, options.limit, ByKind());
    else if (options.by == "size")
        ListGroups(catalog, options.limit, BySize());
    else
        ListFiles(catalog, options.limit);
}
} // namespace

void AddListCommand(CLI::App& app)
{
    auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("list", "Show what the catalogue holds, the latest first");
    command->add_option("--by", options->by, "One line for each local day, folder, kind or size, not for each file")
        ->check(CLI::IsMember({"day", "folder", "kind", "size"}));
    command->add_option("--limit", options->limit, "Show at most so many lines")->type_name("N");
    command->add_option("--catalog", options->catalog, "The catalogue file")->type_name("FILE");
    command->callback([options] { RunList(*options); });
}
} // namespace HynHost
