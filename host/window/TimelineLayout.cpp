#include <host/window/TimelineLayout.h>

#include <algorithm>

namespace HynHost
{
namespace
{
constexpr int kBelowDay = 16; // between a day's last row and the next heading
} // namespace

void TimelineLayout::Arrange(std::shared_ptr<const MediaIndex> index, int width, int wantedSide)
{
    m_index = std::move(index);
    const int room = std::max(width - 2 * kMargin, 1);
    m_columns = std::max(1, (room + kGap + wantedSide / 2) / (wantedSide + kGap));
    m_side = std::max(1, (room - (m_columns - 1) * kGap) / m_columns);

    m_tops.clear();
    m_tops.reserve(m_index->Days().size() + 1);
    int top = 0;
    for (const MediaDay& day : m_index->Days())
    {
        m_tops.push_back(top);
        const auto rows = static_cast<int>((day.count + Step() - 1) / Step());
        top += kHeading + rows * Pitch() - kGap + kBelowDay;
    }
    m_tops.push_back(top);
    m_height = m_index->Days().empty() ? 0 : top + kMargin - kBelowDay;
}

std::size_t TimelineLayout::DayAt(int y) const
{
    const auto after = std::upper_bound(m_tops.begin(), m_tops.end() - 1, y);
    return after == m_tops.begin() ? 0 : static_cast<std::size_t>(after - m_tops.begin()) - 1;
}

std::size_t TimelineLayout::DayOf(std::size_t item) const
{
    const std::vector<MediaDay>& days = m_index->Days();
    const auto after = std::ranges::upper_bound(days, item, {}, &MediaDay::first);
    return static_cast<std::size_t>(after - days.begin()) - 1;
}

QRect TimelineLayout::CellOf(std::size_t item) const
{
    const std::size_t day = DayOf(item);
    const std::size_t inDay = item - m_index->Days()[day].first;
    return {kMargin + static_cast<int>(inDay % Step()) * Pitch(),
            m_tops[day] + kHeading + static_cast<int>(inDay / Step()) * Pitch(), m_side, m_side};
}

std::size_t TimelineLayout::ItemAt(QPoint point) const
{
    const std::size_t none = m_index->Items().size();
    if (none == 0 || point.y() < 0)
        return none;
    const std::size_t at = DayAt(point.y());
    const MediaDay& day = m_index->Days()[at];
    const int x = point.x() - kMargin;
    const int y = point.y() - m_tops[at] - kHeading;
    if (x < 0 || y < 0 || x % Pitch() >= m_side || y % Pitch() >= m_side || x / Pitch() >= m_columns)
        return none;
    const std::size_t inDay = static_cast<std::size_t>(y / Pitch()) * Step() + static_cast<std::size_t>(x / Pitch());
    return inDay < day.count ? day.first + inDay : none;
}

TimelineLayout::Range TimelineLayout::ItemsBetween(int top, int bottom) const
{
    if (m_index->Items().empty() || bottom <= top)
        return {};
    const auto place = [this](int y, bool last)
    {
        const std::size_t at = DayAt(y);
        const MediaDay& day = m_index->Days()[at];
        const int below = std::max(y - m_tops[at] - kHeading, last ? -1 : 0);
        const std::size_t rows = below < 0 ? 0 : static_cast<std::size_t>(below / Pitch()) + (last ? 1 : 0);
        return day.first + std::min(rows * Step(), day.count);
    };
    return {place(top, false), place(bottom - 1, true)};
}

std::size_t TimelineLayout::Below(std::size_t item) const
{
    const std::size_t at = DayOf(item);
    const MediaDay& day = m_index->Days()[at];
    const std::size_t inDay = item - day.first;
    if (inDay / Step() < (day.count - 1) / Step())
        return day.first + std::min(inDay + Step(), day.count - 1);
    if (at + 1 == m_index->Days().size())
        return item;
    const MediaDay& next = m_index->Days()[at + 1];
    return next.first + std::min(inDay % Step(), next.count - 1);
}

std::size_t TimelineLayout::Above(std::size_t item) const
{
    const std::size_t at = DayOf(item);
    const MediaDay& day = m_index->Days()[at];
    const std::size_t inDay = item - day.first;
    if (inDay >= Step())
        return item - Step();
    if (at == 0)
        return item;
    const MediaDay& former = m_index->Days()[at - 1];
    const std::size_t lastRow = (former.count - 1) / Step() * Step();
    return former.first + std::min(lastRow + inDay, former.count - 1);
}
} // namespace HynHost
