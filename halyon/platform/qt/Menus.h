// What a menu holds. Inside the platform only: menus are data until they are shown, and need no toolkit.
#pragma once

#include <memory>
#include <vector>

#include <halyon/platform/Interface.h>

namespace Halyon
{
struct CFStringReleaser
{
    void operator()(CFStringRef text) const noexcept { CFRelease(text); }
};

struct MenuReleaser
{
    void operator()(MenuRef menu) const noexcept { ReleaseMenu(menu); }
};
using HeldMenu = std::unique_ptr<OpaqueMenuRef, MenuReleaser>;

struct MenuItem
{
    std::unique_ptr<const __CFString, CFStringReleaser> spText; // null: no text
    MenuItemAttributes attributes;
    std::uint32_t uCommand;
    HeldMenu spChild;

    [[nodiscard]] bool IsSeparator() const noexcept;
};

struct OpaqueMenuRef
{
    std::int32_t nRefCount;
    std::int16_t nMenuID;
    bool bEnabled;
    std::vector<MenuItem> items;
};

// Takes a reference for the caller; null stays null.
HeldMenu HoldMenu(MenuRef menu) noexcept;
} // namespace Halyon
