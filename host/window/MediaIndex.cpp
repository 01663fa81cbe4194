#include <host/window/MediaIndex.h>

#include <algorithm>
#include <utility>

namespace HynHost
{
MediaIndex::MediaIndex(std::vector<MediaItem> items) : m_items(std::move(items))
{
    m_places.reserve(m_items.size());
    for (std::size_t place = 0; place < m_items.size(); ++place)
    {
        const MediaItem& item = m_items[place];
        m_places.emplace(item.id, place);
        if (m_days.empty() || m_days.back().day != item.day)
            m_days.push_back({item.day, place, 0});
        ++m_days.back().count;
        const std::uint32_t month = item.day / 100;
        if (m_months.empty() || m_months.back().month != month)
            m_months.push_back({month, 0});
        ++m_months.back().count;
    }
}

std::size_t MediaIndex::PlaceOf(long long id) const
{
    const auto at = m_places.find(id);
    return at == m_places.end() ? m_items.size() : at->second;
}

std::size_t MediaIndex::DayAtOrBefore(std::uint32_t day) const
{
    const auto at = std::ranges::lower_bound(m_days, day, std::ranges::greater(), &MediaDay::day);
    return static_cast<std::size_t>(at - m_days.begin());
}
} // namespace HynHost
