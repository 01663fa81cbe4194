#include <array>
#include <chrono>
#include <climits>
#include <functional>
#include <ranges>

#include "ClientSupport.h"
#include "CodesOnly.h"

namespace HalyonTest
{
namespace
{
using namespace std::string_literals;
using std::chrono::nanoseconds;
using std::chrono::seconds;
using Moment = std::chrono::system_clock::time_point;
using Bytes = std::vector<std::byte>;

static_assert(std::ranges::input_range<Client::Rows>);
// What would change on its way is refused when it is compiled.
static_assert(!Client::Bindable<unsigned long> && !Client::Bindable<char> && !Client::Bindable<float> &&
              !Client::Bindable<std::optional<unsigned long long>> && !Client::Bindable<void*>);
static_assert(!Client::Readable<const char*> && !Client::Readable<short> && !Client::Readable<std::u16string_view> &&
              !Client::Readable<std::optional<std::string_view>> && !Client::Readable<const int>);

Bytes BytesOf(std::string_view text)
{
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
}

FILETIME Timestamp(std::uint16_t high, std::uint32_t low, std::uint16_t fraction)
{
    return std::bit_cast<FILETIME>(UTCDateTime{high, low, fraction});
}

// In the order of their declaration, so the pair of words tells all.
bool Same(const FILETIME& a, const FILETIME& b)
{
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}
template <class T>
bool Same(const T& a, const T& b)
{
    return a == b;
}

class ClientTest : public testing::Test
{
protected:
    // Through every road: bound and kept, passed to one run, read by index and by name, plain, optional and reused.
    template <class Out, class In>
    void RoundTrip(In in, const Out& out, const char* type)
    {
        SCOPED_TRACE(type + " of "s + __PRETTY_FUNCTION__);
        m_keep.bind(0, in).execute();
        m_pass.execute(std::optional<In>(in));
        int count = 0;
        for (Client::Row& row : m_query.query(in))
        {
            EXPECT_TRUE(Same(row.get<Out>(0), out));
            EXPECT_TRUE(Same(row.get<std::optional<Out>>(u"V").value(), out));
            EXPECT_TRUE(Same(std::get<0>(row.as<Out, std::string>()), out));
            EXPECT_EQ(row.get<std::string>(1), type);
            ++count;
        }
        EXPECT_EQ(count, 2);
        m_database.execute("DELETE FROM t");
    }

