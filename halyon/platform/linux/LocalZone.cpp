// Learning the system's time zone from the C library, and keeping what was learnt.

#include <halyon/platform/linux/LocalZone.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include <sys/stat.h>

#include <halyon/platform/DateTimeUtils.h>
#include <halyon/platform/TovMutex.h>
#include <halyon/platform/TovPCMac.h>

namespace Halyon::Linux
{
namespace
{
// What an offset must last to be found for certain: a day and a half in a named zone, where the shortest is four days
// (Freetown, September 1939); nine hours in a zone that is written out as rules, which may be odder and is cheap to
// ask.
constexpr std::int64_t kStepOfNamedZones = 1 << 17;
constexpr std::int64_t kStepOfRules = 1 << 15;

// More than any zone's; what a damaged file says must not lead out of the table.
constexpr std::int64_t kMostOffset = 7 * kSecondsPerDay;

// Wall clock minus UTC, as the C library's fields show it: `tm_gmtoff` leaves the leap seconds of the "right" zones
// out.
std::int64_t OffsetAt(std::int64_t moment) noexcept
{
    const auto time = static_cast<std::time_t>(moment - kSecondsFrom1904To1970);
    std::tm fields{};
    localtime_r(&time, &fields);
    const std::int64_t days = DaysFromCivil(std::int64_t{fields.tm_year} + 1900, fields.tm_mon + 1, fields.tm_mday);
    const std::int64_t wall = ((days * 24 + fields.tm_hour) * 60 + fields.tm_min) * 60 + fields.tm_sec;
    return std::clamp(wall - moment, -kMostOffset, kMostOffset);
}

// Two years of a kind have the same calendar, and so has the end of the year before, which a wall time may reach into.
struct YearKind
{
    explicit YearKind(std::int64_t year) noexcept
        : weekday(CivilFromSeconds(DaysFromCivil(year, 1, 1) * kSecondsPerDay).weekday), isLeap(IsLeapYear(year)),
          isAfterLeap(IsLeapYear(year - 1))
    {
    }
    bool operator==(const YearKind&) const noexcept = default;

    std::uint32_t weekday;
    bool isLeap;
    bool isAfterLeap;
};

// What a zone is known by: the file that the C library reads for it, and which file lay there. For a zone that is
// written out as rules the path names nothing.
struct ZoneSource
{
    std::string path;
    std::int64_t device = 0;
    std::uint64_t node = 0;
    std::int64_t modified = 0;

    bool operator==(const ZoneSource&) const = default;
};

std::string ZonePath(const char* name)
{
    if (name == nullptr)
        return "/etc/localtime";
    if (*name == ':')
        ++name;
    if (*name == '/')
        return name;
    const char* folder = std::getenv("TZDIR");
    return std::string(folder != nullptr ? folder : "/usr/share/zoneinfo") + '/' + name;
}

ZoneSource SystemSource(const char* name)
{
    ZoneSource source{.path = ZonePath(name)};
    struct stat file
    {
    };
    if (stat(source.path.c_str(), &file) == 0)
    {
        source.device = static_cast<std::int64_t>(file.st_dev);
        source.node = file.st_ino;
        source.modified = file.st_mtim.tv_sec * 1'000'000'000 + file.st_mtim.tv_nsec;
    }
    return source;
}

struct KnownZone
{
    KnownZone(ZoneSource readFrom, std::int64_t step) : source(std::move(readFrom)), zone(step) {}

