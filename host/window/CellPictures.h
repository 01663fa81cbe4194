// Thumbnails as the timeline's cells show them: cut to a square with round corners, in the screen's own pixels.
//
// Holds so many bytes at most, what was used last the longest.
#pragma once

#include <QCache>
#include <QImage>
#include <QPixmap>
#include <QSet>

namespace HynHost
{
// The middle of a thumbnail, as large as a cell of `side`, on a screen with so many pixels for one. [any]
[[nodiscard]] QImage DrawCell(const QImage& thumbnail, int side, qreal pixelRatio);

class CellPictures
{
public:
    static constexpr int kMostBytes = 64 << 20;

    CellPictures() : m_pixmaps(kMostBytes) {}

    // [main], all of them.

    // A cell as DrawCell makes it; null: the item has no picture.
    void Put(long long id, QImage cell, qreal pixelRatio);

    // Null when it is not here. Until the next Put.
    [[nodiscard]] const QPixmap* Find(long long id) const { return m_pixmaps.object(id); }

    // Whether there is nothing to ask for: a picture of that size is here, or there is none.
    [[nodiscard]] bool IsSettled(long long id, int side, qreal pixelRatio) const;

    // Asks again for those that had none.
    void ForgetMissing() { m_missing.clear(); }

private:
    QCache<long long, QPixmap> m_pixmaps;
    QSet<long long> m_missing;
};
} // namespace HynHost
