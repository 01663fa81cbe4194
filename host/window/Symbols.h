// The window's own line drawings: icons in any colour and size, sharp on every screen.
#pragma once

#include <QColor>
#include <QIcon>
#include <QRectF>

#include <host/MediaKind.h>
#include <host/window/Style.h>

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

// In one of the window's colours, also when these change: SymbolIcon(Symbol::Close, &Colours::weak). [main]
[[nodiscard]] QIcon SymbolIcon(Symbol symbol, QColor Colours::*colour);
} // namespace HynHost
