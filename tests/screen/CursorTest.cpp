#include <halyon/tools/CHynWaitCursor.h>

#include "ScreenSupport.h"

using namespace Halyon;
using namespace HalyonTest;

TEST(Cursor, PointerIsWhereItWasPut)
{
    for (const POINT& place : {POINT{300, 200}, POINT{0, 0}, POINT{1279, 1023}})
    {
        POINT point = place;
        EXPECT_EQ(CHynPubTools::SetCursorPos(&point), 1);
        EXPECT_EQ(CHynPubTools::GetCursorPos(&point), 1);
        if (OnX11())
        {
            EXPECT_EQ(std::pair(point.x, point.y), std::pair(place.x, place.y));
        }
    }
    EXPECT_EQ(CHynPubTools::SetCursorPos(nullptr), 0);
    EXPECT_EQ(CHynPubTools::GetCursorPos(nullptr), 0);
}

TEST(WaitCursor, FirstEndTakesEveryShapeBack)
{
    OnX11();
    ASSERT_EQ(QGuiApplication::overrideCursor(), nullptr);
    {
        const CHynWaitCursor outer;
        QGuiApplication::setOverrideCursor(Qt::CrossCursor);
        {
            const CHynWaitCursor inner;
            ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
            EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
        }
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    }
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}
