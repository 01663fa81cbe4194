// Journeys through the organiser's window.
#include <tests/window/WindowFixture.h>

#include <filesystem>

#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>

#include <host/window/ImportBar.h>
#include <host/window/YearBar.h>

using namespace HynHost;
using namespace HalyonTest;

namespace
{
constexpr std::size_t kSamples = 37; // media among the samples

class WindowTest : public WindowFixture
{
protected:
    // A window on the samples, imported by the host before.
    void OpenSamples()
    {
        m_media = CopySamples();
        ASSERT_EQ(Import(m_media).status, 0);
        OpenWindow();
        UntilItems(kSamples);
    }

    std::filesystem::path m_media;
};
} // namespace

TEST_F(WindowTest, FirstStartTakesADroppedFolderAndShowsItsPictures)
{
    OpenWindow();
    EXPECT_EQ(Find<QPushButton>("emptyAction").text(), "Choose a folder…");
    EXPECT_FALSE(std::filesystem::exists(Catalog()));
    Drop(CopySamples());
    UntilItems(kSamples);
    Until("said", [this] { return !Message().empty(); });
    EXPECT_EQ(Message(), "37 items added. 1 file could not be read wholly.");
    EXPECT_FALSE(Find<ImportBar>("importBar").isVisible());
    Until("drawn", [this] { return Timeline().HasPictureInSight(); });
}

TEST_F(WindowTest, SaysInTheWindowWhyAFolderIsRefusedAndTakesTheNext)
{
    OpenWindow();
    Drop("/usr");
    Until("refused", [this] { return !Message().empty(); });
    EXPECT_EQ(Message(), "“usr” was not added: it belongs to the system.");
    EXPECT_FALSE(std::filesystem::exists(Catalog()));
    Drop(CopySamples({"2024-03 Lisboa/azulejos.png", "2024-03 Lisboa/farol.tif"}));
    UntilItems(2);
}

TEST_F(WindowTest, CancelEndsAnImportAndKeepsWhatItHasStored)
{
    const auto picture = CopySamples() / "2024-02 Sapporo/last tram.jpg";
    std::filesystem::create_directories(Path("many"));
    for (int copy = 0; copy < 2000; ++copy)
        std::filesystem::create_hard_link(picture, Path("many") / (std::to_string(copy) + ".jpg"));
    OpenWindow();
    Drop(Path("many"));
    Until("importing", [this] { return Find<ImportBar>("importBar").isVisible(); });
    QTest::mouseClick(&Find<QPushButton>("importCancel"), Qt::LeftButton);
    Until("cancelled", [this] { return !Message().empty(); });
    const std::string said = Message();
    EXPECT_FALSE(Find<ImportBar>("importBar").isVisible());
    CloseWindow();
    OpenWindow();
    EXPECT_LT(Count(), 2000U);
    EXPECT_EQ(said, m_texts->Count("import.cancelled", static_cast<long long>(Count())).toStdString());
}

TEST_F(WindowTest, SearchNarrowsByNameAndEscapeBringsEverythingBack)
{
    OpenSamples();
    QTest::keyClick(m_window.get(), Qt::Key_F, Qt::ControlModifier);
    auto& text = Find<QLineEdit>("searchText");
    Until("focused", [&] { return m_window->focusWidget() == &text; });
    QTest::keyClicks(&text, "burst");
    UntilItems(3);
    QTest::keyClicks(&text, " that nobody took");
    UntilItems(0);
    EXPECT_TRUE(Find<QPushButton>("emptyAction").isVisible());
    EXPECT_EQ(Find<QPushButton>("emptyAction").text(), "Clear search");
    QTest::keyClick(&text, Qt::Key_Escape);
    UntilItems(kSamples);
    EXPECT_EQ(text.text(), "");
}

TEST_F(WindowTest, KeysRateWhatIsSelectedForGood)
{
    OpenSamples();
    Timeline().setFocus();
    Press(Qt::Key_Home);
    Press(Qt::Key_Right, Qt::ShiftModifier);
    const std::vector<long long> rated = Timeline().SelectedIds();
    ASSERT_EQ(rated.size(), 2U);
    Press(Qt::Key_2);
    const auto stars = [&](long long id)
    {
        return Timeline().Index().Items()[Timeline().Index().PlaceOf(id)].stars;
    };
    Until("rated", [&] { return stars(rated[0]) == 2 && stars(rated[1]) == 2; });
    EXPECT_EQ(Timeline().SelectedIds(), rated);
    CloseWindow();
    OpenWindow();
    UntilItems(kSamples);
    EXPECT_EQ(stars(rated[0]), 2);
    EXPECT_EQ(stars(rated[1]), 2);
}

