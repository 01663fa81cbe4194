// A million moments between 1990 and 2030, in no order, to local calendar fields and back: one thread, and two at once.
// Beside the C library, which is the reference, stand the libraries that a program would use instead.
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <random>
#include <vector>

#include <QDateTime>
#include <absl/time/time.h>
#include <benchmark/benchmark.h>
#include <unicode/gregocal.h>

#include <halyon/platform/DateTimeUtils.h>
#include <halyon/platform/TovPCMac.h>

namespace
{
constexpr const char* kZones[] = {"Asia/Tokyo", "America/New_York"};

struct Fields
{
    int year;
    int month;
    int day;
    int hour;
    int minute;
    int second;
};

class ByHalyon
{
public:
    Fields ToFields(std::int64_t moment) const
    {
        Halyon::LongDateTime local = 0;
        Halyon::UCConvertCFAbsoluteTimeToLongDateTime(static_cast<double>(moment - kFrom1970To2001), &local);
        Halyon::LongDateRec date;
        Halyon::LongSecondsToDate(&local, &date);
        return {date.year, date.month, date.day, date.hour, date.minute, date.second};
    }
    std::int64_t ToMoment(const Fields& fields) const
    {
        Halyon::LongDateRec date{};
        date.year = static_cast<std::int16_t>(fields.year);
        date.month = static_cast<std::int16_t>(fields.month);
        date.day = static_cast<std::int16_t>(fields.day);
        date.hour = static_cast<std::int16_t>(fields.hour);
        date.minute = static_cast<std::int16_t>(fields.minute);
        date.second = static_cast<std::int16_t>(fields.second);
        Halyon::LongDateTime local = 0;
        Halyon::LongDateToSeconds(&date, &local);
        double seconds = 0.0;
        Halyon::UCConvertLongDateTimeToCFAbsoluteTime(local, &seconds);
        return static_cast<std::int64_t>(seconds) + kFrom1970To2001;
    }

private:
    static constexpr std::int64_t kFrom1970To2001 = Halyon::kSecondsFrom1904To2001 - Halyon::kSecondsFrom1904To1970;
};

class ByCLibrary
{
public:
    Fields ToFields(std::int64_t moment) const
    {
        const std::time_t time = moment;
        std::tm tm{};
        localtime_r(&time, &tm);
        return {tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec};
    }
    std::int64_t ToMoment(const Fields& fields) const
    {
        std::tm tm{};
        tm.tm_year = fields.year - 1900;
        tm.tm_mon = fields.month - 1;
        tm.tm_mday = fields.day;
        tm.tm_hour = fields.hour;
        tm.tm_min = fields.minute;
        tm.tm_sec = fields.second;
        tm.tm_isdst = -1;
        return std::mktime(&tm);
    }
};

class ByAbseil
{
public:
    Fields ToFields(std::int64_t moment) const
    {
        const absl::CivilSecond civil = m_zone.At(absl::FromUnixSeconds(moment)).cs;
        return {
            static_cast<int>(civil.year()), civil.month(), civil.day(), civil.hour(), civil.minute(), civil.second()};
    }
    std::int64_t ToMoment(const Fields& fields) const
    {
        const absl::CivilSecond civil(fields.year, fields.month, fields.day, fields.hour, fields.minute, fields.second);
        return absl::ToUnixSeconds(m_zone.At(civil).pre);
    }

private:
    absl::TimeZone m_zone = absl::LocalTimeZone();
};

class ByIcu
{
public:
    ByIcu() : m_calendar(new icu::GregorianCalendar(icu::TimeZone::createTimeZone(std::getenv("TZ")), m_status)) {}
    Fields ToFields(std::int64_t moment)
    {
        m_calendar->setTime(static_cast<double>(moment) * 1000.0, m_status);
        return {Get(UCAL_YEAR),        Get(UCAL_MONTH) + 1, Get(UCAL_DATE),
                Get(UCAL_HOUR_OF_DAY), Get(UCAL_MINUTE),    Get(UCAL_SECOND)};
    }
    std::int64_t ToMoment(const Fields& fields)
    {
        m_calendar->clear();
        m_calendar->set(fields.year, fields.month - 1, fields.day, fields.hour, fields.minute, fields.second);
        return static_cast<std::int64_t>(m_calendar->getTime(m_status) / 1000.0);
    }

private:
    int Get(UCalendarDateFields field) { return m_calendar->get(field, m_status); }

