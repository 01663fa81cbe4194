#include <gtest/gtest.h>

#include <memory>

#include <QMenu>
#include <QProcess>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include <halyon/tools/MacTovMenu.h>

#include "ScreenSupport.h"

using namespace Halyon;
using namespace HalyonTest;

namespace
{
// What the call returns, the menu and the item.
using Choice = std::tuple<std::int32_t, int, int>;

constexpr Choice Chosen(int nMenu, int nItem)
{
    return {nMenu * 65536 + nItem, nMenu, nItem};
}

constexpr Choice kNothing = {0, 0, 0};

// What one of the menu's calls needs to be made for: 128: Open, -, Send ▸ (-7: Mail, Chat), Print (disabled), Tom &
// Ann.
struct Menus
{
    MacTovMenu menu;
    std::unique_ptr<MacTovMenu> spSend = std::make_unique<MacTovMenu>();

    Menus()
    {
        menu.CreateMenu(128);
        menu.CreateNewMenuItem(0, u"Open", 0, 1);
        menu.CreateNewMenuItem(1, u"-", 0, 0);
        menu.CreateNewMenuItem(2, u"Send", 0, 0);
        menu.CreateNewMenuItem(3, u"Print", 0, 0);
        menu.CreateNewMenuItem(4, u"Tom & Ann", 0, 0);
        menu.CreateNewMenuItem(5, u"Hidden", kMenuItemAttrHidden, 0);
        menu.CreateNewMenuItem(6, nullptr, kMenuItemAttrSeparator, 0);
        spSend->CreateMenu(-7);
        spSend->CreateNewMenuItem(0, u"Mail", 0, 0);
        spSend->CreateNewMenuItem(1, u"Chat", 0, 0);
        menu.SetChildren(spSend.get(), 3);
        menu.Enable(0, 4);
    }
};

Choice Popup(MacTovMenu& menu, POINT where)
{
    short nMenu = -1;
    std::uint16_t uItem = 99;
    const std::int32_t nWhole = menu.PopupMenu(where, nMenu, uItem);
    return {nWhole, nMenu, uItem};
}

// Popup, with a user who acts as soon as the menu is seen and hears the keys, and gives up after a while.
Choice PopupFor(MacTovMenu& menu, const std::function<QStringList(const QMenu&)>& actions)
{
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer,
                     [&]
                     {
                         const auto* shown = qobject_cast<QMenu*>(QApplication::activePopupWidget());
                         if (shown == nullptr || !shown->windowHandle()->isExposed() ||
                             QGuiApplication::focusWindow() != shown->windowHandle())
                             return;
                         timer.stop();
                         QProcess::startDetached(QStringLiteral("xdotool"), actions(*shown));
                     });
    timer.start(10);
    QTimer::singleShot(5000, &timer,
                       []
                       {
                           while (QWidget* popup = QApplication::activePopupWidget())
                               popup->close();
                           ADD_FAILURE() << "nothing was chosen in time";
                       });
    return Popup(menu, {400, 300});
}

std::function<QStringList(const QMenu&)> Keys(const QString& keys)
{
    return [keys](const QMenu&)
    {
        return QStringLiteral("key --delay 20 ").append(keys).split(QLatin1Char(' '));
    };
}

class ShownMenu : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!OnX11())
            GTEST_SKIP() << "nobody can see a menu on this platform";
    }

    Menus m_menus;
};
} // namespace

TEST(Menu, CombinedNumbersTellWhereAnItemWasInserted)
{
    MacTovMenu menu;
    EXPECT_EQ(menu.CreateNewMenuItem(3, u"nowhere", 0, 0), 3);
    ASSERT_EQ(menu.CreateMenu(128), 0);
    EXPECT_EQ(menu.CreateNewMenuItem(3, u"last", 0, 0), 128003);
    ASSERT_EQ(menu.CreateMenu(-2), 0);
    EXPECT_EQ(menu.CreateNewMenuItem(1, nullptr, 0, 0), -1999);
}

TEST(Menu, ItemsAreInsertedBehindTheOneThatIsNamed)
{
    MacTovMenu menu;
    MacTovMenu child;
    menu.CreateMenu(1);
    child.CreateMenu(2);
    menu.CreateNewMenuItem(0, u"b", 0, 0);
    ASSERT_EQ(menu.SetChildren(&child, 1), 0);
    // Before it, behind it, far behind, and before all: it moves to the third place.
    for (const int nAfter : {0, 2, 77, 0})
        menu.CreateNewMenuItem(nAfter, u"x", 0, 0);
    OpaqueMenuRef* found = nullptr;
    std::string places;
    for (std::uint16_t uItem = 0; uItem <= 6; ++uItem)
    {
        EXPECT_EQ(menu.GetChildren(uItem, &found), 0);
        places += found != nullptr ? 'b' : '.';
    }
    EXPECT_EQ(places, "...b...");
}