    ZoneSource source;
    LocalZone zone;
    std::unique_ptr<KnownZone> older;
};

// Plain words and no objects with an end of their own: a conversion in some later static destructor finds nothing and
// reads the zone anew, instead of finding what is gone.
constinit TovMutex g_mutex;
constinit KnownZone* g_newest HYN_GUARDED_BY(g_mutex) = nullptr;
constinit std::atomic<const LocalZone*> g_current{nullptr};

struct ReleaseAtUnload
{
    ~ReleaseAtUnload()
    {
        const TovMutexLock lock(g_mutex);
        g_current.store(nullptr, std::memory_order_release);
        std::unique_ptr<KnownZone> zone(std::exchange(g_newest, nullptr));
        while (zone != nullptr)
            zone = std::move(zone->older);
    }
};
const ReleaseAtUnload g_releaseAtUnload;

const LocalZone& FindOrLearn() HYN_REQUIRES(g_mutex)
{
    const char* name = std::getenv("TZ");
    // Looked at before the C library looks: a file that is replaced in between will be read again next time.
    ZoneSource source = SystemSource(name);
    tzset();
    for (const KnownZone* known = g_newest; known != nullptr; known = known->older.get())
        if (known->source == source)
            return known->zone;
    const bool isWrittenOut = name != nullptr && std::strchr(name, ',') != nullptr;
    auto learnt = std::make_unique<KnownZone>(std::move(source), isWrittenOut ? kStepOfRules : kStepOfNamedZones);
    learnt->older.reset(g_newest);
    g_newest = learnt.release();
    return g_newest->zone;
}

// Without memory the zone stays what it was.
void ReadSystemZone() noexcept HYN_REQUIRES(g_mutex)
{
    try
    {
        g_current.store(&FindOrLearn(), std::memory_order_release);
    }
    catch (const std::bad_alloc&)
    {
    }
}
} // namespace

LocalZone::LocalZone(std::int64_t step)
{
    std::int64_t offset = OffsetAt(kLearnFrom);
    m_stretches.push_back({kLearnFrom, offset});
    for (std::int64_t from = kLearnFrom; from < kLearnTo; from += step)
        LearnChanges(from, from + step, OffsetAt(from + step));
    const auto byOffset = [](const Stretch& a, const Stretch& b)
    {
        return a.offset < b.offset;
    };
    const auto [least, greatest] = std::minmax_element(m_stretches.begin(), m_stretches.end(), byOffset);
    m_least = least->offset;
    m_greatest = greatest->offset;
    m_stretches.push_back({std::numeric_limits<std::int64_t>::max(), 0});
    MakeIndex();
}

// Each halving finds a change away from the last known offset; it need not be to the one at the end.
void LocalZone::LearnChanges(std::int64_t from, std::int64_t to, std::int64_t offsetAtEnd)
{
    while (m_stretches.back().offset != offsetAtEnd)
    {
        std::int64_t before = from;
        std::int64_t after = to;
        std::int64_t offsetAfter = offsetAtEnd;
        while (after - before > 1)
        {
            const std::int64_t middle = before + (after - before) / 2;
            const std::int64_t offset = OffsetAt(middle);
            if (offset == m_stretches.back().offset)
            {
                before = middle;
            }
            else
            {
                after = middle;
                offsetAfter = offset;
            }
        }
        m_stretches.push_back({after, offsetAfter});
        from = after;
    }
}

void LocalZone::MakeIndex()
{
    m_index.reserve(static_cast<std::size_t>((kLearnTo - kLearnFrom) >> kIndexShift) + 1);
    std::uint32_t i = 0;
    for (std::int64_t begin = kLearnFrom; begin < kLearnTo; begin += std::int64_t{1} << kIndexShift)
    {
        while (m_stretches[i + 1].begin <= begin)
            ++i;
        m_index.push_back(i);
    }
}

// The number of seconds from the year of `time` to one of the table that is like it.
std::int64_t LocalZone::ShiftIntoTable(std::int64_t time) noexcept
{
    const std::int64_t year = CivilFromSeconds(time).year;
    // Both runs of 28 years hold all kinds: neither crosses the end of a century without its leap year.
    std::int64_t like = year < kFirstYear ? kFirstYear : kEndYear - 28;
    while (YearKind(like) != YearKind(year))
        ++like;
    return (DaysFromCivil(like, 1, 1) - DaysFromCivil(year, 1, 1)) * kSecondsPerDay;
}

// In the order of time, so that the first moment wins. A skipped time may still be shown later, after another change
// back; only behind the last stretch that could show it is it known to be skipped.
std::int64_t LocalZone::FirstMoment(std::int64_t wall) const noexcept
{
    std::optional<std::int64_t> skipped;
    for (std::size_t i = Find(wall - m_greatest);; ++i)
    {
        const Stretch& stretch = m_stretches[i];
        const std::int64_t moment = wall - stretch.offset;
        if (moment < stretch.begin)
        {
            if (!skipped)
                skipped = wall - m_stretches[i - 1].offset;
            if (stretch.begin > wall - m_least)
                return *skipped;
        }
        else if (moment < m_stretches[i + 1].begin)
        {
            return moment;
        }
    }
}

const LocalZone* LocalZone::Current() noexcept
{
    if (const LocalZone* zone = g_current.load(std::memory_order_acquire))
        return zone;
    const TovMutexLock lock(g_mutex);
    if (g_current.load(std::memory_order_relaxed) == nullptr)
        ReadSystemZone();
    return g_current.load(std::memory_order_relaxed);
}
} // namespace Halyon::Linux

void TovTimeZoneChanged() noexcept
{
    using namespace Halyon::Linux;
    const Halyon::TovMutexLock lock(g_mutex);
    ReadSystemZone();
}
