// Windows of the program. A reference is the address of the toolkit's window and is never followed before the toolkit
// has confirmed that a window lives there.

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

#include "Application.h"
#include "Conversions.h"

namespace Halyon
{
namespace
{
QWindow* Living(WindowRef window)
{
    if (window == nullptr || !HasScreen())
        return nullptr;
    for (QWindow* candidate : QGuiApplication::allWindows())
    {
        if (candidate == reinterpret_cast<QWindow*>(window))
            return candidate;
    }
    return nullptr;
}
} // namespace

WindowRef WindowFromQWindow(QWindow* window) noexcept
{
    return reinterpret_cast<WindowRef>(window);
}

WindowRef WindowFromQWidget(QWidget* widget) noexcept
{
    if (widget == nullptr)
        return nullptr;
    QWidget* outermost = widget->window();
    // Asking for the system's number of it makes the window.
    outermost->winId();
    return WindowFromQWindow(outermost->windowHandle());
}

OSStatus GetWindowBounds(WindowRef window, WindowRegionCode region, Rect* pBounds) noexcept
{
    if (pBounds == nullptr || (region != kWindowStructureRgn && region != kWindowContentRgn))
        return paramErr;
    const QWindow* living = Living(window);
    if (living == nullptr)
        return paramErr;
    QRect bounds(living->mapToGlobal(QPoint(0, 0)), living->size());
    if (region == kWindowStructureRgn)
        bounds = bounds.marginsAdded(living->frameMargins());
    *pBounds = FromQRect(bounds);
    return noErr;
}

Boolean PtInRect(Point point, const Rect* pRect) noexcept
{
    return pRect != nullptr && point.h >= pRect->left && point.h < pRect->right && point.v >= pRect->top &&
           point.v < pRect->bottom;
}
} // namespace Halyon
