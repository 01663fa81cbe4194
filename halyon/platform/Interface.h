// The screen: cursor, windows, menus, icons, pictures and regions, and the machine's ticks.
//
// What must hold on every machine is said here; an implementation lies in one folder of its own beside this file. The
// tools are built on these calls; a program with a toolkit of its own needs only those that hand its objects over
// (`WindowFromQWindow`, `IconRefFromQIcon`, `QIconFromIconRef`).
//
// Nothing here waits for a display that is not there, and nothing ends the process for want of one: a call that needs
// the screen and cannot have it fails. The program's own application object is used. Where there is none, the first
// call that needs one makes it, on the display that can be reached, else on one that shows nothing; it stays. So a
// program that wants its own makes it first. What is not [main] needs no application object.
//
// Positions are in the pixels of the whole desktop, as the window system scales them; y grows downwards. They are 16
// bits wide; what lies further out counts as lying at the edge of that range.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include <halyon/platform/CoreFoundation.h>
#include <halyon/platform/FileManager.h>

class QIcon;
class QWidget;
class QWindow;

namespace Halyon
{
// A position, y first.
struct Point
{
    std::int16_t v;
    std::int16_t h;
};

// Right and bottom are one past the last pixel.
struct Rect
{
    std::int16_t top;
    std::int16_t left;
    std::int16_t bottom;
    std::int16_t right;
};

// Sixtieths of a second since the machine started, modulo 2^32. [any]
std::uint32_t TickCount() noexcept;

// 1 when the point lies inside; the right and bottom edges are outside, and an empty rectangle holds no point. 0 for
// null. [any]
Boolean PtInRect(Point point, const Rect* pRect) noexcept;

// ---------------------------------------------------------------------------------------------------------------------
// Cursor.
// ---------------------------------------------------------------------------------------------------------------------

// The pointer's position; (0, 0) when there is none. A window system may tell it only while the pointer is over one of
// the program's windows, and else the last that it told. [main]
void GetGlobalMouse(Point* pPoint) noexcept;

// Moves the pointer, if the window system lets a program do so. paramErr: not finite, or no screen. [main]
OSStatus CGWarpMouseCursorPosition(float x, float y) noexcept;

// A shape of the cursor.
struct Cursor;
inline constexpr std::int16_t watchCursor = 4;

// The system's shape of that number; null when it has none. It belongs to the system. [any]
const Cursor* GetCursor(std::int16_t nCursor) noexcept;

// Shows the shape over every window of the program, above what it showed before. Null is ignored. [main]
void SetCursor(const Cursor* pCursor) noexcept;

// Takes back every shape that was set over the program's windows, also the program's own: each window shows its own
// cursor again, the arrow as a rule. [main]
void InitCursor() noexcept;

// ---------------------------------------------------------------------------------------------------------------------
// Windows.
// ---------------------------------------------------------------------------------------------------------------------

// A window of the program. It is borrowed; when the window has gone by the time of a call, the call fails.
struct OpaqueWindowPtr;
using WindowRef = OpaqueWindowPtr*;

// The toolkit's window, and the window that a widget lies in, for the calls here. Null for null. A widget's window is
// made if the system has none for it yet. [main]
WindowRef WindowFromQWindow(QWindow* window) noexcept;
WindowRef WindowFromQWidget(QWidget* widget) noexcept;

using WindowRegionCode = std::uint16_t;
inline constexpr WindowRegionCode kWindowStructureRgn = 32; // with the frame around it
inline constexpr WindowRegionCode kWindowContentRgn = 33;   // without

// The window's rectangle on the desktop. paramErr: a null argument, no such window, another region. [main]
OSStatus GetWindowBounds(WindowRef window, WindowRegionCode region, Rect* pBounds) noexcept;

// ---------------------------------------------------------------------------------------------------------------------
// Menus.
// ---------------------------------------------------------------------------------------------------------------------

struct OpaqueMenuRef;
using MenuRef = OpaqueMenuRef*;
using MenuItemIndex = std::uint16_t; // from 1; 0 is the menu itself
using MenuItemAttributes = OptionBits;

inline constexpr MenuItemAttributes kMenuItemAttrDisabled = 1u << 0;
inline constexpr MenuItemAttributes kMenuItemAttrHidden = 1u << 5;
inline constexpr MenuItemAttributes kMenuItemAttrSeparator = 1u << 6;

inline constexpr OSStatus menuItemNotFoundErr = -5622;

// A new, empty menu with one reference for the caller. `attributes` must be 0. memFullErr; paramErr: null. [main]
OSStatus CreateNewMenu(std::int16_t nMenuID, OptionBits attributes, MenuRef* pMenu) noexcept;

// Gives the reference back. A menu that hangs below an item lives on with it. Null is not an error. [main]
void ReleaseMenu(MenuRef menu) noexcept;

// The identifier that the menu was made with; 0 for null. [main]
std::int16_t GetMenuID(MenuRef menu) noexcept;

// Number of items; 0 for null. [main]
std::uint16_t CountMenuItems(MenuRef menu) noexcept;

// Inserts an item after item `afterItem`: before all for 0, at the end when there are not so many. A null text counts
// as empty; the text "-" makes a separator, as the attribute does. `uCommand` is kept beside the item.
// paramErr: null menu, 65,535 items already. memFullErr. [main]
OSStatus InsertMenuItemTextWithCFString(MenuRef menu, CFStringRef text, MenuItemIndex afterItem,
                                        MenuItemAttributes attributes, std::uint32_t uCommand) noexcept;

// Hangs a menu below an item, in the place of the one that hung there; null takes that away. The item holds a reference
// of its own. menuItemNotFoundErr. paramErr: null menu, or the item would come to hang below itself. [main]
OSStatus SetMenuItemHierarchicalMenu(MenuRef menu, MenuItemIndex item, MenuRef child) noexcept;

// The menu that hangs below an item, null when none does; borrowed. menuItemNotFoundErr: `*pChild` is null then, too.
// paramErr: a null argument. [main]
OSStatus GetMenuItemHierarchicalMenu(MenuRef menu, MenuItemIndex item, MenuRef* pChild) noexcept;

// Lets an item be chosen, or not; item 0 stands for all items at once, without a change to what each is for itself. No
// such item: nothing happens. [main]
void EnableMenuItem(MenuRef menu, MenuItemIndex item) noexcept;
void DisableMenuItem(MenuRef menu, MenuItemIndex item) noexcept;

// Shows the menu with its top left corner there, or with item `popUpItem` there when that is not 0, and returns when
// the user has chosen or has given up; events are handled meanwhile. Returns the identifier of the menu that the chosen
// item is in (high 16 bits) and its number (low 16 bits); 0 when nothing was chosen, for null, for a menu without a
// visible item, and, at once, when no user could see it or answer. A menu that the window system does not show is taken
// back after two seconds. [main]
std::int32_t PopUpMenuSelect(MenuRef menu, std::int16_t nTop, std::int16_t nLeft, MenuItemIndex popUpItem) noexcept;

// ---------------------------------------------------------------------------------------------------------------------
// Icons: a picture in one or more sizes.
// ---------------------------------------------------------------------------------------------------------------------

struct OpaqueIconRef;
using IconRef = OpaqueIconRef*;
using OSType = std::uint32_t;

// The bytes that hold a whole icon, to be kept anywhere. The layout is the platform's own; damage is noticed.
using IconFamily = std::vector<std::uint8_t>;
inline constexpr std::uint32_t kSelectorAllAvailableData = 0xFFFFFFFFu;

// Writes every size of the icon. paramErr: a null argument, another selector. memFullErr. [any]
OSStatus IconRefToIconFamily(IconRef icon, std::uint32_t uSelector, IconFamily* pFamily) noexcept;

// Makes an icon, with one reference for the caller, that has every size and every pixel of what was written.
// `creator` and `type` name it for the system, where that asks. paramErr: null, or damaged bytes: `*pIcon` is null
// then. memFullErr. [any]
OSStatus RegisterIconRefFromIconFamily(OSType creator, OSType type, std::span<const std::uint8_t> family,
                                       IconRef* pIcon) noexcept;

// Reads an icon from a file: an icon file with all of its sizes, or a picture of at most 1,024 pixels a side. A drawing
// without a size of its own is taken in the usual sizes; it asks for the main thread.
// fnfErr: no such item. paramErr: a null argument, or no icon in it. memFullErr. [any]
OSStatus ReadIconFromFSRef(const FSRef* pRef, IconFamily* pFamily) noexcept;

// Gives a reference back. paramErr: null. [any]
OSStatus ReleaseIconRef(IconRef icon) noexcept;

// The toolkit's icon in every size that it has, with one reference for the caller; null for one without a size of its
// own. And back; an empty icon for null. [main]
IconRef IconRefFromQIcon(const QIcon& icon) noexcept;
QIcon QIconFromIconRef(IconRef icon);

// ---------------------------------------------------------------------------------------------------------------------
// Pictures and regions.
// ---------------------------------------------------------------------------------------------------------------------

// A picture of one bit a pixel, set for black. Pixel x of a row is bit x % 64 of its word x / 64; the bits past the
// last pixel of a row are clear.
struct BitMap
{
    std::unique_ptr<std::uint64_t[]> spWords;
    std::size_t uRowWords = 0;
    Rect bounds = {};
};

// Draws the picture in a file in black and white. A pixel is black when its luminance, over a white ground, is less
// than half. The picture stands as it is stored: no turn that a camera noted is made.
// fnfErr: no such item, not a plain file. paramErr: a null argument, no picture, a damaged one, one larger than 32,767
// pixels a side. memFullErr. A drawing (a format without pixels) asks for the main thread. [any]
OSStatus GraphicsImportDraw(const FSRef* pRef, BitMap* pMap) noexcept;

// A set of pixels of the desktop.
struct OpaqueRgn;
using RgnHandle = OpaqueRgn*;

// A new region without a pixel; null when there is no memory. The caller disposes of it. [any]
RgnHandle NewRgn() noexcept;

// Null is not an error. [any]
void DisposeRgn(RgnHandle rgn) noexcept;

// Makes the region hold exactly the set pixels. paramErr: null. memFullErr: the region is as it was. [any]
OSStatus BitMapToRegion(RgnHandle rgn, const BitMap& map) noexcept;

// 1 when the region holds the pixel to the right of and below `point`; 0 for null. [any]
Boolean PtInRgn(Point point, RgnHandle rgn) noexcept;

// Writes the smallest rectangle around the region and returns `pBounds`; all 0 for a region without a pixel and for
// null. [any]
Rect* GetRegionBounds(RgnHandle rgn, Rect* pBounds) noexcept;
} // namespace Halyon
