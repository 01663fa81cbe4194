// The snippet of docs/write-a-host.md on the client layer; prints docs/snippets/client.out.
//   client MODULE
#include <cstdio>
#include <optional>
#include <string>

#include <halyon/client/HynSQ.h>

// [client]
using namespace Halyon;

static void Use(const char* path)
{
    const Client::Module module(path);
    const Client::Connection database(module, "media.db");
    database.execute("CREATE TABLE media (path TEXT PRIMARY KEY, size INTEGER, rating INTEGER)");
    {
        Client::Transaction transaction(database);
        Client::Command insert =
            database.prepare("INSERT INTO media (path, size, rating) VALUES (?, ?, ?)");
        insert.execute("/home/ann/sea.jpg", 48211, std::nullopt);
        insert.execute(u"/home/ann/harbour.jpg", 73904, 5);
        transaction.commit(); // without it the end of the scope rolls back
    }
    for (auto& row : database.query("SELECT path, size, rating FROM media ORDER BY path"))
    {
        auto [name, size] = row.as<std::string, long long>();
        const bool isRated = row.get<std::optional<int>>(u"rating").has_value();
        std::printf("%8lld  %s%s\n", size, name.c_str(), isRated ? "" : ", not rated");
    }
    database.execute("INSERT INTO media (path) VALUES ('/home/ann/sea.jpg')");
}

int main(int argc, char** argv)
try
{
    Use(argc > 1 ? argv[1] : "HynSQ.so");
}
catch (const Client::Error& error)
{
    std::printf("%s\n", error.what());
}
// [client]
