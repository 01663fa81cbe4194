// The pointer, and the shape that it has over the program's windows.

#include <cmath>

#include <QCursor>
#include <QGuiApplication>

#include "Application.h"
#include "Conversions.h"

namespace Halyon
{
struct Cursor
{
    Qt::CursorShape shape;
};

void GetGlobalMouse(Point* pPoint) noexcept
{
    if (pPoint != nullptr)
        *pPoint = HasScreen() ? FromQPoint(QCursor::pos()) : Point{};
}

OSStatus CGWarpMouseCursorPosition(float x, float y) noexcept
{
    constexpr float fLimit = 1.0e6F;
    // The comparisons are false for not-a-number.
    if (!(std::fabs(x) < fLimit) || !(std::fabs(y) < fLimit) || !HasScreen())
        return paramErr;
    QCursor::setPos(static_cast<int>(x), static_cast<int>(y));
    return noErr;
}

const Cursor* GetCursor(std::int16_t nCursor) noexcept
{
    static constexpr Cursor watch = {Qt::WaitCursor};
    return nCursor == watchCursor ? &watch : nullptr;
}

void SetCursor(const Cursor* pCursor) noexcept
{
    if (pCursor != nullptr && HasScreen())
        QGuiApplication::setOverrideCursor(pCursor->shape);
}

void InitCursor() noexcept
{
    if (!HasScreen())
        return;
    while (QGuiApplication::overrideCursor() != nullptr)
        QGuiApplication::restoreOverrideCursor();
}
} // namespace Halyon
