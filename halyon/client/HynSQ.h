// A database as modern C++ would have it: the module's interfaces with values, ranges and scopes around them.
//
// For programs that use a database. Not for components that hand interfaces on: every object here gives its own with
// `interface()`, and a Connection can be made from one.
//
//     using namespace Halyon;
//     const Client::Module module("HynSQ.so");
//     Client::Connection database(module, "catalog.db");
//     {
//         Client::Transaction transaction(database);
//         Client::Command insert = database.prepare("INSERT INTO media (path, size, rating) VALUES (?, ?, ?)");
//         insert.execute("/home/ann/sea.jpg", 48211, std::nullopt);
//         insert.execute(u"/home/ann/harbour.jpg", 73904, 5);
//         transaction.commit();
//     }
//     for (auto& row : database.query("SELECT path, size, rating FROM media ORDER BY path"))
//     {
//         auto [path, size] = row.as<std::string, long long>();
//         auto rating = row.get<std::optional<int>>(u"rating");
//     }
//
// Errors: every call has two forms. `try_NAME` returns the HynResult of the interface and throws nothing but what the
// standard library throws for want of memory; what it makes comes out through its first argument. `NAME` throws Error
// for a negative code. A source that is compiled without exceptions has the first form alone, in classes of its own
// (HynSQForms.h); its range loops end at a failure, and `result()` of the rows tells.
//
// Ownership: objects hold what they need, down to the loaded module, and may go in any order. Only a Module that a raw
// interface came from must outlive it. What was moved from, and what was made without arguments, answers HYN_E_FAIL.
//
// Threads: a Module and a Connection may be used by any thread, a Connection object that is being changed excepted;
// commands, rows and transactions stay on the thread that made them, and end there.
#pragma once

#include <memory>
#include <new>
#include <string>
#include <utility>

#include <halyon/client/HynSQCommand.h>
#include <halyon/client/HynSQText.h>
#include <halyon/framework/HynIdentifiers.h>
#include <halyon/framework/MyDll.h>

