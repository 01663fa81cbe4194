// The module as a host meets it: loaded at run time, spoken to through its interfaces alone.
#include <stdexcept>

#include <dlfcn.h>

#include <halyon/database/IHynSQCommand.h>
#include <halyon/database/IHynSQConnection.h>
#include <halyon/database/IHynSQRecordSet.h>
#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/HynIdentifiers.h>
#include <halyon/framework/HynResult.h>
#include <halyon/framework/MyDll.h>
#include <halyon/platform/TovPCMac.h>

#include "Contender.h"

namespace Bench
{
namespace
{
using namespace Halyon;

void Check(HynResult result)
{
    if (HynFailed(result))
        throw std::runtime_error(std::string("module: ") + HynResultName(result));
}

void ReadByIndex(IHynSQRecordSet* rows, Record& record)
{
    std::uint32_t room = kPathRoom;
    std::uint32_t size = kPrintSize;
    long long wide = 0;
    HynResult result = rows->GetFieldValue(0, &wide);
    record.id = wide;
    result |= rows->GetFieldValue(1, record.path.data(), &room);
    result |= rows->GetFieldValue(2, &wide);
    record.size = wide;
    result |= rows->GetFieldValue(3, &record.taken);
    result |= rows->GetFieldValue(4, &record.rating);
    result |= rows->GetFieldValue(5, record.print.data(), &size);
    Check(result);
}

void ReadByName(IHynSQRecordSet* rows, Record& record)
{
    std::uint32_t room = kPathRoom;
    std::uint32_t size = kPrintSize;
    long long wide = 0;
    HynResult result = rows->GetFieldValue(u"id", &wide);
    record.id = wide;
    result |= rows->GetFieldValue(u"path", record.path.data(), &room);
    result |= rows->GetFieldValue(u"size", &wide);
    record.size = wide;
    result |= rows->GetFieldValue(u"taken", &record.taken);
    result |= rows->GetFieldValue(u"rating", &record.rating);
    result |= rows->GetFieldValue(u"print", record.print.data(), &size);
    Check(result);
}

using Reader = void (*)(IHynSQRecordSet*, Record&);

void Scan(IHynSQConnection* connection, Reader read, std::size_t count, Digest& digest)
{
    CHynAutoPtr<IHynSQRecordSet> rows;
    Check(connection->OpenRecordSet(Widen(kScan).c_str(), rows.Receive()));
    Record record;
    for (HynResult result = HYN_S_OK; count != 0 && result == HYN_S_OK; --count)
    {
        read(rows, record);
        digest.Add(record);
        result = rows->Next();
    }
}

class Module : public Contender
{
public:
    explicit Module(const std::string& module)
    {
        void* library = dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
            throw std::runtime_error(std::string("cannot load the module: ") + dlerror());
        m_getClassObject = reinterpret_cast<HynGetClassObjectProc>(dlsym(library, kHynGetClassObjectName));
        if (m_getClassObject == nullptr)
            throw std::runtime_error(std::string("no entry point in the module: ") + dlerror());
    }

    [[nodiscard]] bool SpeaksUTF16() const override { return true; }

    void Insert(const std::string& file, std::span<const Record> records) override
    {
        InsertWith(file, records,
                   [](IHynSQCommand* command, const Record& record)
                   {
                       return command->BindFieldValue(1, record.path.data()) |
                              command->BindFieldValue(5, const_cast<unsigned char*>(record.print.data()), kPrintSize);
                   });
    }

    void ScanByIndex(const std::string& file, std::size_t rows, Digest& digest) override
    {
        Scan(Connect(file), ReadByIndex, rows, digest);
    }

    void ScanByName(const std::string& file, std::size_t rows, Digest& digest) override
    {
        Scan(Connect(file), ReadByName, rows, digest);
    }

    void PointQueries(const std::string& file, std::span<const std::int64_t> ids, Digest& digest) override
    {
        const CHynAutoPtr<IHynSQConnection> connection = Connect(file);
        CHynAutoPtr<IHynSQCommand> command;
        Check(connection->CreateCommand(command.Receive()));
        Check(command->PrepareSQL(Widen(kPoint).c_str()));
        Record record;
        for (const std::int64_t id : ids)
        {
            Check(command->BindFieldValue(0, static_cast<long long>(id)));
            CHynAutoPtr<IHynSQRecordSet> rows;
            Check(command->OpenRecordSet(rows.Receive()));
            ReadByIndex(rows, record);
            digest.Add(record);
        }
    }

    void OneShots(const std::string& file, std::span<const std::u16string> texts) override
    {
        const CHynAutoPtr<IHynSQConnection> connection = Connect(file);
        Check(connection->ExecuteSQL(Widen(kFast).c_str()));
        Check(connection->BeginTrans());
        for (const std::u16string& text : texts)
            Check(connection->ExecuteSQL(text.c_str()));
        Check(connection->CommitTrans());
    }

    void ScanWide(const std::string& file, std::size_t rows, Digest& digest) override
    {
        std::array<std::u16string, kWideColumns> names;
        for (int column = 0; column < kWideColumns; ++column)
            names[static_cast<std::size_t>(column)] = Widen(WideName(column));

        const CHynAutoPtr<IHynSQConnection> connection = Connect(file);
        CHynAutoPtr<IHynSQRecordSet> set;
        Check(connection->OpenRecordSet(Widen(kWideScan).c_str(), set.Receive()));
        WideRecord record;
        for (HynResult step = HYN_S_OK; rows != 0 && step == HYN_S_OK; --rows)
        {
            HynResult result = HYN_S_OK;
            for (const int column : WideOrder())
            {
                const char16_t* name = names[static_cast<std::size_t>(column)].c_str();
                ReadWide(
                    column, record,
                    [&](std::int64_t& value)
                    {
                        long long wide = 0;
                        result |= set->GetFieldValue(name, &wide);
                        value = wide;
                    },
                    [&](double& value) { result |= set->GetFieldValue(name, &value); },
                    [&](std::span<char16_t> buffer)
                    {
                        auto room = static_cast<std::uint32_t>(buffer.size());
                        result |= set->GetFieldValue(name, buffer.data(), &room);
                    });
            }
            Check(result);
            digest.Add(record);
            step = set->Next();
        }
    }

