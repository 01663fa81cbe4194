#include <bit>

#include <QScreen>
#include <QWidget>
#include <QWindow>

#include "ScreenSupport.h"

using namespace Halyon;
using namespace HalyonTest;

namespace
{
// A red window with a frame, shown where it was asked for.
class RedWindow : public QWidget
{
public:
    RedWindow()
    {
        setPalette(QPalette(Qt::red));
        setGeometry(200, 150, 320, 240);
        show();
        WaitUntil([this] { return windowHandle()->isExposed() && frameGeometry() != geometry(); });
    }
};

QColor OnScreen(int x, int y)
{
    const QColor color = QGuiApplication::primaryScreen()->grabWindow(0, x, y, 1, 1).toImage().pixelColor(0, 0);
    // The toolkit takes a picture of a screen of the other byte order as if it were its own.
    return std::endian::native == std::endian::big && color == Qt::cyan ? Qt::red : color;
}
} // namespace

class Windows : public testing::Test
{
protected:
    const bool m_bX11 = OnX11();
    RedWindow m_widget;
    const WindowRef m_window = WindowFromQWidget(&m_widget);
    SRect32 m_frame = {};
    SRect32 m_content = {};

    void SetUp() override
    {
        ASSERT_EQ(CHynPubTools::GetWindowRect(m_window, &m_frame), 1);
        ASSERT_EQ(CHynPubTools::GetClientRect(m_window, &m_content), 1);
    }
};

TEST_F(Windows, ContentStandsOnTheDesktopInsideTheFrame)
{
    EXPECT_EQ(m_content.right - m_content.left, 320);
    EXPECT_EQ(m_content.bottom - m_content.top, 240);
    EXPECT_LT(m_frame.left, m_content.left);
    EXPECT_LT(m_frame.top, m_content.top);
    EXPECT_GT(m_frame.right, m_content.right);
    EXPECT_GT(m_frame.bottom, m_content.bottom);
}

TEST_F(Windows, RectanglesAreWhatTheScreenShows)
{
    if (!m_bX11)
        GTEST_SKIP() << "nothing is shown on this platform";
    ASSERT_TRUE(WaitUntil([this] { return OnScreen(m_content.right - 1, m_content.bottom - 1) == Qt::red; }));
    EXPECT_EQ(OnScreen(m_content.left, m_content.top), Qt::red);
    EXPECT_NE(OnScreen(m_content.left - 1, m_content.top), Qt::red);
    EXPECT_NE(OnScreen(m_content.left, m_content.top - 1), Qt::red);
    EXPECT_NE(OnScreen(m_content.right, m_content.bottom - 1), Qt::red);
    EXPECT_NE(OnScreen(m_content.right - 1, m_content.bottom), Qt::red);
    // The title bar is there, and above it the empty desktop.
    const int nMiddle = (m_frame.left + m_frame.right) / 2;
    const QColor desktop = OnScreen(0, 0);
    EXPECT_EQ(OnScreen(nMiddle, m_frame.top - 1), desktop);
    EXPECT_NE(OnScreen(nMiddle, m_frame.top + 2), desktop);
    EXPECT_EQ(OnScreen(nMiddle, m_frame.bottom), desktop);
    EXPECT_NE(OnScreen(nMiddle, m_frame.bottom - 1), desktop);
}

TEST_F(Windows, PointsCountFromTheCornerOfTheFrame)
{
    POINT point = {m_frame.left + 7, m_frame.top - 5};
    EXPECT_EQ(CHynPubTools::ScreenToClient(m_window, &point), 1);
    EXPECT_EQ(std::pair(point.x, point.y), std::pair(7, -5));
    EXPECT_EQ(CHynPubTools::ClientToScreen(m_window, &point), 1);
    EXPECT_EQ(std::pair(point.x, point.y), std::pair(m_frame.left + 7, m_frame.top - 5));
}

TEST_F(Windows, AWidgetStandsForTheWindowThatItLiesIn)
{
    QWidget child(&m_widget);
    EXPECT_EQ(WindowFromQWidget(&child), m_window);
    EXPECT_EQ(WindowFromQWindow(m_widget.windowHandle()), m_window);
    child.setParent(nullptr);
}

TEST_F(Windows, AWindowInsideAnotherStandsWhereItIsSeen)
{
    auto* inner = new QWindow(m_widget.windowHandle());
    inner->setGeometry(10, 20, 30, 40);
    inner->create();
    SRect32 rect = {};
    for (const auto get : {CHynPubTools::GetWindowRect, CHynPubTools::GetClientRect})
    {
        EXPECT_EQ(get(WindowFromQWindow(inner), &rect), 1);
        EXPECT_EQ(Fields(rect),
                  std::tuple(m_content.left + 10, m_content.top + 20, m_content.left + 40, m_content.top + 60));
    }
}

TEST_F(Windows, AWindowThatHasGoneFailsAndLeavesTheOutputs)
{
    WindowRef gone = nullptr;
    {
        const QWidget widget;
        gone = WindowFromQWidget(const_cast<QWidget*>(&widget));
        ASSERT_NE(gone, nullptr);
    }
    for (const WindowRef window : {gone, WindowFromQWindow(nullptr), WindowFromQWidget(nullptr)})
    {
        SRect32 rect = {1, 2, 3, 4};
        POINT point = {5, 6};
        EXPECT_EQ(CHynPubTools::GetWindowRect(window, &rect), 0);
        EXPECT_EQ(CHynPubTools::GetClientRect(window, &rect), 0);
        EXPECT_EQ(CHynPubTools::ScreenToClient(window, &point), 0);
        EXPECT_EQ(CHynPubTools::ClientToScreen(window, &point), 0);
        EXPECT_EQ(Fields(rect), std::tuple(1, 2, 3, 4));
        EXPECT_EQ(std::pair(point.x, point.y), std::pair(5, 6));
    }
    EXPECT_EQ(CHynPubTools::GetWindowRect(m_window, nullptr), 0);
    EXPECT_EQ(CHynPubTools::ScreenToClient(m_window, nullptr), 0);
}

TEST(Rectangles, RightAndBottomAreOutsideAndNumbersCountBySixteenBits)
{
    const struct
    {
        SRect32 rect;
        POINT point;
        int nInside;
    } cases[] = {
        {{10, 20, 30, 40}, {10, 20}, 1},
        {{10, 20, 30, 40}, {29, 39}, 1},
        {{10, 20, 30, 40}, {30, 39}, 0},
        {{10, 20, 30, 40}, {29, 40}, 0},
        {{10, 20, 30, 40}, {9, 20}, 0},
        {{10, 20, 30, 40}, {10, 19}, 0},
        {{-5, -5, 0, 0}, {-1, -5}, 1},
        {{10, 20, 10, 40}, {10, 20}, 0},
        {{10, 20, 30, 40}, {65536 + 15, 25 - 65536}, 1},
        {{65536, 0, 65536 + 30, 40}, {15, 25}, 1},
        {{0, 0, 40000, 10}, {5, 5}, 0},
    };
    for (const auto& c : cases)
    {
        SRect32 rect = c.rect;
        EXPECT_EQ(CHynPubTools::PtInRect(&rect, c.point), c.nInside) << c.point.x << ", " << c.point.y;
    }
    EXPECT_EQ(CHynPubTools::PtInRect(nullptr, {0, 0}), 0);
}