TEST(Menu, AChildLivesAsLongAsAnItemHoldsIt)
{
    Menus menus;
    menus.spSend.reset();
    OpaqueMenuRef* child = nullptr;
    EXPECT_EQ(menus.menu.GetChildren(3, &child), 2);
    EXPECT_EQ(GetMenuID(child), -7);
    EXPECT_EQ(menus.menu.SetChildren(nullptr, 3), 0);
    EXPECT_EQ(menus.menu.GetChildren(3, &child), 0);
    EXPECT_EQ(child, nullptr);
    EXPECT_EQ(menus.menu.GetChildren(3, nullptr), 0);
}

TEST(Menu, RefusesNoMenuNoItemAndACircle)
{
    Menus menus;
    MacTovMenu none;
    EXPECT_LT(none.SetChildren(&menus.menu, 1), 0);
    EXPECT_EQ(menus.menu.SetChildren(&menus.menu, 99), paramErr);
    EXPECT_EQ(menus.menu.SetChildren(menus.spSend.get(), 99), menuItemNotFoundErr);
    EXPECT_EQ(menus.spSend->SetChildren(&menus.menu, 1), paramErr);
    none.Enable(1, 1);
    menus.menu.Enable(0, 99);
    EXPECT_EQ(Popup(none, {0, 0}), kNothing);
}

TEST(Menu, WithoutAnythingToShowReturnsAtOnce)
{
    MacTovMenu menu;
    menu.CreateMenu(1);
    EXPECT_EQ(Popup(menu, {0, 0}), kNothing);
    menu.CreateNewMenuItem(0, u"Hidden", kMenuItemAttrHidden, 0);
    EXPECT_EQ(Popup(menu, {0, 0}), kNothing);
    Menus menus;
    if (!OnX11())
    {
        EXPECT_EQ(Popup(menus.menu, {0, 0}), kNothing);
    }
}

TEST_F(ShownMenu, KeysChoose)
{
    const std::pair<const char*, Choice> cases[] = {
        {"Down Return", Chosen(128, 1)},
        {"Down Down Right Return", Chosen(-7, 1)},
        {"Down Down Right Down Return", Chosen(-7, 2)},
        {"Up Return", Chosen(128, 5)}, // neither the last separator nor what is hidden
        {"Down Down Down Return", Chosen(128, 5)},
        {"Escape", kNothing},
    };
    for (const auto& [keys, choice] : cases)
    {
        Menus menus;
        EXPECT_EQ(PopupFor(menus.menu, Keys(QString::fromLatin1(keys))), choice) << keys;
    }
}

TEST_F(ShownMenu, TheMouseChoosesWhatItPointsAt)
{
    const auto click = [](QPoint place)
    {
        return QStringList{"mousemove", QString::number(place.x()), QString::number(place.y()), "sleep", "0.1", "click",
                           "1"};
    };
    const auto clickOn = [click](int nAction)
    {
        return [=](const QMenu& shown)
        {
            return click(shown.mapToGlobal(shown.actionGeometry(shown.actions()[nAction]).center()));
        };
    };
    EXPECT_EQ(PopupFor(m_menus.menu, clickOn(4)), Chosen(128, 5));
    EXPECT_EQ(PopupFor(m_menus.menu, clickOn(0)), Chosen(128, 1));
    EXPECT_EQ(PopupFor(m_menus.menu, [click](const QMenu&) { return click({20, 20}); }), kNothing);
    // A disabled item does not answer: the menu stays until the user gives up.
    const auto clickThenEscape = [clickOn](const QMenu& shown)
    {
        return clickOn(3)(shown) + QStringList{"sleep", "0.1", "key", "Escape"};
    };
    EXPECT_EQ(PopupFor(m_menus.menu, clickThenEscape), kNothing);
}

TEST_F(ShownMenu, DisablingItemZeroDisablesAllForTheTime)
{
    m_menus.menu.Enable(0, 0);
    EXPECT_EQ(PopupFor(m_menus.menu, Keys("Down Return Escape")), kNothing);
    m_menus.menu.Enable(1, 0);
    EXPECT_EQ(PopupFor(m_menus.menu, Keys("Down Down Down Return")), Chosen(128, 5)) << "item 4 stays disabled";
}

TEST_F(ShownMenu, ShowsTextAsItIsAtThePlaceThatWasAskedFor)
{
    PopupFor(m_menus.menu,
             [](const QMenu& shown)
             {
                 EXPECT_EQ(shown.pos(), QPoint(400, 300));
                 EXPECT_EQ(shown.actions()[4]->text(), "Tom && Ann");
                 return QStringList{"key", "Escape"};
             });
}
