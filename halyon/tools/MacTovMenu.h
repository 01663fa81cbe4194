// A pop-up menu: made item by item, shown, and asked what was chosen.
//
// Not for a menu bar: that is the toolkit's. Items are numbered from 1 in the order in which they are shown, separators
// included; inserting one moves the numbers of those behind it.
//
//     MacTovMenu menu;
//     menu.CreateMenu(128);
//     menu.CreateNewMenuItem(0, u"Open", 0, 0);
//     menu.CreateNewMenuItem(1, u"-", 0, 0);
//     menu.CreateNewMenuItem(2, u"Delete", 0, 0);
//     short nMenu = 0;
//     std::uint16_t uItem = 0;
//     menu.PopupMenu(where, nMenu, uItem);    // 128 and 3 for Delete
#pragma once

#include <halyon/platform/Interface.h>

namespace Halyon
{
class MacTovMenu
{
public:
    MacTovMenu() noexcept = default;

    // Gives the menu back. It lives on below the items that it hangs from. [main]
    ~MacTovMenu();

    MacTovMenu(const MacTovMenu&) = delete;
    MacTovMenu& operator=(const MacTovMenu&) = delete;

    // Makes the menu, empty, in the place of the one that was held. Returns the platform's status: 0, or negative, and
    // then the former menu stays. [main]
    OSStatus CreateMenu(short menuID) noexcept;

    // Inserts an item after item `afterItem` (low 16 bits): before all for 0, at the end when there are not so many. A
    // null text is empty; "-" is a separator. `attributes`: kMenuItemAttr… bits. `command` is kept beside the item.
    // Returns the combined number afterItem + menu identifier * 1000, whether there was a menu to insert into or not
    // (without one the identifier is 0). [main]
    int CreateNewMenuItem(int afterItem, const char16_t* text, std::uint32_t attributes,
                          std::uint16_t command) noexcept;

    // Hangs the menu of `child` below an item (low 16 bits); null takes away what hangs there. The wrapper of the child
    // keeps its own hold. Returns the platform's status: 0, or negative for no menu, no such item, and a menu that
    // would come to hang below itself. [main]
    OSStatus SetChildren(MacTovMenu* child, int item) noexcept;

    // Lets an item be chosen (`enable` is not 0), or not; item 0 stands for all of them. [main]
    void Enable(int enable, std::uint16_t item) noexcept;

    // Shows the menu with its corner at `where` (low 16 bits each) and waits for the user, with events handled
    // meanwhile. Returns menu identifier (high 16 bits) and number (low 16 bits) of the chosen item, in `menuID` and
    // `item` too: of the menu that the item is in, which may be a child. All 0 when nothing was chosen and, at once,
    // when no user could see it. [main]
    std::int32_t PopupMenu(POINT where, short& menuID, std::uint16_t& item) noexcept;

    // The menu that hangs below an item, borrowed, or null; returns how many items that has. 0 for null. [main]
    std::uint16_t GetChildren(std::uint16_t item, OpaqueMenuRef** child) noexcept;

private:
    OpaqueMenuRef* m_menu = nullptr;
};
} // namespace Halyon
