// The client as a source compiled without exceptions sees it.
#include "CodesOnly.h"

#include <halyon/client/HynSQ.h>

#if defined(__cpp_exceptions)
#error "this source is compiled with -fno-exceptions"
#endif

namespace HalyonTest
{
using namespace Halyon;

namespace
{
template <class T>
concept Throws = requires(T& object)
{
    object.execute("x");
};
static_assert(!Throws<Client::Connection> && !Throws<Client::Command>);

const char* Fill(const Client::Connection& database)
{
    Client::Transaction transaction;
    Client::Command insert;
    if (HynFailed(transaction.try_begin(database)) ||
        HynFailed(database.try_execute("CREATE TABLE t (k INTEGER PRIMARY KEY, v TEXT)")) ||
        HynFailed(database.try_prepare(insert, "INSERT INTO t VALUES (?, ?)")))
        return "beginning";
    for (int k = 1; k <= 3; ++k)
    {
        if (HynFailed(insert.try_execute(k, k == 2 ? nullptr : u"x")) != (k == 2))
            return "a null pointer, and nothing else, is refused as text";
    }
    if (insert.try_execute(1, "again") != HYN_E_SQSTEP)
        return "a constraint";
    return HynFailed(transaction.try_commit()) ? "committing" : nullptr;
}

const char* Read(const Client::Connection& database)
{
    Client::Rows rows;
    if (HynFailed(database.try_query(rows, "SELECT k, v FROM t")))
        return "opening";
    long long sum = 0;
    for (auto& row : rows)
    {
        std::string text;
        if (HynFailed(row.try_as(sum, text)) || text != "x")
            return "reading";
    }
    if (sum != 3 || rows.result() != HYN_S_FALSE)
        return "the end";
    if (HynFailed(database.try_query(rows, "SELECT 1 UNION ALL SELECT abs(-9223372036854775807 - 1)")))
        return "opening what fails later";
    int count = 0;
    for ([[maybe_unused]] auto& row : rows)
        ++count;
    return count == 1 && rows.result() == HYN_E_SQSTEP ? nullptr : "a failed step ends the loop and is told";
}
} // namespace

const char* RunWithoutExceptions(Halyon::IHynSQConnection* connection)
{
    const Client::Connection database(connection);
    const char* fault = Fill(database);
    return fault != nullptr ? fault : Read(database);
}
} // namespace HalyonTest
