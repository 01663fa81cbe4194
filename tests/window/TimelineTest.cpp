// The timeline with many pictures: where everything lies, what it asks for, and what stays when the pictures change.
#include <tests/window/WindowFixture.h>

#include <fstream>
#include <regex>
#include <set>

#include <QScrollBar>

#include <nlohmann/json.hpp>

using namespace HynHost;
using namespace HalyonTest;

namespace
{
// `days` days with 1 to 9 items each; the numbers of the items count down from `lastId`.
std::shared_ptr<const MediaIndex> MakeIndex(std::size_t days, long long lastId)
{
    std::vector<MediaItem> items;
    for (std::size_t day = 0; day < days; ++day)
    {
        const auto date =
            static_cast<std::uint32_t>((2026 - day / 336) * 10000 + (12 - day / 28 % 12) * 100 + 28 - day % 28);
        for (std::size_t item = 0; item <= day * 7 % 9; ++item)
            items.push_back({lastId--, date, MediaKind::Jpeg, -1, false});
    }
    return std::make_shared<const MediaIndex>(std::move(items));
}

class TimelineTest : public WindowFixture
{
protected:
    TimelineTest() : m_view(*m_texts)
    {
        m_view.onWanted = [this](std::vector<long long> ids)
        {
            m_wanted = std::move(ids);
        };
        m_view.resize(800, 600);
        m_view.show();
    }

    TimelineView m_view;
    std::vector<long long> m_wanted;
};
} // namespace

TEST(TimelineLayoutTest, FindsEveryCellWhereItLies)
{
    for (const auto& [width, side] : {std::pair(900, 168), std::pair(300, 80), std::pair(60, 320)})
    {
        TimelineLayout layout;
        layout.Arrange(MakeIndex(400, 10000), width, side);
        const std::size_t count = layout.Index().Items().size();
        int bottom = 0;
        for (std::size_t item = 0; item < count; ++item)
        {
            const QRect cell = layout.CellOf(item);
            ASSERT_EQ(layout.ItemAt(cell.center()), item);
            ASSERT_EQ(layout.ItemAt(cell.topLeft() - QPoint(1, 1)), count);
            ASSERT_GE(cell.top(), bottom - layout.Side());
            ASSERT_LE(cell.right(), std::max(width - TimelineLayout::kMargin, layout.CellOf(0).right()));
            const auto range = layout.ItemsBetween(cell.top(), cell.bottom());
            ASSERT_TRUE(range.first <= item && item < range.last) << item;
            ASSERT_LE(range.last - range.first, static_cast<std::size_t>(layout.Columns()));
            const std::size_t below = layout.Below(item);
            ASSERT_TRUE(below == item ||
                        (layout.CellOf(below).top() > cell.top() && layout.CellOf(below).left() <= cell.left()));
            bottom = cell.bottom();
        }
        EXPECT_LE(bottom, layout.Height());
    }
}

TEST_F(TimelineTest, AsksOnlyForWhatIsInSightAndOneScreenAhead)
{
    m_view.SetIndex(MakeIndex(10000, 50000), TimelineView::Keep::Place);
    m_view.verticalScrollBar()->setValue(m_view.verticalScrollBar()->maximum() / 2);
    m_wanted.clear();
    Until("asked", [this] { return !m_wanted.empty(); });
    EXPECT_LT(m_wanted.size(), 60U);
    const QModelIndex first = m_view.indexAt(m_view.visualRect(m_view.model()->index(0, 0)).center());
    EXPECT_TRUE(first.isValid());
    const std::size_t place = m_view.Index().PlaceOf(m_wanted.front());
    EXPECT_TRUE(
        m_view.viewport()->rect().intersects(m_view.visualRect(m_view.model()->index(static_cast<int>(place), 0))));
    for (const long long id : std::vector<long long>(m_wanted))
        m_view.SetCell(id, QImage());
    m_wanted = {1};
    Until("content", [this] { return m_wanted.empty(); });
}

TEST_F(TimelineTest, WhatIsAtTheTopAndSelectedStaysWhenPicturesCome)
{
    const auto small = MakeIndex(3000, 20000);
    m_view.SetIndex(small, TimelineView::Keep::Place);
    m_view.verticalScrollBar()->setValue(20000);
    const int row = m_view.indexAt(QPoint(100, 300)).row();
    ASSERT_GE(row, 0);
    m_view.setCurrentIndex(m_view.model()->index(row, 0));
    const QRect place = m_view.visualRect(m_view.currentIndex());
    const long long id = m_view.CurrentId();

    std::vector<MediaItem> more(small->Items());
    for (MediaItem& added : std::vector<MediaItem>(200, {0, 20270101, MediaKind::Png, -1, false}))
    {
        added.id = 30000 + static_cast<long long>(more.size());
        more.insert(more.begin(), added);
    }
    m_view.SetIndex(std::make_shared<const MediaIndex>(std::move(more)), TimelineView::Keep::Place);
    EXPECT_EQ(m_view.visualRect(m_view.currentIndex()), place);
    EXPECT_EQ(m_view.CurrentId(), id);
    EXPECT_EQ(m_view.SelectedIds(), std::vector<long long>{id});
}

TEST(TextsTest, EveryLanguageHasTheSameTextsWithTheSamePlaces)
{
    const auto read = [](const std::string& language)
    {
        std::ifstream file(std::string(RESOURCES "/") + language + ".lproj/texts.json");
        return nlohmann::json::parse(file);
    };
    const auto places = [](const nlohmann::json& text)
    {
        std::multiset<std::string> found;
        const std::string form = text.is_object() ? text.at("other") : text;
        const std::regex place("\\{[a-z]+\\}");
        for (auto at = std::sregex_iterator(form.begin(), form.end(), place); at != std::sregex_iterator(); ++at)
            found.insert(at->str());
        return found;
    };
    const nlohmann::json english = read("en");
    ASSERT_GT(english.size(), 50U);
    for (const std::string language : {"de", "ja"})
    {
        const nlohmann::json other = read(language);
        EXPECT_EQ(other.size(), english.size());
        for (const auto& [key, text] : english.items())
        {
            ASSERT_TRUE(other.contains(key)) << language << " " << key;
            EXPECT_EQ(places(other.at(key)), places(text)) << language << " " << key;
            EXPECT_EQ(other.at(key).is_object(), text.is_object()) << language << " " << key;
        }
    }
}

TEST(TextsTest, SpeaksTheUsersLanguage)
{
    struct Case
    {
        const char* locale;
        const char* day;
        const char* count;
        const char* size;
    };
    for (const Case& of : {Case{"en_GB.UTF-8", "Saturday, 21 November 2026", "1 item", "1.43 MB"},
                           Case{"de_DE.UTF-8", "Samstag, 21. November 2026", "1 Aufnahme", "1,43 MB"},
                           Case{"ja_JP.UTF-8", "2026年11月21日土曜日", "1件", "1.43 MB"},
                           Case{"C", "Saturday, 21 November 2026", "1 item", "1.43 MB"}})
    {
        Environment environment;
        environment.Set("LC_ALL", of.locale);
        environment.Set("LANG", of.locale);
        environment.Set("LANGUAGE", nullptr);
        const Texts texts;
        EXPECT_EQ(texts.Day(20261121).toStdString(), of.day) << of.locale;
        EXPECT_EQ(texts.Count("count", 1).toStdString(), of.count) << of.locale;
        EXPECT_EQ(texts.Size(1500000).toStdString(), of.size) << of.locale;
    }
}
