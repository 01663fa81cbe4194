// The window's own line drawings: icons in any colour and size, sharp on every screen.
#pragma once

#include <QColor>
#include <QIcon>
#include <QRectF>

#include <host/MediaKind.h>

class QPainter;

namespace HynHost
{
enum class Symbol
{
    Search,
    Filter,
    Folder,
    Calendar,
    Picture,
    Film,
    Sound,
    Star,
    FullStar,
    Close,
    More,
    Warning,
    Information,
    Trash,
    Back,
    Forth,
};

// What stands for a file of that kind where no picture of it is shown. [any]
[[nodiscard]] Symbol SymbolOf(MediaKind kind) noexcept;

// Draws the symbol so that it fills the square. [main]
void DrawSymbol(QPainter& painter, Symbol symbol, const QRectF& square, const QColor& colour);

// [main]
[[nodiscard]] QIcon SymbolIcon(Symbol symbol, const QColor& colour);
} // namespace HynHost