    UErrorCode m_status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> m_calendar;
};

class ByQt
{
public:
    Fields ToFields(std::int64_t moment) const
    {
        const QDateTime local = QDateTime::fromSecsSinceEpoch(moment);
        Fields fields{};
        local.date().getDate(&fields.year, &fields.month, &fields.day);
        const QTime time = local.time();
        return {fields.year, fields.month, fields.day, time.hour(), time.minute(), time.second()};
    }
    std::int64_t ToMoment(const Fields& fields) const
    {
        return QDateTime(QDate(fields.year, fields.month, fields.day), QTime(fields.hour, fields.minute, fields.second))
            .toSecsSinceEpoch();
    }
};

const std::vector<std::int64_t>& Moments()
{
    static const std::vector<std::int64_t> moments = []
    {
        std::mt19937_64 engine(20240307);
        std::uniform_int_distribution<std::int64_t> between(631152000, 1893456000);
        std::vector<std::int64_t> list(1'000'000);
        for (std::int64_t& moment : list)
            moment = between(engine);
        return list;
    }();
    return moments;
}

void UseZone(const benchmark::State& state)
{
    setenv("TZ", kZones[state.range(0)], 1);
    tzset();
    TovTimeZoneChanged();
    Moments();
}

template <class By>
void ToFields(benchmark::State& state)
{
    By by;
    for (auto _ : state)
        for (const std::int64_t moment : Moments())
            benchmark::DoNotOptimize(by.ToFields(moment));
    state.SetLabel(kZones[state.range(0)]);
}

// What comes back is compared: a clock that shows a time twice may mean either moment.
template <class By>
void ToMoment(benchmark::State& state)
{
    By by;
    ByCLibrary reference;
    std::vector<Fields> walls;
    walls.reserve(Moments().size());
    for (const std::int64_t moment : Moments())
        walls.push_back(reference.ToFields(moment));
    std::int64_t sum = 0;
    for (auto _ : state)
        for (const Fields& wall : walls)
            sum += by.ToMoment(wall);
    benchmark::DoNotOptimize(sum);
    for (std::size_t i = 0; i < 1000; ++i)
        if (std::abs(by.ToMoment(walls[i]) - Moments()[i]) > 3600)
            state.SkipWithError("does not come back");
    state.SetLabel(kZones[state.range(0)]);
}

// One iteration is the million, so that the figures in milliseconds are nanoseconds a conversion.
void Configure(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Setup(UseZone)->DenseRange(0, 1)->Threads(1)->Threads(2)->Iterations(1)->UseRealTime();
    benchmark->Unit(benchmark::kMillisecond);
}
BENCHMARK_TEMPLATE(ToFields, ByHalyon)->Apply(Configure);
BENCHMARK_TEMPLATE(ToFields, ByCLibrary)->Apply(Configure);
BENCHMARK_TEMPLATE(ToFields, ByAbseil)->Apply(Configure);
BENCHMARK_TEMPLATE(ToFields, ByIcu)->Apply(Configure);
BENCHMARK_TEMPLATE(ToFields, ByQt)->Apply(Configure);
BENCHMARK_TEMPLATE(ToMoment, ByHalyon)->Apply(Configure);
BENCHMARK_TEMPLATE(ToMoment, ByCLibrary)->Apply(Configure);
BENCHMARK_TEMPLATE(ToMoment, ByAbseil)->Apply(Configure);
BENCHMARK_TEMPLATE(ToMoment, ByIcu)->Apply(Configure);
BENCHMARK_TEMPLATE(ToMoment, ByQt)->Apply(Configure);
} // namespace
