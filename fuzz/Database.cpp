// SQL, bound values and what is read back, through the interfaces. Columns are read by index and by name, each reading
// into a buffer of exactly the size that it is told.

#include <array>
#include <bit>
#include <deque>
#include <vector>

#include <sqlite3.h>

#include <halyon/database/CHynSQCommand.h>
#include <halyon/database/CHynSQConnection.h>
#include <halyon/database/IHynSQRecordSet.h>
#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/HynResult.h>
#include <halyon/platform/TovPCMac.h>

#include "Input.h"

using namespace Halyon;
using HalyonFuzz::Hold;

namespace
{
// No file is touched, nothing of the process is set, and no statement runs for ever.
int Authorize(void* /*self*/, int action, const char* name, const char* /*b*/, const char* /*c*/, const char* /*d*/)
{
    if (action == SQLITE_ATTACH)
        return SQLITE_DENY;
    if (action == SQLITE_PRAGMA)
    {
        for (const char* denied : {"hard_heap_limit", "soft_heap_limit", "temp_store_directory", "writable_schema"})
        {
            if (sqlite3_stricmp(name, denied) == 0)
                return SQLITE_DENY;
        }
    }
    return SQLITE_OK;
}

void Bound(sqlite3* database, int& steps)
{
    steps = 200;
    sqlite3_set_authorizer(database, Authorize, nullptr);
    sqlite3_progress_handler(
        database, 100, [](void* left) { return --*static_cast<int*>(left) <= 0 ? 1 : 0; }, &steps);
    sqlite3_limit(database, SQLITE_LIMIT_LENGTH, 100000);
    sqlite3_limit(database, SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_limit(database, SQLITE_LIMIT_EXPR_DEPTH, 100);
    TovSetSleepProc([](std::uint64_t) {});
}

template <class Number>
void ReadNumber(IHynSQRecordSet* rows, std::int32_t index, const char16_t* name)
{
    Number byIndex{};
    Number byName{};
    const HynResult result = rows->GetFieldValue(index, &byIndex);
    Hold(rows->GetFieldValue(name, &byName) == result, "both ways of reading a number end alike");
    using Bits = std::array<std::uint8_t, sizeof(Number)>; // not-a-number is no other than itself
    Hold(std::bit_cast<Bits>(byIndex) == std::bit_cast<Bits>(byName), "both ways of reading a number agree");
}

void ReadText(IHynSQRecordSet* rows, std::int32_t index, const char16_t* name, std::uint32_t room)
{
    const HalyonFuzz::Buffer byIndex(room);
    const HalyonFuzz::Buffer byName(room);
    std::uint32_t length = room;
    const HynResult result = rows->GetFieldValue(index, static_cast<char16_t*>(byIndex), &length);
    Hold(rows->GetFieldValue(name, static_cast<char16_t*>(byName), &length) == result && length == room,
         "both ways of reading a text end alike");
    if (HynSucceeded(result))
        Hold(byIndex.Text() == byName.Text() && byIndex.Text().size() < room, "both ways of reading a text agree");
}

void ReadBytes(IHynSQRecordSet* rows, std::int32_t index, const char16_t* name)
{
    std::uint32_t size = 0;
    Hold(rows->GetFieldValue(index, static_cast<void*>(nullptr), &size) == HYN_S_OK, "bytes have a size");
    const std::unique_ptr<std::uint8_t[]> byIndex(new std::uint8_t[size + 1]);
    const std::unique_ptr<std::uint8_t[]> byName(new std::uint8_t[size + 1]);
    std::uint32_t room = size;
    Hold(rows->GetFieldValue(index, static_cast<void*>(byIndex.get()), &room) == HYN_S_OK, "bytes fit into their size");
    Hold(rows->GetFieldValue(name, static_cast<void*>(byName.get()), &room) == HYN_S_OK &&
             std::memcmp(byIndex.get(), byName.get(), size) == 0,
         "both ways of reading bytes agree");
    if (size == 0)
        return;
    room = size - 1;
    const std::unique_ptr<std::uint8_t[]> less(new std::uint8_t[size]);
    Hold(rows->GetFieldValue(index, static_cast<void*>(less.get()), &room) == HYN_E_FAIL, "bytes do not fit into less");
}

// A bounded session: commands and their record sets on one connection.
class Session
{
public:
    Session()
    {
        Hold(m_connection->Connect(u":memory:", u"", u"") == HYN_S_OK, "a database in memory opens");
        Bound(m_connection->GetSQdb(), m_steps);
        Hold(m_connection->CreateCommand(m_command.Receive()) == HYN_S_OK, "a connection makes commands");
    }

    void Step(HalyonFuzz::Input& input)
    {
        const auto code = input.Take<std::uint8_t>();
        switch (code % 8)
        {
        case 0:
            m_connection->ExecuteSQL(input.TakeText().c_str());
            break;
        case 1:
            m_command->PrepareSQL(input.TakeText().c_str());
            break;
        case 2:
            Bind(input, code / 8);
            break;
        case 3:
            m_command->ExecuteSQL();
            break;
        case 4:
            m_rows = nullptr;
            m_command->OpenRecordSet(m_rows.Receive());
            break;
        case 5:
            if (m_rows != nullptr)
                code / 8 % 4 == 0 ? m_rows->Reset() : m_rows->Next();
            break;
        case 6:
            Read(input.Take<std::uint8_t>());
            break;
        default:
            Other(input, code / 8);
        }
    }

private:
    void Bind(HalyonFuzz::Input& input, unsigned kind)
    {
        const auto index = static_cast<std::int8_t>(input.Take<std::uint8_t>());
        switch (kind % 7)
        {
        case 0:
            m_command->BindFieldValue(index, input.Take<std::int32_t>());
            break;
        case 1:
            m_command->BindFieldValue(index, input.Take<std::uint32_t>());
            break;
        case 2:
            m_command->BindFieldValue(index, static_cast<long long>(input.Take<std::uint64_t>()));
            break;
        case 3:
            m_command->BindFieldValue(index, input.Take<double>());
            break;
        case 4:
            m_command->BindFieldValue(index, m_texts.emplace_back(input.TakeText()).c_str());
            break;
        case 5:
        {
            FILETIME moment = {input.Take<std::uint32_t>(), input.Take<std::uint32_t>()};
            m_command->BindFieldValue(index, &moment);
            break;
        }
        default:
            std::string& bytes = m_bytes.emplace_back(input.TakeBytes());
            m_command->BindFieldValue(index, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        }
    }

    void Read(std::uint32_t room)
    {
        sqlite3_stmt* statement = static_cast<CHynSQCommand*>(m_command.operator IHynSQCommand*())->GetSQstmt();
        if (m_rows == nullptr || m_rows->IsEof() != 0 || statement == nullptr)
            return;
        std::vector<std::u16string> names;
        for (std::int32_t k = 0; k < m_rows->GetFieldCount(); ++k)
        {
            const void* name = sqlite3_column_name16(statement, k);
            names.emplace_back(name == nullptr ? u"" : static_cast<const char16_t*>(name));
            const auto isSame = [&](const std::u16string& other)
            {
                return tov_wcscmpi(other.c_str(), names.back().c_str()) == 0;
            };
            if (names.back().empty() || !std::none_of(names.begin(), names.end() - 1, isSame))
                continue; // the name stands for nothing, or for an earlier column
            const char16_t* text = names.back().c_str();
            ReadNumber<std::int32_t>(m_rows, k, text);
            ReadNumber<std::uint32_t>(m_rows, k, text);
            ReadNumber<long long>(m_rows, k, text);
            ReadNumber<double>(m_rows, k, text);
            ReadNumber<FILETIME>(m_rows, k, text);
            ReadBytes(m_rows, k, text);
            ReadText(m_rows, k, text, room);
        }
    }

    void Other(HalyonFuzz::Input& input, unsigned kind)
    {
        switch (kind % 6)
        {
        case 0:
            m_connection->BeginTrans();
            break;
        case 1:
            m_connection->CommitTrans();
            break;
        case 2:
            m_connection->RollbackTrans();
            break;
        case 3:
            m_connection->GetLastInsertID();
            break;
        case 4: // the record set keeps the old command
            m_command = nullptr;
            m_connection->CreateCommand(m_command.Receive());
            m_rows = nullptr;
            break;
        default:
            m_rows = nullptr;
            m_connection->OpenRecordSet(input.TakeText().c_str(), m_rows.Receive());
            if (m_rows != nullptr) // its command is not ours to look into
                m_rows->Next();
            m_rows = nullptr;
        }
    }

    int m_steps = 0;
    std::deque<std::u16string> m_texts; // bound ones are not copied
    std::deque<std::string> m_bytes;
    CHynAutoPtr<CHynSQConnection> m_connection = new CHynSQConnection;
    CHynAutoPtr<IHynSQCommand> m_command;
    CHynAutoPtr<IHynSQRecordSet> m_rows;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    HalyonFuzz::Input input(data, size);
    Session session;
    while (!input.IsEmpty())
        session.Step(input);
    return 0;
}