    // One connection for both threads: it gives each a handle of its own.
    void ScanOnTwoThreads(const std::string& file, std::size_t rows, std::span<Digest, 2> digests) override
    {
        const CHynAutoPtr<IHynSQConnection> connection = Connect(file);
        OnTwoThreads([&] { Scan(connection, ReadByIndex, rows, digests[0]); },
                     [&] { Scan(connection, ReadByIndex, rows, digests[1]); });
    }

    void OpenOneRow(const std::string& file, std::size_t count, Digest& digest) override
    {
        const CHynAutoPtr<IHynSQConnection> connection = Connect(file);
        const std::u16string sql = Widen(kScan);
        Record record;
        for (; count != 0; --count)
        {
            CHynAutoPtr<IHynSQRecordSet> rows;
            Check(connection->OpenRecordSet(sql.c_str(), rows.Receive()));
            ReadByName(rows, record);
            digest.Add(record);
        }
    }

protected:
    // `bindTextAndBytes` binds parameters 1 and 5 of a record.
    template <class BindTextAndBytes>
    void InsertWith(const std::string& file, std::span<const Record> records, BindTextAndBytes bindTextAndBytes) const
    {
        const CHynAutoPtr<IHynSQConnection> connection = Connect(file);
        Check(connection->ExecuteSQL(Widen(kFast).c_str()));
        Check(connection->BeginTrans());
        CHynAutoPtr<IHynSQCommand> command;
        Check(connection->CreateCommand(command.Receive()));
        Check(command->PrepareSQL(Widen(kInsert).c_str()));
        for (const Record& record : records)
        {
            HynResult result = command->BindFieldValue(0, static_cast<long long>(record.id));
            result |= command->BindFieldValue(2, static_cast<long long>(record.size));
            result |= command->BindFieldValue(3, record.taken);
            result |= command->BindFieldValue(4, record.rating);
            result |= bindTextAndBytes(command, record);
            result |= command->ExecuteSQL();
            Check(result);
        }
        command = nullptr;
        Check(connection->CommitTrans());
    }

    [[nodiscard]] CHynAutoPtr<IHynSQConnection> Connect(const std::string& file) const
    {
        CHynAutoPtr<IHynSQConnection> connection;
        Check(m_getClassObject(CLSID_HynSQConnection, IID_IHynSQConnection,
                               reinterpret_cast<void**>(connection.Receive())));
        Check(connection->Connect(Widen(file).c_str(), u"", u""));
        return connection;
    }

private:
    HynGetClassObjectProc m_getClassObject = nullptr;
};

// What a program by hand does that wants its values to be values.
void ReadValues(IHynSQRecordSet* rows, Record& record)
{
    std::vector<std::byte> print;
    std::array<char16_t, kPathRoom> path;
    std::uint32_t bytes = 0;
    long long wide = 0;
    HynResult result = rows->GetFieldValue(0, &wide);
    record.id = wide;
    result |= rows->GetFieldValue(1, static_cast<void*>(nullptr), &bytes);
    result |= bytes <= sizeof path ? rows->GetFieldValue(1, static_cast<void*>(path.data()), &bytes) : HYN_E_FAIL;
    std::array<char, 3 * kPathRoom> local;
    const std::size_t length = TovTextToUTF8(path.data(), bytes / sizeof(char16_t), local.data(), local.size());
    const std::string text(local.data(), length);
    result |= rows->GetFieldValue(2, &wide);
    record.size = wide;
    result |= rows->GetFieldValue(3, &record.taken);
    result |= rows->GetFieldValue(4, &record.rating);
    result |= rows->GetFieldValue(5, static_cast<void*>(nullptr), &bytes);
    print.resize(bytes);
    result |= rows->GetFieldValue(5, static_cast<void*>(print.data()), &bytes);
    Check(result);
    Fill(record, text, print);
}

class ModuleByValue : public Module
{
public:
    using Module::Module;

    void Insert(const std::string& file, std::span<const Record> records) override
    {
        // Two of each: the statement reads the old one until the new one is bound.
        std::array<std::u16string, 2> paths;
        std::array<std::vector<unsigned char>, 2> prints;
        std::size_t turn = 0;
        InsertWith(file, records,
                   [&](IHynSQCommand* command, const Record& record)
                   {
                       std::u16string& path = paths[turn];
                       std::vector<unsigned char>& print = prints[turn];
                       turn ^= 1;
                       path.assign(record.path.data(), tov_wcslen(record.path.data()));
                       print.assign(record.print.begin(), record.print.end());
                       return command->BindFieldValue(1, path.c_str()) |
                              command->BindFieldValue(5, print.data(), kPrintSize);
                   });
    }

    void ScanByIndex(const std::string& file, std::size_t rows, Digest& digest) override
    {
        Scan(Connect(file), ReadValues, rows, digest);
    }
};
} // namespace

std::unique_ptr<Contender> MakeModule(const std::string& module)
{
    return std::make_unique<Module>(module);
}

std::unique_ptr<Contender> MakeModuleByValue(const std::string& module)
{
    return std::make_unique<ModuleByValue>(module);
}
} // namespace Bench
