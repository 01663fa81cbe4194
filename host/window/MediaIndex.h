// What the timeline knows of every picture that a search has found: little enough to hold all of them in memory.
//
// Made whole on a worker and never changed after, so that it may be shared. What is shown beside a picture is asked for
// when it is looked at (Library::WantDetails).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <host/MediaKind.h>

namespace HynHost
{
// A file of the catalogue.
struct MediaItem
{
    long long id = 0;
    std::uint32_t day = 0; // local: year * 10000 + month * 100 + day
    MediaKind kind = MediaKind::Jpeg;
    std::int8_t stars = -1; // 0 to 5; -1: none
    bool broken = false;    // it could not be read wholly
};

// The items of one local day.
struct MediaDay
{
    std::uint32_t day = 0;
    std::size_t first = 0; // place of its first item
    std::size_t count = 0;
};

// A month and how many items it has.
struct MediaMonth
{
    std::uint32_t month = 0; // year * 100 + month
    std::size_t count = 0;
};

// What to look for; what is empty or 0 does not narrow the search.
struct MediaQuery
{
    enum class Sort : std::uint8_t
    {
        All,
        Pictures,
        Films,
        Sounds,
    };

    std::string name; // a part of the file's name or folder, in any letter case
    Sort sort = Sort::All;
    std::uint32_t firstDay = 0; // packed as MediaItem::day, and counts itself
    std::uint32_t lastDay = 0;
    int leastStars = 0;

    friend bool operator==(const MediaQuery&, const MediaQuery&) = default;
};

class MediaIndex
{
public:
    MediaIndex() = default;

    // `items` come with the latest day first.
    explicit MediaIndex(std::vector<MediaItem> items);

    [[nodiscard]] const std::vector<MediaItem>& Items() const noexcept { return m_items; }
    [[nodiscard]] const std::vector<MediaDay>& Days() const noexcept { return m_days; }       // the latest first
    [[nodiscard]] const std::vector<MediaMonth>& Months() const noexcept { return m_months; } // the latest first

    // The place of an item; Items().size() when it is not among them.
    [[nodiscard]] std::size_t PlaceOf(long long id) const;

    // The place among Days() of the first day that is not later than `day`; Days().size() when all are.
    [[nodiscard]] std::size_t DayAtOrBefore(std::uint32_t day) const;

private:
    std::vector<MediaItem> m_items;
    std::vector<MediaDay> m_days;
    std::vector<MediaMonth> m_months;
    std::vector<std::pair<long long, std::uint32_t>> m_places; // by id; goes at once, on the main thread
};
} // namespace HynHost
