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
        m_places.emplace_back(item.id, static_cast<std::uint32_t>(place));
        if (m_days.empty() || m_days.back().day != item.day)
            m_days.push_back({item.day, place, 0});
        ++m_days.back().count;
        const std::uint32_t month = item.day / 100;
        if (m_months.empty() || m_months.back().month != month)
            m_months.push_back({month, 0});
        ++m_months.back().count;
    }
    std::ranges::sort(m_places);
}

std::size_t MediaIndex::PlaceOf(long long id) const
{
    const auto at = std::ranges::lower_bound(m_places, id, {}, &decltype(m_places)::value_type::first);
    return at == m_places.end() || at->first != id ? m_items.size() : at->second;
}

std::size_t MediaIndex::DayAtOrBefore(std::uint32_t day) const
{
    const auto at = std::ranges::lower_bound(m_days, day, std::ranges::greater(), &MediaDay::day);
    return static_cast<std::size_t>(at - m_days.begin());
}
} // namespace HynHost
