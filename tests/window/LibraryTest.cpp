// A catalogue behind a window: what is searched, shown, given, and taken away and brought back.

#include <algorithm>
#include <filesystem>
#include <fstream>

#include <QBuffer>

#include <tests/window/LibraryFixture.h>

namespace HalyonTest
{
using namespace HynHost;
namespace fs = std::filesystem;

using LibraryTest = LibraryFixture;

namespace
{
// What a camera writes in front of its picture: who made it, and that it was held upright (6: a quarter to the right).
constexpr unsigned char kExif[] = {
    0xFF, 0xE1, 0,   82,  'E', 'x', 'i', 'f', 0,   0,                       // the block and its size
    'I',  'I',  42,  0,   8,   0,   0,   0,                                 // little-endian, the table follows
    3,    0,                                                                // its entries
    0x0F, 1,    2,   0,   12,  0,   0,   0,   50,  0,   0,   0,             // the maker, 12 bytes of text at 50
    0x10, 1,    2,   0,   12,  0,   0,   0,   62,  0,   0,   0,             // the model at 62
    0x12, 1,    3,   0,   1,   0,   0,   0,   6,   0,   0,   0, 0, 0, 0, 0, // how it was held
    'N',  'I',  'K', 'O', 'N', ' ', 'C', 'O', 'R', 'P', ' ', 0,             //
    'N',  'i',  'k', 'o', 'n', ' ', 'D', '4', '0', ' ', ' ', 0,
};

void WritePicture(const fs::path& file, int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    ASSERT_TRUE(image.save(&buffer, "JPG"));
    const std::string bytes = buffer.data().toStdString();
    std::ofstream(file, std::ios::binary)
        << bytes.substr(0, 2) << std::string(std::begin(kExif), std::end(kExif)) << bytes.substr(2);
}

using Sort = MediaQuery::Sort;
} // namespace

TEST_F(LibraryTest, SearchNarrowsByNameSortDayAndStars)
{
    ASSERT_TRUE(Shows(Import(CopySamples()).out, "37 new"));
    UntilIndexAfter([this] { OpenLibrary(); });
    EXPECT_EQ(m_told.opened, std::vector{true});
    const auto items = m_told.index->Items();
    ASSERT_EQ(items.size(), 37u);
    EXPECT_TRUE(std::ranges::is_sorted(items, std::ranges::greater(), &MediaItem::day));
    EXPECT_EQ(NameOf(items.front().id), "new year.jpg\n");
    UntilIndexAfter([this] { m_library->Rate({IdOf("dunes.jpg"), IdOf("fado.mp3")}, 4); });

    struct Case
    {
        MediaQuery query;
        const char* sql; // the same of a catalogue whose days are those of UTC
    };
    const Case cases[] = {
        {{"FIREworks", Sort::All, 0, 0, 0}, "name LIKE 'fireworks%'"},
        {{"alps/RAW", Sort::All, 0, 0, 0}, "path LIKE '%alps/raw%'"},
        {{"Farol A\u0300 NOITE", Sort::All, 0, 0, 0}, "name = 'farol à noite.webp'"},
        {{"100%_", Sort::All, 0, 0, 0}, "0"},
        {{"", Sort::Pictures, 0, 0, 0}, "kind IN ('JPEG', 'PNG', 'GIF', 'TIFF', 'WebP', 'HEIF')"},
        {{"", Sort::Films, 0, 0, 0}, "kind IN ('MP4', 'MOV', 'MKV')"},
        {{"", Sort::Sounds, 0, 0, 0}, "kind IN ('WAV', 'MP3', 'FLAC')"},
        {{"", Sort::All, 20240704, 0, 0}, "taken >= 741744000"},
        {{"", Sort::All, 0, 20240704, 0}, "taken < 741830400"},
        {{"", Sort::All, 0, 0, 4}, "rating >= 4"},
        {{"dunes", Sort::Pictures, 20240101, 20241231, 4}, "name = 'dunes.jpg'"},
    };
    for (const Case& one : cases)
    {
        UntilIndexAfter([&] { m_library->Search(one.query); });
        std::string found;
        for (const MediaItem& item : m_told.index->Items())
            found += std::to_string(item.id) + '\n';
        EXPECT_EQ(found, Query(std::string("SELECT id FROM media WHERE ") + one.sql + " ORDER BY taken DESC, id DESC"))
            << one.sql;
        EXPECT_EQ(m_told.all, 37u);
    }
}

TEST_F(LibraryTest, ImportedPicturesHaveThumbnailsAndGivenStarsOutlastTheNextReading)
{
    const auto media =
        CopySamples({"2024-12 Merzouga/dunes.jpg", "2024-07 New York/fireworks tall.jpg", "2024-03 Lisboa/fado.mp3",
                     "2024-03 Lisboa/azulejos.png", "Old album/cut short.jpg"});
    WritePicture(media / "wide.jpg", 4000, 1000);
    OpenLibrary();
    EXPECT_EQ(m_told.opened, std::vector{false}) << "no catalogue yet";
    EXPECT_EQ(RunImport(media).added, 6u);
    EXPECT_FALSE(m_told.progress.empty());
    const auto stored = [this](const std::string& name)
    {
        return Query("SELECT image IS NOT NULL FROM thumbnail JOIN file ON file.id = file AND file.mtime_ns ="
                     " thumbnail.mtime_ns WHERE name = '" +
                     name + "'");
    };
    EXPECT_EQ(stored("fado.mp3"), "");
    EXPECT_EQ(stored("wide.jpg"), "1\n");

    const long long wide = IdOf("wide.jpg");
    m_library->WantThumbnails({IdOf("fado.mp3"), wide});
    Until("found", [this] { return m_told.thumbnails.size() == 2; });
    EXPECT_TRUE(m_told.thumbnails[IdOf("fado.mp3")].front().isNull());
    EXPECT_EQ(m_told.thumbnails[wide].front().size(), QSize(80, 320)) << "upright";

    const auto stars = [this](long long id)
    {
        return int{m_told.index->Items().at(m_told.index->PlaceOf(id)).stars};
    };
    UntilIndexAfter([&] { m_library->Rate({wide}, 5); });
    EXPECT_EQ(stars(wide), 5);
    WritePicture(media / "wide.jpg", 500, 1000);
    EXPECT_EQ(RunImport(media).changed, 1u);
    EXPECT_EQ(stars(wide), 5);
    m_library->WantDetails(wide);
    Until("told", [this] { return !m_told.details.empty(); });
    EXPECT_EQ(m_told.details.back().stars, 5);
    EXPECT_EQ(m_told.details.back().width, 500);
    EXPECT_EQ(m_told.details.back().camera, "Nikon D40");
    EXPECT_TRUE(m_told.details.back().isThere);
    m_told.thumbnails.clear();
    m_library->WantThumbnails({wide});
    Until("found", [this] { return m_told.thumbnails.size() == 1; });
    EXPECT_EQ(m_told.thumbnails[wide].front().size(), QSize(320, 160)) << "that of the changed file";
    EXPECT_EQ(m_told.failures, std::vector<std::string>());
}

TEST_F(LibraryTest, ThumbnailsThatTheCatalogueLacksAreMadeOnceAndKept)
{
    const auto media = CopySamples({"2024-12 Merzouga/dunes.jpg", "Old album/cut short.jpg"});
    ASSERT_TRUE(Shows(Import(media).out, "2 new"));
    UntilIndexAfter([this] { OpenLibrary(); });
    m_library->WantThumbnails({IdOf("cut short.jpg"), IdOf("dunes.jpg")});
    Until("stored", [this] { return Query("SELECT count(*) FROM thumbnail") == "2\n"; });
    Until("found", [this] { return m_told.thumbnails.size() == 2; });
    const QImage made = m_told.thumbnails[IdOf("dunes.jpg")].front();
    fs::remove(media / "2024-12 Merzouga/dunes.jpg");
    m_told.thumbnails.clear();
    m_library->WantThumbnails({IdOf("dunes.jpg")});
    Until("found", [this] { return m_told.thumbnails.size() == 1; });
    EXPECT_EQ(m_told.thumbnails.begin()->second.front().size(), made.size()) << "without the file";
}

TEST_F(LibraryTest, WhatWentToTheTrashComesBackWithStarsAndThumbnail)
{
    const auto media = CopySamples({"2024-12 Merzouga/dunes.jpg", "2024-12 Merzouga/new year.jpg",
                                    "2024-12 Merzouga/dunes.gif", "2024-02 Sapporo/日本語 雪まつり.jpg"});
    OpenLibrary();
    ASSERT_EQ(RunImport(media).added, 4u);
    const long long dunes = IdOf("dunes.jpg");
    const long long snow = IdOf("日本語 雪まつり.jpg");
    m_library->Rate({snow}, 3);
    const auto rows = [this]
    {
        return Query("SELECT media.*, thumbnail.image FROM media LEFT JOIN thumbnail ON file = media.id"
                     " AND thumbnail.mtime_ns = (SELECT mtime_ns FROM file WHERE id = media.id) ORDER BY path");
    };
    const auto trash = [this](std::vector<long long> ids)
    {
        const std::size_t before = m_told.trashed.size() + m_told.failures.size();
        m_library->MoveToTrash(std::move(ids));
        Until("trashed", [&] { return m_told.trashed.size() + m_told.failures.size() > before; });
    };
    const auto undo = [this]
    {
        const std::size_t before = m_told.restored.size() + m_told.failures.size();
        m_library->UndoTrash();
        Until("undone", [&] { return m_told.restored.size() + m_told.failures.size() > before; });
    };

    UntilIndexAfter([&] { m_library->Rate({dunes}, -1); });
    const std::string before = rows();
    UntilIndexAfter([&] { trash({snow, dunes}); });
    EXPECT_EQ(m_told.index->Items().size(), 2u);
    EXPECT_FALSE(fs::exists(media / "2024-02 Sapporo/日本語 雪まつり.jpg"));
    EXPECT_EQ(RunImport(media).gone, 0u) << "its row has gone with it";
    trash({IdOf("new year.jpg")});
    fs::remove(media / "2024-02 Sapporo");
    EXPECT_EQ(m_told.trashed, (std::vector<std::size_t>{2, 1}));

    std::ofstream(media / "2024-12 Merzouga/new year.jpg") << "another";
    undo();
    EXPECT_TRUE(Shows(m_told.failures.back(), "new year.jpg: something else lies in its place"));
    EXPECT_EQ(fs::file_size(media / "2024-12 Merzouga/new year.jpg"), 7u);
    undo();
    EXPECT_EQ(m_told.restored, std::vector<std::size_t>{2});
    EXPECT_TRUE(m_library->CanUndoTrash()) << "the one that could not come";
    fs::remove(media / "2024-12 Merzouga/new year.jpg");
    undo();
    EXPECT_FALSE(m_library->CanUndoTrash());
    EXPECT_EQ(rows(), before);
    EXPECT_TRUE(fs::is_empty(Path(".local/share/Trash/info")));

    m_told.failures.clear();
    fs::remove_all(Path(".local/share/Trash"));
    std::ofstream(Path(".local/share/Trash")) << "no folder"; // also root cannot move anything there
    trash({dunes});
    EXPECT_TRUE(
        Shows(m_told.failures.at(0), "cannot move to the trash " + (media / "2024-12 Merzouga/dunes.jpg").string()));
    EXPECT_EQ(rows(), before);
    EXPECT_FALSE(m_library->CanUndoTrash());
}
} // namespace HalyonTest
