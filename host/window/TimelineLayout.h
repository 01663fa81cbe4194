// Where everything lies in the timeline: a heading and a grid of square cells for each day, one below the other.
//
// Plain numbers in pixels of the whole timeline, from its top left corner. Laying out takes time in the number of days,
// not of pictures; everything else searches by halves.
#pragma once

#include <memory>
#include <vector>

#include <QPoint>
#include <QRect>

#include <host/window/MediaIndex.h>

namespace HynHost
{
class TimelineLayout
{
public:
    static constexpr int kMargin = 24;
    static constexpr int kGap = 4;
    static constexpr int kHeading = 56;

    // `wantedSide` is about as wide as a cell is to be; cells fill the width.
    void Arrange(std::shared_ptr<const MediaIndex> index, int width, int wantedSide);

    [[nodiscard]] const MediaIndex& Index() const noexcept { return *m_index; }
    [[nodiscard]] int Height() const noexcept { return m_height; }
    [[nodiscard]] int Side() const noexcept { return m_side; }
    [[nodiscard]] int Columns() const noexcept { return m_columns; }

    // Days count from the latest, items from the first of the latest day.

    // Requires: `day` is less than the number of days.
    [[nodiscard]] int TopOf(std::size_t day) const { return m_tops[day]; }
    [[nodiscard]] int BottomOf(std::size_t day) const { return m_tops[day + 1]; }

    // The day at that height; the nearest above and below all days. Requires: there is a day.
    [[nodiscard]] std::size_t DayAt(int y) const;
    // The day of an item. Requires: `item` is less than the number of items.
    [[nodiscard]] std::size_t DayOf(std::size_t item) const;

    // An item's cell. Requires: `item` is less than the number of items.
    [[nodiscard]] QRect CellOf(std::size_t item) const;
    // The item whose cell holds the point; the number of items when none does.
    [[nodiscard]] std::size_t ItemAt(QPoint point) const;

    // The items whose rows reach into the stretch from `top` to `bottom`, as [first, last).
    struct Range
    {
        std::size_t first = 0;
        std::size_t last = 0;
    };
    [[nodiscard]] Range ItemsBetween(int top, int bottom) const;

    // The item one row below or above, in the same column or the last that there is; itself at either end.
    [[nodiscard]] std::size_t Below(std::size_t item) const;
    [[nodiscard]] std::size_t Above(std::size_t item) const;

private:
    [[nodiscard]] std::size_t Step() const { return static_cast<std::size_t>(m_columns); }
    [[nodiscard]] int Pitch() const { return m_side + kGap; }

    std::shared_ptr<const MediaIndex> m_index = std::make_shared<const MediaIndex>();
    std::vector<int> m_tops; // of each day, and the end
    int m_side = 1;
    int m_columns = 1;
    int m_height = 0;
};
} // namespace HynHost