TEST_F(WindowTest, TellsOfTheSelectedPictureAndLetsItBeRatedThere)
{
    OpenSamples();
    m_window->resize(1200, 800);
    Click(Row(0));
    auto& pane = Find<DetailPane>("detailPane");
    Until("told", [&] { return pane.Details().id == Timeline().CurrentId(); });
    auto& stars = Find<StarRating>("detailStars");
    QTest::mouseClick(&stars, Qt::LeftButton, {}, QPoint(stars.width() - 10, 10));
    Until("rated", [this] { return Timeline().CurrentItem()->stars == 5; });
}

TEST_F(WindowTest, DeleteMovesToTheTrashAndUndoBringsBack)
{
    OpenSamples();
    Click(Row(3));
    Click(Row(5));
    QTest::keyClick(&Timeline(), Qt::Key_Left, Qt::ShiftModifier);
    ASSERT_EQ(Timeline().SelectedIds().size(), 2U);
    const long long next = Timeline().Index().Items()[6].id;
    Press(Qt::Key_Delete);
    UntilItems(kSamples - 2);
    EXPECT_EQ(Timeline().SelectedIds(), std::vector{next});
    Until("said", [this] { return !Message().empty(); });
    EXPECT_EQ(Message(), "2 items moved to the trash");
    const auto files = [this]
    {
        return std::ranges::count_if(std::filesystem::recursive_directory_iterator(m_media),
                                     [](const auto& entry) { return entry.is_regular_file(); });
    };
    const auto left = files();
    QTest::mouseClick(&Find<QPushButton>("messageAction"), Qt::LeftButton);
    UntilItems(kSamples);
    EXPECT_EQ(files(), left + 2);
    Until("said", [this] { return Message() == "2 items brought back"; });
}

TEST_F(WindowTest, RemembersItsSizeAndThePicturesSize)
{
    OpenSamples();
    m_window->resize(900, 600);
    Press(Qt::Key_Plus);
    const int side = Timeline().WantedSide();
    EXPECT_GT(side, TimelineView::kUsualSide);
    QTest::qWait(50); // the window manager answers
    const QSize size = m_window->size();
    CloseWindow();
    OpenWindow();
    EXPECT_EQ(Timeline().WantedSide(), side);
    EXPECT_EQ(m_window->size(), size);
}

TEST_F(WindowTest, MonthsAreGoneToByMouseAndKeys)
{
    OpenSamples();
    m_window->resize(900, 500);
    auto& years = *m_window->findChild<YearBar*>(QStringLiteral("yearBar"));
    const auto& months = Timeline().Index().Months();
    ASSERT_GT(months.size(), 3U);
    QTest::mouseClick(&years, Qt::LeftButton, {}, years.PlaceOf(2));
    EXPECT_EQ(Timeline().DayInSight() / 100, months[2].month);
    QTest::keyClick(&years, Qt::Key_Up);
    EXPECT_EQ(Timeline().DayInSight() / 100, months[1].month);
    QTest::keyClick(&years, Qt::Key_Home);
    EXPECT_EQ(Timeline().DayInSight() / 100, months[0].month);
}

TEST_F(WindowTest, SaysWhatIsWrongWithABrokenCatalogue)
{
    std::ofstream(Catalog()) << std::string(4096, 'x');
    OpenWindow();
    EXPECT_EQ(Find<QPushButton>("emptyAction").text(), "Try again");
    std::filesystem::remove(Catalog());
    QTest::mouseClick(&Find<QPushButton>("emptyAction"), Qt::LeftButton);
    Until("opened", [this] { return Find<QPushButton>("emptyAction").text() == "Choose a folder…"; });
}

TEST_F(WindowTest, WithoutADisplayItSaysSo)
{
    HostOptions options;
    options.environment = {{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}, {"QT_QPA_PLATFORM", ""}};
    const HostOutcome outcome = Host({"show", "--catalog", Catalog()}, options);
    EXPECT_TRUE(Fails(outcome, "hynhost: cannot show the window: no display can be reached"));
}
