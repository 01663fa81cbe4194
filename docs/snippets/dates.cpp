// The snippets of docs/dates.md; prints docs/snippets/dates.out.
//   dates MODULE
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include <halyon/client/HynSQ.h>
#include <halyon/database/IHynSQCommand.h>
#include <halyon/database/IHynSQRecordSet.h>
#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/platform/DateTimeUtils.h>
#include <halyon/tools/CHynPubTools.h>

using namespace Halyon;

namespace
{
// [text]
void Print(const char* what, const FILETIME& moment)
{
    const CTovStringW text =
        CHynPubTools::FileTimeToString(u"%04d-%02d-%02d %02d:%02d:%02d", &moment);
    std::printf("%-26s %s\n", what, text.ToUTF8().c_str());
}
// [text]

void LiveIn(const char* zone)
{
    // [zone]
    setenv("TZ", zone, 1);
    TovTimeZoneChanged();
    // [zone]
    std::printf("\n%s\n", zone);
}

// [wall]
FILETIME AtWallClock(std::int16_t year, std::int16_t month, std::int16_t day, std::int16_t hour,
                     std::int16_t minute)
{
    LongDateRec fields = {};
    fields.year = year;
    fields.month = month;
    fields.day = day;
    fields.hour = hour;
    fields.minute = minute;

    LongDateTime local = 0;
    CFAbsoluteTime seconds = 0;
    LongDateToSeconds(&fields, &local);
    UCConvertLongDateTimeToCFAbsoluteTime(local, &seconds);
    FILETIME moment;
    CHynPubTools::ConvertToFileTime(&moment, seconds);
    return moment;
}
// [wall]

void Store(IHynSQConnection* connection)
{
    connection->ExecuteSQL(u"CREATE TABLE media (path TEXT, taken REAL)");
    FILETIME taken = AtWallClock(2024, 3, 7, 18, 30);

    // [store]
    CHynAutoPtr<IHynSQCommand> insert;
    connection->CreateCommand(insert.Receive());
    insert->PrepareSQL(u"INSERT INTO media (path, taken) VALUES (?, ?)");
    insert->BindFieldValue(0, u"/home/ann/sea.jpg");
    insert->BindFieldValue(1, &taken);
    insert->ExecuteSQL();

    CHynAutoPtr<IHynSQRecordSet> rows;
    connection->OpenRecordSet(u"SELECT taken, datetime(taken + 978307200, 'unixepoch') FROM media",
                              rows.Receive());
    FILETIME back;
    double seconds = 0;
    char16_t utc[32];
    std::uint32_t room = 32;
    rows->GetFieldValue(0, &back);
    rows->GetFieldValue(0, &seconds);
    rows->GetFieldValue(1, utc, &room);
    // [store]

    Print("local", back);
    std::printf("%-26s %.1f\n", "in the database", seconds);
    std::printf("%-26s %s\n", "as the engine tells it", CTovStringW(utc).ToUTF8().c_str());
}

void Days()
{
    // [days]
    FILETIME midnight;
    CHynPubTools::ConvertToFileTimeDW(&midnight, 20240307);
    const std::uint32_t day = CHynPubTools::ConvertFromFileTimeDW(&midnight); // 20240307
    const std::uint16_t weekday = CHynPubTools::GetDayofweek(2024, 3, 7);     // 4, a Thursday
    // [days]
    std::printf("%-26s %u, weekday %u\n", "packed", day, weekday);
    CHynPubTools::ConvertToFileTimeDW(&midnight, 20240230);
    Print("the 30th of February", midnight);
}

void Failures()
{
    FILETIME moment;
    CHynPubTools::ConvertToFileTime(&moment, std::nan(""));
    std::printf("%-26s %08x %08x\n", "not a number", moment.dwLowDateTime, moment.dwHighDateTime);
    CHynPubTools::ConvertToFileTime(&moment, -3061152001.0);
    std::printf("%-26s %08x %08x\n", "before 1904", moment.dwLowDateTime, moment.dwHighDateTime);
    std::printf("%-26s %.1f\n", "no FILETIME", CHynPubTools::ConvertFromFileTime(nullptr));
    std::printf("%-26s \"%s\"\n", "a format with text in it",
                CHynPubTools::FileTimeToString(u"%s", &moment).ToUTF8().c_str());
}
} // namespace

int main(int argc, char** argv)
try
{
    const Client::Module module(argc > 1 ? argv[1] : "HynSQ.so");
    const Client::Connection connection(module, ":memory:");

    LiveIn("Asia/Tokyo");
    Store(connection.interface());
    Days();

    LiveIn("America/New_York");
    Print("10 March 2024, 02:30", AtWallClock(2024, 3, 10, 2, 30));
    const FILETIME first = AtWallClock(2024, 11, 3, 1, 30);
    const FILETIME after = AtWallClock(2024, 11, 3, 2, 30);
    const double hours =
        (CHynPubTools::ConvertFromFileTime(&after) - CHynPubTools::ConvertFromFileTime(&first)) /
        3600;
    std::printf("%-26s %.0f hours\n", "3 November, 01:30 to 02:30", hours);

    LiveIn("America/Sao_Paulo");
    FILETIME midnight;
    CHynPubTools::ConvertToFileTimeDW(&midnight, 20181104);
    Print("4 November 2018 begins", midnight);
    Failures();
}
catch (const std::exception& error)
{
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
