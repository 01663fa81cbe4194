// A database as the host's subcommands use it: the client's connection, and the file that it is open on.
//
// Not for what the client has already: a Database is a connection, and prepares, queries and executes as one. It may be
// shared by threads; commands and rows stay on the thread that made them.
#pragma once

#include <string>

#include <halyon/client/HynSQ.h>

namespace HynHost
{
using DatabaseError = Halyon::Client::Error;
using Halyon::Client::Command;
using Halyon::Client::Row;
using Halyon::Client::Rows;

class Database : public Halyon::Client::Connection
{
public:
    // Loads the module and connects. The engine makes a missing file; opening reads nothing of one that exists.
    explicit Database(const std::string& file);

    [[nodiscard]] const std::string& File() const noexcept { return m_file; }

private:
    std::string m_file;
};

// The client's transaction with errors that name the file: at the end of its scope what it wrote is rolled back unless
// committed.
class Transaction
{
public:
    using Kind = Halyon::Client::Transaction::Kind;

    // Waits while the database is busy, about 100 seconds. Throws HostError when it stays so. What an exclusive one has
    // committed outlasts a power cut.
    explicit Transaction(Database& database, Kind kind = Kind::Exclusive);

    void Commit();

private:
    Database& m_database;
    Halyon::Client::Transaction m_transaction;
};
} // namespace HynHost
