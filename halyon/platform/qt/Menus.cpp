// Menus as data; PopUpMenu.cpp shows them.

#include "Menus.h"

#include <algorithm>
#include <limits>
#include <new>

namespace Halyon
{
namespace
{
MenuItem* Find(MenuRef menu, MenuItemIndex item) noexcept
{
    return menu != nullptr && item >= 1 && item <= menu->items.size() ? &menu->items[item - 1u] : nullptr;
}

// Whether `sought` is `menu` or hangs somewhere below it.
bool Holds(const OpaqueMenuRef* menu, const OpaqueMenuRef* sought) noexcept
{
    return menu == sought ||
           std::ranges::any_of(menu->items, [sought](const MenuItem& item)
                               { return item.spChild != nullptr && Holds(item.spChild.get(), sought); });
}

void SetDisabled(MenuRef menu, MenuItemIndex item, bool bDisabled) noexcept
{
    if (menu != nullptr && item == 0)
        menu->bEnabled = !bDisabled;
    else if (MenuItem* found = Find(menu, item))
        found->attributes = (found->attributes & ~kMenuItemAttrDisabled) | (bDisabled ? kMenuItemAttrDisabled : 0u);
}
} // namespace

bool MenuItem::IsSeparator() const noexcept
{
    char16_t cFirst = 0;
    if (CFStringGetLength(spText.get()) == 1)
        CFStringGetCharacters(spText.get(), {0, 1}, &cFirst);
    return (attributes & kMenuItemAttrSeparator) != 0 || cFirst == u'-';
}

HeldMenu HoldMenu(MenuRef menu) noexcept
{
    if (menu != nullptr)
        ++menu->nRefCount;
    return HeldMenu(menu);
}

OSStatus CreateNewMenu(std::int16_t nMenuID, OptionBits attributes, MenuRef* pMenu) noexcept
{
    if (pMenu == nullptr || attributes != 0)
        return paramErr;
    *pMenu = new (std::nothrow) OpaqueMenuRef{1, nMenuID, true, {}};
    return *pMenu != nullptr ? noErr : memFullErr;
}

void ReleaseMenu(MenuRef menu) noexcept
{
    if (menu != nullptr && --menu->nRefCount == 0)
        delete menu;
}

std::int16_t GetMenuID(MenuRef menu) noexcept
{
    return menu != nullptr ? menu->nMenuID : std::int16_t{0};
}

std::uint16_t CountMenuItems(MenuRef menu) noexcept
{
    return menu != nullptr ? static_cast<std::uint16_t>(menu->items.size()) : std::uint16_t{0};
}

OSStatus InsertMenuItemTextWithCFString(MenuRef menu, CFStringRef text, MenuItemIndex afterItem,
                                        MenuItemAttributes attributes, std::uint32_t uCommand) noexcept
try
{
    if (menu == nullptr || menu->items.size() >= std::numeric_limits<MenuItemIndex>::max())
        return paramErr;
    MenuItem item{{}, attributes, uCommand, {}};
    if (text != nullptr)
        item.spText.reset(static_cast<CFStringRef>(CFRetain(text)));
    const auto nPlace = std::min<std::ptrdiff_t>(afterItem, std::ssize(menu->items));
    menu->items.insert(menu->items.begin() + nPlace, std::move(item));
    return noErr;
}
catch (const std::bad_alloc&)
{
    return memFullErr;
}

OSStatus SetMenuItemHierarchicalMenu(MenuRef menu, MenuItemIndex item, MenuRef child) noexcept
{
    if (menu == nullptr || (child != nullptr && Holds(child, menu)))
        return paramErr;
    MenuItem* found = Find(menu, item);
    if (found == nullptr)
        return menuItemNotFoundErr;
    found->spChild = HoldMenu(child);
    return noErr;
}

OSStatus GetMenuItemHierarchicalMenu(MenuRef menu, MenuItemIndex item, MenuRef* pChild) noexcept
{
    if (pChild == nullptr)
        return paramErr;
    const MenuItem* found = Find(menu, item);
    *pChild = found != nullptr ? found->spChild.get() : nullptr;
    if (menu == nullptr)
        return paramErr;
    return found != nullptr ? noErr : menuItemNotFoundErr;
}

void EnableMenuItem(MenuRef menu, MenuItemIndex item) noexcept
{
    SetDisabled(menu, item, false);
}

void DisableMenuItem(MenuRef menu, MenuItemIndex item) noexcept
{
    SetDisabled(menu, item, true);
}
} // namespace Halyon
