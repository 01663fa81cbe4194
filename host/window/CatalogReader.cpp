#include <host/window/CatalogReader.h>

#include <algorithm>
#include <array>
#include <unordered_map>
#include <utility>

#include <QString>

#include <halyon/tools/CHynPubTools.h>

namespace HynHost
{
namespace
{
using Halyon::CHynPubTools;

// As people compare: without regard to letter case, nor to how a letter and its mark are put together.
QString Folded(const std::string& text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()))
        .normalized(QString::NormalizationForm_KC)
        .toCaseFolded();
}

// Which names hold a text. Whether a folder's path does is found out once for all of its files.
class NameFilter
{
public:
    NameFilter(Database& database, const std::string& text) : m_text(Folded(text))
    {
        if (m_text.isEmpty())
            return;
        for (auto& row : database.query(u"SELECT folder.id, mount || path FROM folder"
                                        u" JOIN volume ON volume.id = folder.volume"))
            m_folders.emplace(row.get<long long>(0), row.get<std::optional<std::string>>(1).value_or(""));
        for (auto& [id, path] : m_folders)
            m_matches.emplace(id, Folded(path).contains(m_text));
    }

    [[nodiscard]] bool Passes(const Row& row, std::int32_t folder, std::int32_t name) const
    {
        if (m_text.isEmpty())
            return true;
        const auto matches = m_matches.find(row.get<long long>(folder));
        return (matches != m_matches.end() && matches->second) ||
               Folded(row.get<std::optional<std::string>>(name).value_or("")).contains(m_text);
    }

private:
    QString m_text;
    std::unordered_map<long long, std::string> m_folders;
    std::unordered_map<long long, bool> m_matches;
};

bool IsOfSort(MediaKind kind, MediaQuery::Sort sort)
{
    switch (sort)
    {
    case MediaQuery::Sort::Pictures:
        return IsPicture(kind);
    case MediaQuery::Sort::Films:
        return IsVideo(kind);
    case MediaQuery::Sort::Sounds:
        return !IsPicture(kind) && !IsVideo(kind);
    default:
        return true;
    }
}

std::uint32_t LocalDay(double seconds)
{
    FILETIME moment{};
    CHynPubTools::ConvertToFileTime(&moment, seconds);
    return CHynPubTools::ConvertFromFileTimeDW(&moment);
}

struct Found
{
    double taken = 0;
    MediaItem item;
};

MediaKind KindOf(const Row& row, std::int32_t column)
{
    std::array<char16_t, 8> wide{};
    std::array<char, 8> name{};
    std::size_t size = 0;
    if (Halyon::HynSucceeded(row.try_read(column, std::span<char16_t>(wide))))
    {
        for (; size < wide.size() && wide.at(size) != 0; ++size)
            name.at(size) = static_cast<char>(wide.at(size));
    }
    return MediaKindFromName({name.data(), size}).value_or(MediaKind::Jpeg);
}

int Stars(const Row& row, std::int32_t column)
{
    const auto stars = row.get<std::int32_t>(column);
    return stars >= 0 && stars <= 5 ? stars : -1;
}

std::string Text(const Row& row, std::int32_t column)
{
    return row.get<std::optional<std::string>>(column).value_or("");
}
} // namespace

FoundMedia FindMedia(Database& database, const MediaQuery& query)
{
    const Halyon::Client::Transaction view(database, Transaction::Kind::Read);
    const NameFilter names(database, query.name);
    std::vector<Found> found;
    std::size_t all = 0;
    for (auto& row : database.query(u"SELECT id, taken, kind, ifnull(given, ifnull(rating, -1)), problem IS NOT NULL,"
                                    u" folder, name FROM file WHERE kind IS NOT NULL"))
    {
        ++all;
        Found one{row.get<double>(1), {row.get<long long>(0), 0, KindOf(row, 2)}};
        one.item.stars = static_cast<std::int8_t>(Stars(row, 3));
        one.item.day = LocalDay(one.taken);
        row.read(4, one.item.broken);
        if (IsOfSort(one.item.kind, query.sort) && (query.leastStars <= 0 || one.item.stars >= query.leastStars) &&
            one.item.day >= query.firstDay && (query.lastDay == 0 || one.item.day <= query.lastDay) &&
            names.Passes(row, 5, 6))
            found.push_back(one);
    }
    std::ranges::sort(found, [](const Found& a, const Found& b)
                      { return a.taken != b.taken ? a.taken > b.taken : a.item.id > b.item.id; });
    std::vector<MediaItem> items;
    items.reserve(found.size());
    for (const Found& one : found)
        items.push_back(one.item);
    return {std::make_shared<const MediaIndex>(std::move(items)), all};
}

std::optional<MediaDetails> ReadDetails(Database& database, const VolumePlaces& places, long long id)
{
    const Rows rows = database.query(u"SELECT path, kind, size, modified, taken, width, height, ifnull(rating, -1),"
                                     u" problem, volume FROM media WHERE id = ?",
                                     id);
    if (rows.at_end())
        return std::nullopt;
    const Row& row = rows.row();
    MediaDetails details;
    details.id = id;
    details.path = Text(row, 0);
    details.kind = Text(row, 1);
    row.read(2, details.size);
    row.read(3, details.modified);
    row.read(4, details.taken);
    row.read(5, details.width);
    row.read(6, details.height);
    details.stars = Stars(row, 7);
    details.problem = Text(row, 8);
    places.Correct(row.get<long long>(9), details.path);
    return details;
}

std::optional<StoredThumbnail> ReadThumbnail(Database& database, const VolumePlaces& places, long long id)
{
    const Rows rows = database.query(u"SELECT mount || path || name, kind, folder.volume, thumbnail.file IS NOT NULL,"
                                     u" image FROM file JOIN folder ON folder.id = file.folder"
                                     u" JOIN volume ON volume.id = folder.volume"
                                     u" LEFT JOIN thumbnail ON thumbnail.file = file.id AND thumbnail.size = file.size"
                                     u" AND thumbnail.mtime_ns = file.mtime_ns AND thumbnail.inode = file.inode"
                                     u" WHERE file.id = ? AND kind IS NOT NULL",
                                     id);
    if (rows.at_end())
        return std::nullopt;
    const Row& row = rows.row();
    StoredThumbnail thumbnail{Text(row, 0), KindOf(row, 1), row.get<bool>(3),
                              row.get<std::optional<std::vector<std::byte>>>(4).value_or(std::vector<std::byte>())};
    places.Correct(row.get<long long>(2), thumbnail.path);
    return thumbnail;
}

void StoreThumbnails(Database& database, const std::vector<MadeThumbnail>& thumbnails)
{
    Command store = database.prepare(u"INSERT OR REPLACE INTO thumbnail (file, size, mtime_ns, inode, image)"
                                     u" SELECT id, size, mtime_ns, inode, ?2 FROM file WHERE id = ?1");
    for (const MadeThumbnail& made : thumbnails)
    {
        if (made.image.empty())
            store.execute(made.id, std::nullopt);
        else
            store.execute(made.id, made.image);
    }
}
} // namespace HynHost
