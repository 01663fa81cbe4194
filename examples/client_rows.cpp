// Fills a table and walks its rows through the client's headers.
#include <cstdio>
#include <optional>
#include <string>

#include <halyon/client/HynSQ.h>

using namespace Halyon;

int main(int argc, char** argv)
try
{
    const Client::Module module(argc > 1 ? argv[1] : "HynSQ.so");
    const Client::Connection database(module, ":memory:");
    database.execute("CREATE TABLE media (path TEXT, size INTEGER, rating INTEGER)");
    {
        Client::Transaction transaction(database); // rolled back unless committed
        Client::Command insert = database.prepare("INSERT INTO media (path, size, rating) VALUES (?, ?, ?)");
        insert.execute("/home/ann/sea.jpg", 48211, std::nullopt);
        insert.execute(u"/home/ann/harbour.jpg", 73904, 5);
        transaction.commit();
    }
    for (auto& row : database.query("SELECT path, size, rating FROM media WHERE size > ? ORDER BY path", 10000))
    {
        const auto [path, size] = row.as<std::string, long long>();
        const int stars = row.get<std::optional<int>>(u"rating").value_or(0);
        std::printf("%8lld  %5.*s  %s\n", size, stars, "*****", path.c_str());
    }
    return 0;
}
catch (const Client::Error& error)
{
    return std::fprintf(stderr, "%s\n", error.what()), 1;
}