namespace Halyon::Client
{
inline namespace HALYON_CLIENT_FORMS
{
// The loaded module, which makes connections. A value: copies share it, and it stays loaded as long as one of them or
// a connection, command or row set of it lives. [any]
class Module
{
public:
    Module() noexcept = default;

    // Loads the file at `path` (the system's bytes; a bare name is looked for where libraries are). HYN_E_FAIL: it
    // cannot be loaded or has no entry point; `*reason`, unless null, is why.
    HynResult try_load(const char* path, std::string* reason = nullptr)
    {
        auto file = std::make_shared<ModuleFile>();
        if (!file->Open(path, reason))
            return HYN_E_FAIL;
        auto* entry = reinterpret_cast<HynGetClassObjectProc>(file->Find(kHynGetClassObjectName));
        if (entry == nullptr)
        {
            if (reason != nullptr)
                *reason = std::string("it exports no ") + kHynGetClassObjectName;
            return HYN_E_FAIL;
        }
        m_file = std::move(file);
        m_entry = entry;
        return HYN_S_OK;
    }

#if defined(__cpp_exceptions)
    explicit Module(const char* path)
    {
        std::string reason;
        if (const HynResult result = try_load(path, &reason); HynFailed(result))
            throw Error(result, "loading the module", std::string(path != nullptr ? path : "") + ": " + reason);
    }
    explicit Module(const std::string& path) : Module(path.c_str()) {}
#endif

    // A module that the program has loaded by other means, and keeps loaded.
    explicit Module(HynGetClassObjectProc entry) noexcept : m_entry(entry) {}

private:
    friend class Connection;

    std::shared_ptr<const ModuleFile> m_file;
    HynGetClassObjectProc m_entry = nullptr;
};

// A connection to one database file. A value: copies speak to the same connection, each thread through a handle of its
// own, opened on first use. [any] but for the operations that change the object itself.
class Connection
{
public:
    Connection() noexcept = default;

    // Speaks to a connection that something else has made; takes a reference of its own. Its module must outlive this.
    explicit Connection(IHynSQConnection* connection) : m_connection(connection) {}

    // Makes a connection and opens the file, which the engine makes when it is missing. On failure this is as it was.
    HynResult try_open(const Module& module, const Text& path)
    {
        if (module.m_entry == nullptr)
            return HYN_E_FAIL;
        Connection made;
        void* object = nullptr;
        HynResult result = module.m_entry(CLSID_HynSQConnection, IID_IHynSQConnection, &object);
        if (HynFailed(result))
            return result;
        made.m_module = module.m_file;
        made.m_connection.Attach(static_cast<IHynSQConnection*>(object));
        result = made.m_connection->Connect(path.c_str(), u"", u"");
        if (HynSucceeded(result))
            *this = std::move(made);
        return result;
    }

    // Prepares the first statement of `sql`. On failure `command` is as it was. HYN_E_FAIL: also no memory.
    HynResult try_prepare(Command& command, const Text& sql) const
    {
        if (m_connection == nullptr || sql.c_str() == nullptr)
            return HYN_E_FAIL;
        const CHynAutoPtr<Detail::Statement> statement = new (std::nothrow) Detail::Statement(m_module, sql.c_str());
        if (statement == nullptr)
            return HYN_E_FAIL;
        const HynResult result = statement->Prepare(m_connection);
        if (HynSucceeded(result))
            command.m_statement = statement;
        return result;
    }

    // Runs the first statement of `sql` once. Prepare what runs more often.
    template <Bindable... Values>
    HynResult try_execute(const Text& sql, const Values&... values) const
    {
        if constexpr (sizeof...(Values) == 0)
            return m_connection == nullptr ? HYN_E_FAIL : m_connection->ExecuteSQL(sql.c_str());
        else
        {
            Command command;
            const HynResult result = try_prepare(command, sql);
            return HynFailed(result) ? result : command.try_execute(values...);
        }
    }

    template <Bindable... Values>
    HynResult try_query(Rows& rows, const Text& sql, const Values&... values) const
    {
        Command command;
        const HynResult result = try_prepare(command, sql);
        return HynFailed(result) ? result : command.try_query(rows, values...);
    }

    // Row id of the calling thread's last insert; 0 without one.
    [[nodiscard]] long long last_insert_id() const
    {
        return m_connection == nullptr ? 0 : m_connection->GetLastInsertID();
    }

    // Null when there is none. Borrowed.
    [[nodiscard]] IHynSQConnection* interface() const noexcept { return m_connection; }

#if defined(__cpp_exceptions)
    Connection(const Module& module, const Text& path)
    {
        Check(try_open(module, path), "opening", path);
    }

    [[nodiscard]] Command prepare(const Text& sql) const
    {
        Command command;
        Check(try_prepare(command, sql), "preparing", sql);
        return command;
    }

    template <Bindable... Values>
    void execute(const Text& sql, const Values&... values) const
    {
        if constexpr (sizeof...(Values) == 0)
            Check(try_execute(sql), "executing", sql);
        else
            prepare(sql).execute(values...);
    }

    template <Bindable... Values>
    [[nodiscard]] Rows query(const Text& sql, const Values&... values) const
    {
        return prepare(sql).query(values...);
    }
#endif

private:
    friend class Transaction;

#if defined(__cpp_exceptions)
    static void Check(HynResult result, const char* action, const Text& subject)
    {
        if (HynFailed(result)) [[unlikely]]
            throw Error(result, action, CTovStringW(subject.c_str()).ToUTF8());
    }
#endif

    std::shared_ptr<const ModuleFile> m_module; // goes last
    CHynAutoPtr<IHynSQConnection> m_connection;
};

// A transaction of the calling thread: what it wrote is rolled back at the end of its scope unless committed. [owner]
//
// Transactions do not nest: to begin a second one fails with HYN_E_SQSTEP, and the first is as it was. A commit that
// fails has rolled back.
class Transaction
{
public:
    enum class Kind
    {
        Exclusive, // locks everybody else out, from the start
        Read,      // one unchanging view of the database, for many small queries; nothing is written
    };

    Transaction() noexcept = default;
    ~Transaction() { try_rollback(); }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    // Waits while the database is busy, about 100 seconds. What this had begun before is rolled back first.
    HynResult try_begin(const Connection& connection, Kind kind = Kind::Exclusive)
    {
        try_rollback();
        IHynSQConnection* raw = connection.m_connection;
        if (raw == nullptr)
            return HYN_E_FAIL;
        HynResult result = kind == Kind::Exclusive ? raw->BeginTrans() : raw->ExecuteSQL(u"begin;");
        if (HynFailed(result))
            return result;
        m_connection = connection;
        m_kind = kind;
        if (kind == Kind::Read)
            result = raw->ExecuteSQL(u"SELECT 1 FROM sqlite_master LIMIT 1"); // the first reading takes the lock
        if (HynFailed(result))
            try_rollback();
        return result;
    }

    // HYN_E_FAIL: also when nothing has been begun.
    HynResult try_commit()
    {
        const Connection connection = std::move(m_connection);
        return connection.m_connection == nullptr ? HYN_E_FAIL : connection.m_connection->CommitTrans();
    }

    HynResult try_rollback()
    {
        const Connection connection = std::move(m_connection);
        if (connection.m_connection == nullptr)
            return HYN_S_OK;
        // A handle that met a busy database when it first read its tables takes the next rollback for a change of them,
        // and every prepared statement fails from then on. What was only read is the same after a commit.
        return m_kind == Kind::Read ? connection.m_connection->CommitTrans() : connection.m_connection->RollbackTrans();
    }

#if defined(__cpp_exceptions)
    explicit Transaction(const Connection& connection, Kind kind = Kind::Exclusive)
    {
        if (const HynResult result = try_begin(connection, kind); HynFailed(result))
            throw Error(result, "beginning a transaction", "");
    }

    void commit()
    {
        if (const HynResult result = try_commit(); HynFailed(result))
            throw Error(result, "committing", "");
    }
#endif

private:
    Connection m_connection; // none when nothing is open
    Kind m_kind = Kind::Exclusive;
};
} // namespace HALYON_CLIENT_FORMS
} // namespace Halyon::Client