    Client::Connection m_database = Memory();
    bool m_made = (m_database.execute("CREATE TABLE t (v)"), true);
    Client::Command m_keep = m_database.prepare("INSERT INTO t VALUES (?)");
    Client::Command m_pass = m_database.prepare("INSERT INTO t VALUES (?)");
    Client::Command m_query = m_database.prepare("SELECT v, typeof(v) FROM t WHERE v IS ?");
};

TEST_F(ClientTest, EveryTypeComesBackAsItWent)
{
    RoundTrip<bool>(true, true, "integer");
    RoundTrip<bool>(false, false, "integer");
    RoundTrip<std::int32_t>(INT32_MIN, INT32_MIN, "integer");
    RoundTrip<std::uint32_t>(UINT32_MAX, UINT32_MAX, "integer");
    RoundTrip<long>(LONG_MIN, LONG_MIN, "integer");
    RoundTrip<long long>(INT64_MIN, INT64_MIN, "integer");
    RoundTrip<long long>(INT64_MAX, INT64_MAX, "integer");
    RoundTrip<int>(0, 0, "integer"); // not NULL
    RoundTrip<double>(0.1, 0.1, "real");
    RoundTrip<double>(0.0, 0.0, "real");
    RoundTrip<FILETIME>(Timestamp(0, 3061152000, 0), Timestamp(0, 3061152000, 0), "real"); // reads as NULL would
    RoundTrip<FILETIME>(Timestamp(1, 2, 3), Timestamp(1, 2, 3), "real");
    RoundTrip<std::u16string>(u"", u"", "text");
}

// A row a kind of text: what goes in, and what comes out as UTF-16 and as UTF-8.
TEST_F(ClientTest, TextIsTheSameInBothForms)
{
    const std::u16string wide = u"Š 日本 \U0001F30A";
    const std::string utf8 = "Š 日本 \U0001F30A";
    const std::u16string half = {u'a', 0xD800, u'b'}; // an unpaired surrogate
    const std::u16string longWide(3000, u'é');
    std::string longUTF8;
    for (int i = 0; i < 3000; ++i)
        longUTF8 += "é";

    RoundTrip<std::u16string>(wide, wide, "text");
    RoundTrip<std::string>(wide.c_str(), utf8, "text");
    RoundTrip<std::u16string>(utf8, wide, "text");
    RoundTrip<std::string>(std::string_view(utf8 + "cut").substr(0, utf8.size()), utf8, "text");
    RoundTrip<std::string>(std::u16string_view(wide + u"cut").substr(0, wide.size()), utf8, "text");
    RoundTrip<std::u16string>(CTovStringW(wide.c_str()), wide, "text");
    RoundTrip<std::u16string>(half, half, "text");
    RoundTrip<std::string>(half, "a\uFFFDb"s, "text");
    RoundTrip<std::u16string>("a\xFF"
                              "b",
                              u"a\uFFFDb"s, "text");
    RoundTrip<std::u16string>(longUTF8, longWide, "text");
    RoundTrip<std::string>(longWide, longUTF8, "text");
    RoundTrip<std::string>("", ""s, "text");
}

TEST_F(ClientTest, BytesAndNullsAreToldApart)
{
    RoundTrip<Bytes>(BytesOf("a\0b\0"s), BytesOf("a\0b\0"s), "blob");
    RoundTrip<Bytes>(std::span<const std::byte>(BytesOf("xyz")).first(2), BytesOf("xy"), "blob");

    Client::Rows rows = m_database.query("SELECT ?1, ?1, x'', '', 'a' || char(0) || 'b', x'610062', ?2, 'abc'", nullptr,
                                         std::optional<double>());
    const Client::Row& row = rows.row();
    EXPECT_EQ(row.get<std::optional<int>>(0), std::nullopt);
    EXPECT_EQ(row.get<std::optional<std::string>>(0), std::nullopt);
    EXPECT_EQ(row.get<std::optional<Moment>>(1), std::nullopt);
    EXPECT_EQ(row.get<std::optional<Bytes>>(1), std::nullopt);
    EXPECT_EQ(row.get<std::optional<std::u16string>>(6), std::nullopt);
    EXPECT_EQ(row.get<std::optional<Bytes>>(2), Bytes());
    EXPECT_EQ(row.get<std::optional<std::string>>(3), "");
    EXPECT_EQ(row.get<std::u16string>(4), u"a\0b"s);
    EXPECT_EQ(row.get<std::string>(4), "a\0b"s);
    std::u16string text;
    EXPECT_EQ(row.try_read(5, text), HYN_E_FAIL) << "three bytes are no units";
    EXPECT_EQ(row.try_read(0, text), HYN_E_SQNULLVALUE);
    EXPECT_EQ(row.get<int>(0), 0);
    EXPECT_EQ(row.get<Bytes>(0), Bytes());

    std::array<char16_t, 4> room{};
    EXPECT_EQ(row.try_read(7, std::span(room)), HYN_S_OK);
    EXPECT_EQ(U8(room.data()), "abc");
    EXPECT_EQ(row.try_read(7, std::span(room).first(3)), HYN_E_BUFFERTOOSMALL);
    std::array<std::byte, 3> bytes{};
    EXPECT_EQ(row.try_read(5, std::span(bytes).first(2)), HYN_E_FAIL);
    row.read(5, std::span(bytes));
    EXPECT_EQ(Bytes(bytes.begin(), bytes.end()), BytesOf("a\0b"s));
}

TEST_F(ClientTest, WhatTheInterfacesWouldCutIsRefused)
{
    for (const HynResult result :
         {m_keep.try_bind(0, u"a\0b"s), m_keep.try_bind(0, "a\0b"s), m_pass.try_execute(u"a\0b"s),
          m_keep.try_bind(0, Bytes()), m_pass.try_execute(Bytes()), m_keep.try_bind(1, 1), m_keep.try_bind(-1, "a"),
          m_keep.try_bind(INT32_MAX, "a"), m_keep.try_bind(0, static_cast<const char16_t*>(nullptr)),
          m_pass.try_execute(1, 2), m_database.try_execute("SELECT 1\0;"s),
          m_database.try_execute(static_cast<const char*>(nullptr))})
        EXPECT_EQ(result, HYN_E_FAIL);
}

TEST_F(ClientTest, MomentsAreExactToTheTimestamp)
{
    const Moment epoch;
    const auto exact = [&](std::int64_t second, std::int64_t parts) // of 1/65536 s
    {
        return epoch + seconds(second) + nanoseconds((parts * 1'000'000'000 + 32768) / 65536);
    };
    for (const Moment moment : {exact(0, 0), exact(-1, 65535), exact(978307200, 0), exact(978307200, 1),
                                exact(1'700'000'000, 32767), exact(-2'082'844'800, 1), exact(9'000'000'000, 65535)})
        RoundTrip<Moment>(moment, moment, "real");
    RoundTrip<Moment>(epoch + nanoseconds(7629), epoch, "real");
    RoundTrip<Moment>(epoch + nanoseconds(7630), exact(0, 1), "real");
    RoundTrip<Moment>(epoch - nanoseconds(1), epoch, "real");
    RoundTrip<Moment>(std::chrono::sys_days(std::chrono::year(2024) / 2 / 29), exact(1709164800, 0), "real");

    EXPECT_EQ(m_keep.try_bind(0, epoch - seconds(2'082'844'800)), HYN_E_FAIL) << "all zero bits";
    EXPECT_EQ(m_keep.try_bind(0, std::chrono::sys_days(std::chrono::year(1903) / 12 / 31)), HYN_E_FAIL);
    const std::pair<FILETIME, HynResult> stored[] = {
        {Timestamp(2, 0, 0), HYN_S_OK}, {Timestamp(3, 0, 0), HYN_E_FAIL}, {Timestamp(0, 0, 0), HYN_E_FAIL}};
    for (const auto& [timestamp, result] : stored)
    {
        Moment moment;
        EXPECT_EQ(m_database.query("SELECT ?", timestamp).row().try_read(0, moment), result);
    }
}

TEST_F(ClientTest, OtherTypesAreConvertedAsTheEngineDoes)
{
    const auto [text, word, number, real] =
        m_database.query("SELECT '12', 'word', 7, 2.5").row().as<int, double, std::string, bool>();
    EXPECT_EQ(text, 12);
    EXPECT_EQ(word, 0.0);
    EXPECT_EQ(number, "7");
    EXPECT_TRUE(real);
}

TEST_F(ClientTest, RowsAreARangeThatMayBeTakenInParts)
{
    Client::Command numbers =
        m_database.prepare("WITH RECURSIVE n(k) AS (SELECT 1 UNION ALL SELECT k + 1 FROM n WHERE k < ?) "
                           "SELECT k FROM n");
    std::string seen;
    Client::Rows rows = numbers.query(5);
    for (auto& row : rows)
    {
        if (row.get<int>(0) == 3)
            break;
        seen += row.get<std::string>(u"k");
    }
    EXPECT_EQ(seen, "12");
    EXPECT_EQ(rows.row().get<int>(0), 3) << "the row that was not wanted is still there";
    EXPECT_TRUE(rows.next() && rows.next() && !rows.next());
    EXPECT_TRUE(rows.at_end());
    EXPECT_EQ(rows.column_count(), 1);
    int value = 0;
    EXPECT_EQ(rows.row().try_read(0, value), HYN_E_FAIL) << "by index too";
    EXPECT_EQ(rows.row().try_read(u"k", value), HYN_E_FAIL);
}

TEST_F(ClientTest, CommandsRunAgainWithWhatStaysBound)
{
    Client::Command insert = m_database.prepare("INSERT INTO t VALUES (?1 || ?2)");
    insert.bind(0, "a").bind(1, std::string("b"));
    insert.execute();
    for (int i = 0; i < 3; ++i)
        insert.bind(1, std::string(static_cast<std::size_t>(i * 40), 'c')); // replaced; only the last one counts
    insert.execute();
    insert.execute(u"x", std::u16string(50, u'y')); // for this run, and read where it lies
    insert.execute();                               // NULL || NULL
    insert.bind(0, "p").execute("q");               // NULL again, behind the first
    insert.bind(1, "z").execute();
    std::string seen;
    for (auto& row : m_database.query("SELECT ifnull(substr(v, 1, 3), '-') FROM t ORDER BY rowid"))
        seen += row.get<std::string>(0) + " ";
    EXPECT_EQ(seen, "ab acc xyy - - - ");
}

TEST_F(ClientTest, OneCommandHasOneRunAtATime)
{
    m_database.execute("INSERT INTO t VALUES ('a'), ('b')");
    Client::Command query = m_database.prepare("SELECT v FROM t WHERE v <> ? ORDER BY v");
    query.bind(0, "none");
    Client::Rows rows = query.query();
    EXPECT_EQ(query.try_bind(0, "a"), HYN_E_FAIL);
    EXPECT_EQ(query.try_execute(), HYN_E_FAIL);
    EXPECT_EQ(query.try_execute("a"), HYN_E_FAIL);
    EXPECT_EQ(Thrown([&] { rows = query.query(); }), HYN_E_FAIL);
    EXPECT_TRUE(rows.next()) << "what was refused has not moved the rows";
    EXPECT_EQ(rows.row().get<std::string>(0), "b");
    EXPECT_EQ(query.try_query(rows, "a"), HYN_S_OK) << "closes them itself";
    EXPECT_EQ(rows.row().get<std::string>(0), "b");
    rows.close();
    EXPECT_EQ(query.try_execute(), HYN_S_OK);
}

TEST_F(ClientTest, ObjectsMayGoInAnyOrder)
{
    auto database = std::make_unique<Client::Connection>(Memory());
    database->execute("CREATE TABLE other (v)");
    database->execute("INSERT INTO other VALUES (?)", "kept");
    auto command = std::make_unique<Client::Command>(database->prepare("SELECT v FROM other WHERE v >= ?"));
    Client::Rows rows = command->query(std::u16string(100, u'A'));
    command.reset();
    database.reset();
    EXPECT_EQ(rows.row().get<std::string>(0), "kept");
    EXPECT_FALSE(rows.next()) << "compared with a text that lives on";
}

TEST_F(ClientTest, MovedFromObjectsRefuse)
{
    Client::Rows rows = m_database.query("SELECT 1");
    Client::Rows others = std::move(rows);
    Client::Command command = std::move(m_keep);
    Client::Connection database = std::move(m_database);
    EXPECT_EQ(others.row().get<int>(0), 1);
    Client::Rows& same = others;
    others = std::move(same);
    EXPECT_EQ(others.row().get<int>(0), 1) << "moved to itself";
    EXPECT_FALSE(others.next());

    int value = 0;
    for (const HynResult result :
         // NOLINTBEGIN(bugprone-use-after-move,clang-analyzer-cplusplus.Move): this is what is asked
         {rows.try_next(), rows.row().try_read(0, value), m_keep.try_bind(0, 1), m_keep.try_execute(),
          m_keep.try_query(others), m_database.try_execute("SELECT 1"), m_database.try_query(rows, "SELECT 1"),
          m_database.try_prepare(m_keep, "SELECT 1"), Client::Transaction().try_begin(m_database),
          Client::Transaction().try_commit(), database.try_open(Client::Module(), ":memory:")})
        EXPECT_EQ(result, HYN_E_FAIL);
    EXPECT_EQ(rows.column_count(), 0);
    EXPECT_EQ(m_database.last_insert_id(), 0);
    // NOLINTEND(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
    EXPECT_EQ(command.try_execute(1), HYN_S_OK);
    EXPECT_EQ(database.last_insert_id(), 1);
}

TEST_F(ClientTest, ErrorsTellActionCodeAndStatement)
{
    m_database.execute("CREATE TABLE u (v UNIQUE)");
    m_database.execute("INSERT INTO u VALUES (1)");
    Client::Command insert = m_database.prepare("INSERT INTO u VALUES (?)");
    Client::Rows rows = m_database.query("SELECT 'ü' UNION ALL SELECT abs(-9223372036854775807 - 1)");
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[&] { insert.execute(1); }, "executing failed with HYN_E_SQSTEP: INSERT INTO u VALUES (?)"},
        {[&] { insert.execute(1, 2); }, "binding parameter 1 failed with HYN_E_FAIL: INSERT INTO u VALUES (?)"},
        {[&] { insert.bind(7, 2); }, "binding parameter 7 failed with HYN_E_FAIL: INSERT INTO u VALUES (?)"},
        {[&] { m_database.execute(u"nonsense"); }, "executing failed with HYN_E_FAIL: nonsense"},
        {[&] { m_database.execute("nonsense", 1); }, "preparing failed with HYN_E_FAIL: nonsense"},
        {[&] { static_cast<void>(rows.row().get<int>(1)); },
         "reading column 1 failed with HYN_E_FAIL: SELECT 'ü' UNION ALL SELECT abs(-9223372036854775807 - 1)"},
        {[&] { static_cast<void>(rows.row().get<int>(u"x")); },
         "reading column x failed with HYN_E_FAIL: SELECT 'ü' UNION ALL SELECT abs(-9223372036854775807 - 1)"},
        {[&] { rows.next(); },
         "stepping failed with HYN_E_SQSTEP: SELECT 'ü' UNION ALL SELECT abs(-9223372036854775807 - 1)"},
        {[] { Client::Connection(Client::Module(HYNSQ_MODULE), "/no/such/folder/a.db"); },
         "opening failed with HYN_E_FAIL: /no/such/folder/a.db"},
    };
    for (const auto& [call, what] : cases)
    {
        try
        {
            call();
            ADD_FAILURE() << what;
        }
        catch (const Client::Error& error)
        {
            EXPECT_STREQ(error.what(), what);
            EXPECT_EQ(std::string(error.what()),
                      error.action() + " failed with " + HynResultName(error.code()) + ": " + error.sql());
        }
    }
    EXPECT_EQ(insert.try_execute(2), HYN_S_OK) << "and goes on";
}

TEST(ClientModuleTest, TellsWhyItCannotBeLoaded)
{
    std::string reason;
    Client::Module module;
    EXPECT_EQ(module.try_load("/no/such/module.so", &reason), HYN_E_FAIL);
    EXPECT_NE(reason.find("/no/such/module.so"), std::string::npos);
    EXPECT_EQ(module.try_load("libc.so.6", &reason), HYN_E_FAIL);
    EXPECT_NE(reason.find("MyDllGetClassObject"), std::string::npos);
    EXPECT_EQ(module.try_load(nullptr), HYN_E_FAIL) << "which is not the program itself";
    EXPECT_EQ(Thrown([] { Client::Module("/no/such/module.so"); }), HYN_E_FAIL);
}

TEST(ClientCodesTest, ServeWithoutExceptions)
{
    EXPECT_STREQ(RunWithoutExceptions(Memory().interface()), nullptr);
}
} // namespace
} // namespace HalyonTest
