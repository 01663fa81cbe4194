// Between the toolkit's shapes and texts and the platform's. The only place for it. Inside the platform only.
#pragma once

#include <algorithm>
#include <limits>

#include <QPoint>
#include <QRect>
#include <QString>

#include <halyon/platform/Interface.h>

namespace Halyon
{
// To 16 bits; beyond them the nearest.
inline std::int16_t Narrow(int n) noexcept
{
    using Limits = std::numeric_limits<std::int16_t>;
    return static_cast<std::int16_t>(std::clamp<int>(n, Limits::min(), Limits::max()));
}

inline Point FromQPoint(const QPoint& point) noexcept
{
    return {Narrow(point.y()), Narrow(point.x())};
}

inline Rect FromQRect(const QRect& rect) noexcept
{
    return {Narrow(rect.top()), Narrow(rect.left()), Narrow(rect.top() + rect.height()),
            Narrow(rect.left() + rect.width())};
}

// Null gives the empty text.
inline QString FromCFString(CFStringRef text)
{
    QString result(static_cast<qsizetype>(CFStringGetLength(text)), Qt::Uninitialized);
    static_assert(sizeof(QChar) == sizeof(char16_t));
    CFStringGetCharacters(text, {0, result.size()}, reinterpret_cast<char16_t*>(result.data()));
    return result;
}
} // namespace Halyon
