// The chores of the screen, over the platform's calls.

#include <halyon/tools/CHynPubTools.h>

namespace Halyon
{
namespace
{
std::int16_t Low(std::int32_t n)
{
    return static_cast<std::int16_t>(n);
}

int CopyBounds(OpaqueWindowPtr* window, WindowRegionCode region, SRect32* rect)
{
    Rect bounds;
    if (rect == nullptr || GetWindowBounds(window, region, &bounds) != noErr)
        return 0;
    *rect = {bounds.left, bounds.top, bounds.right, bounds.bottom};
    return 1;
}

int Move(OpaqueWindowPtr* window, POINT* point, int nSign)
{
    Rect bounds;
    if (point == nullptr || GetWindowBounds(window, kWindowStructureRgn, &bounds) != noErr)
        return 0;
    const auto add = [](std::int32_t a, std::int32_t b)
    {
        return static_cast<std::int32_t>(static_cast<std::int64_t>(a) + b);
    };
    *point = {add(point->x, nSign * bounds.left), add(point->y, nSign * bounds.top)};
    return 1;
}
} // namespace

RgnHandle CHynPubTools::CreateRgnFromFile(const char16_t* path) noexcept
{
    FSRef ref;
    BitMap map;
    if (!CTovStringW(path).MakeFSRef(&ref) || GraphicsImportDraw(&ref, &map) != noErr)
        return nullptr;
    RgnHandle rgn = NewRgn();
    if (BitMapToRegion(rgn, map) == noErr)
        return rgn;
    DisposeRgn(rgn);
    return nullptr;
}

int CHynPubTools::GetCursorPos(POINT* point) noexcept
{
    if (point == nullptr)
        return 0;
    Point mouse;
    GetGlobalMouse(&mouse);
    *point = {mouse.h, mouse.v};
    return 1;
}

int CHynPubTools::SetCursorPos(POINT* point) noexcept
{
    if (point == nullptr)
        return 0;
    CGWarpMouseCursorPosition(static_cast<float>(point->x), static_cast<float>(point->y));
    return 1;
}

int CHynPubTools::GetWindowRect(OpaqueWindowPtr* window, SRect32* rect) noexcept
{
    return CopyBounds(window, kWindowStructureRgn, rect);
}

int CHynPubTools::GetClientRect(OpaqueWindowPtr* window, SRect32* rect) noexcept
{
    return CopyBounds(window, kWindowContentRgn, rect);
}

int CHynPubTools::ScreenToClient(OpaqueWindowPtr* window, POINT* point) noexcept
{
    return Move(window, point, -1);
}

int CHynPubTools::ClientToScreen(OpaqueWindowPtr* window, POINT* point) noexcept
{
    return Move(window, point, 1);
}

int CHynPubTools::PtInRect(SRect32* rect, POINT point) noexcept
{
    if (rect == nullptr)
        return 0;
    const Rect narrow = {Low(rect->top), Low(rect->left), Low(rect->bottom), Low(rect->right)};
    return Halyon::PtInRect({Low(point.y), Low(point.x)}, &narrow);
}
} // namespace Halyon
