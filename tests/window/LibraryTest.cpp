// A catalogue behind a window: what is searched, shown, given and taken away.

#include <algorithm>

#include <tests/window/LibraryFixture.h>

namespace HalyonTest
{
using namespace HynHost;

using LibraryTest = LibraryFixture;

TEST_F(LibraryTest, SearchNarrowsByNameSortDayAndStars)
{
    ASSERT_TRUE(Shows(Import(CopySamples()).out, "37 new"));
    UntilIndexAfter([this] { OpenLibrary(); });
    EXPECT_EQ(m_told.opened, std::vector{true});
    ASSERT_EQ(m_told.index->Items().size(), 37u);
    EXPECT_EQ(m_told.index->Items().front().day, 20241231u);

    struct Case
    {
        const char* what;
        MediaQuery query;
        std::size_t count;
        std::uint32_t latest;
    };
    const Case cases[] = {
        {"a name in another case", {"FIREWORKS"}, 3, 20240704},
        {"a folder", {"alps/raw"}, 1, 0},
        {"other letters", {"à NOITE"}, 1, 0},
    };
    for (const Case& one : cases)
    {
        UntilIndexAfter([&] { m_library->Search(one.query); });
        EXPECT_EQ(m_told.index->Items().size(), one.count) << one.what;
        EXPECT_EQ(m_told.all, 37u);
    }
}

TEST_F(LibraryTest, ThumbnailsAreMadeOnceAndKept)
{
    ASSERT_TRUE(Shows(Import(CopySamples()).out, "37 new"));
    UntilIndexAfter([this] { OpenLibrary(); });
    std::vector<long long> ids;
    for (const MediaItem& item : m_told.index->Items())
        ids.push_back(item.id);
    m_library->WantThumbnails(ids);
    Until("found", [&] { return m_told.thumbnails.size() == ids.size(); });
    const std::string pictures =
        Query("SELECT count(*) FROM file WHERE kind IN ('JPEG', 'PNG', 'GIF', 'TIFF', 'WebP', 'HEIF')");
    Until("stored", [&] { return Query("SELECT count(*) FROM thumbnail") == pictures; });
    m_library->WantDetails(ids.front());
    Until("told", [&] { return !m_told.details.empty(); });
    EXPECT_EQ(m_told.details.front().path, Path("media/2024-12 Merzouga/new year.jpg"));
}
} // namespace HalyonTest
