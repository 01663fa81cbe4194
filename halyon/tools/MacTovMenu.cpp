#include <halyon/tools/MacTovMenu.h>

#include <halyon/string/CTovStringW.h>

namespace Halyon
{
MacTovMenu::~MacTovMenu()
{
    ReleaseMenu(m_menu);
}

OSStatus MacTovMenu::CreateMenu(short menuID) noexcept
{
    MenuRef menu = nullptr;
    const OSStatus status = CreateNewMenu(menuID, 0, &menu);
    if (status != noErr)
        return status;
    ReleaseMenu(m_menu);
    m_menu = menu;
    return noErr;
}

int MacTovMenu::CreateNewMenuItem(int afterItem, const char16_t* text, std::uint32_t attributes,
                                  std::uint16_t command) noexcept
{
    CFStringRef string =
        text != nullptr ? CFStringCreateWithCharacters(nullptr, text, static_cast<CFIndex>(tov_wcslen(text))) : nullptr;
    InsertMenuItemTextWithCFString(m_menu, string, static_cast<MenuItemIndex>(afterItem), attributes, command);
    CFRelease(string);
    return static_cast<int>(afterItem + std::int64_t{GetMenuID(m_menu)} * 1000);
}

OSStatus MacTovMenu::SetChildren(MacTovMenu* child, int item) noexcept
{
    return SetMenuItemHierarchicalMenu(m_menu, static_cast<MenuItemIndex>(item),
                                       child != nullptr ? child->m_menu : nullptr);
}

void MacTovMenu::Enable(int enable, std::uint16_t item) noexcept
{
    if (enable != 0)
        EnableMenuItem(m_menu, item);
    else
        DisableMenuItem(m_menu, item);
}

std::int32_t MacTovMenu::PopupMenu(POINT where, short& menuID, std::uint16_t& item) noexcept
{
    const std::int32_t nChosen =
        PopUpMenuSelect(m_menu, static_cast<std::int16_t>(where.y), static_cast<std::int16_t>(where.x), 0);
    menuID = static_cast<short>(nChosen >> 16);
    item = static_cast<std::uint16_t>(nChosen);
    return nChosen;
}

std::uint16_t MacTovMenu::GetChildren(std::uint16_t item, OpaqueMenuRef** child) noexcept
{
    if (child == nullptr)
        return 0;
    GetMenuItemHierarchicalMenu(m_menu, item, child);
    return CountMenuItems(*child);
}
} // namespace Halyon
