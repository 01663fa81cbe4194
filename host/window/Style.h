// How the window looks: its colours, its measures and its style sheet, in one place.
//
// There is one accent colour; everything else is a tone of grey, so that the pictures are what is colourful. Distances
// are multiples of kGrid.
#pragma once

#include <QColor>
#include <QFont>

class QApplication;

namespace HynHost
{
inline constexpr int kGrid = 8;
inline constexpr int kCorner = 6; // radius of corners

struct Colours
{
    bool dark = false;
    QColor ground;   // behind everything
    QColor surface;  // panels and fields
    QColor hover;    // of what can be pressed
    QColor line;     // between panels, around fields
    QColor text;     //
    QColor weak;     // what is said beside
    QColor accent;   // selection, focus, the one thing to press
    QColor onAccent; // text on it
    QColor picture;  // in the place of a picture that is not here yet
    QColor film;     // of a film
    QColor sound;    // of a sound
    QColor problem;  // what went wrong
};

// As the desktop has it, or as the user wants it.
enum class Appearance
{
    Desktop,
    Light,
    Dark,
};

// [main], all of them.

// Sets style, palette and style sheet of the application.
void ApplyStyle(QApplication& application, Appearance appearance);

// Those that were set last.
[[nodiscard]] const Colours& TheColours() noexcept;

// The application's font, larger or smaller by a factor.
[[nodiscard]] QFont SizedFont(double factor, QFont::Weight weight = QFont::Normal);
} // namespace HynHost
