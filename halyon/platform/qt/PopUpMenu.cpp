// Shows a menu: the toolkit's menu is made for the time.

#include <new>

#include <QGuiApplication>
#include <QMenu>
#include <QTimer>
#include <QWindow>

#include "Application.h"
#include "Conversions.h"
#include "Menus.h"

namespace Halyon
{
namespace
{
constexpr int kPatience = 2000; // ms until a menu that was not shown is taken back

QString Title(const MenuItem& item)
{
    // "&" would mark the next letter as the item's key.
    return FromCFString(item.spText.get()).replace(QLatin1Char('&'), QLatin1String("&&"));
}

std::int32_t Combined(std::int16_t nMenuID, std::size_t uItem)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint16_t>(nMenuID)) << 16 |
                                     static_cast<std::uint32_t>(uItem));
}

// Each action carries what the user's choice of it returns.
void Fill(QMenu& shown, const OpaqueMenuRef& menu)
{
    std::size_t uItem = 0;
    for (const MenuItem& item : menu.items)
    {
        ++uItem;
        if ((item.attributes & kMenuItemAttrHidden) != 0)
            continue;
        if (item.IsSeparator())
        {
            shown.addSeparator();
            continue;
        }
        QAction* action = nullptr;
        if (item.spChild != nullptr)
        {
            QMenu* below = shown.addMenu(Title(item));
            Fill(*below, *item.spChild);
            action = below->menuAction();
        }
        else
            action = shown.addAction(Title(item));
        action->setData(Combined(menu.nMenuID, uItem));
        action->setEnabled(menu.bEnabled && (item.attributes & kMenuItemAttrDisabled) == 0);
    }
}

QAction* FindAction(const QMenu& shown, std::int32_t nData)
{
    for (QAction* action : shown.actions())
    {
        if (action->data().toInt() == nData)
            return action;
    }
    return nullptr;
}
} // namespace

std::int32_t PopUpMenuSelect(MenuRef menu, std::int16_t nTop, std::int16_t nLeft, MenuItemIndex popUpItem) noexcept
try
{
    if (menu == nullptr || !HasUser())
        return 0;
    QMenu shown;
    Fill(shown, *menu);
    if (shown.isEmpty())
        return 0;
    // The toolkit draws a divider at either end only on some systems.
    shown.setSeparatorsCollapsible(false);
    if (IsWayland())
    {
        shown.winId();
        shown.windowHandle()->setTransientParent(QGuiApplication::focusWindow());
    }
    QTimer::singleShot(kPatience, &shown,
                       [&shown]
                       {
                           if (shown.windowHandle() == nullptr || !shown.windowHandle()->isExposed())
                               shown.close();
                       });
    const QAction* chosen = shown.exec(
        QPoint(nLeft, nTop), popUpItem != 0 ? FindAction(shown, Combined(menu->nMenuID, popUpItem)) : nullptr);
    return chosen != nullptr ? chosen->data().toInt() : 0;
}
catch (const std::bad_alloc&)
{
    return 0;
}
} // namespace Halyon
