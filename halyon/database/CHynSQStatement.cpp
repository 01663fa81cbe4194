#include <halyon/database/CHynSQStatement.h>

#include <sqlite3.h>

using namespace Halyon;

namespace
{
constexpr std::uint32_t kPrepareRetryMicroseconds = 2000;
constexpr int kStepAttempts = 10000;
constexpr std::uint32_t kStepRetryMilliseconds = 10;
} // namespace

HynResult CHynSQStatement::Prepare(sqlite3* database, const char16_t* sql) noexcept
{
    // The plain preparation, deliberately: its statements report a constraint or a changed schema at once, as a failed
    // step, and never prepare themselves anew behind the caller's back.
    for (;;)
    {
        Finalize();
        // No tail is asked for: to find it the engine counts the characters of the whole text, twice.
        const int code = sqlite3_prepare16(database, sql, -1, &m_pStatement, nullptr);
        m_uForkCount = TovGetForkCount();
        m_nParameters = sqlite3_bind_parameter_count(m_pStatement);
        m_nColumns = sqlite3_column_count(m_pStatement);
        if (code != SQLITE_BUSY)
            return Told(database, code) == SQLITE_OK ? HYN_S_OK : HYN_E_FAIL;
        TovUSleep(kPrepareRetryMicroseconds);
    }
}

HynResult CHynSQStatement::Step() noexcept
{
    m_bLostValue = false;
    for (int attempt = 0; attempt < kStepAttempts; ++attempt)
    {
        switch (sqlite3_step(m_pStatement))
        {
        case SQLITE_ROW:
            return HYN_S_OK;
        case SQLITE_DONE:
            return HYN_S_FALSE;
        case SQLITE_ERROR:
            return HYN_E_SQSTEP;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            TovSleep(kStepRetryMilliseconds);
            break;
        default:
            return HYN_E_FAIL;
        }
    }
    return HYN_E_FAIL;
}

HynResult CHynSQStatement::Execute() noexcept
{
    const HynResult result = Step();
    const int code = Reset();
    if (result != HYN_S_OK || code == SQLITE_OK)
        return HynFailed(result) ? result : HYN_S_OK;
    // A statement that writes and gives rows commits when it ends, which is now.
    return code == SQLITE_BUSY ? HYN_E_FAIL : HYN_E_SQSTEP;
}

int CHynSQStatement::Reset() noexcept
{
    return Told(sqlite3_db_handle(m_pStatement), sqlite3_reset(m_pStatement));
}

int CHynSQStatement::Finalize() noexcept
{
    sqlite3_stmt* statement = Get();
    m_pStatement = nullptr;
    m_nParameters = 0;
    m_nColumns = 0;
    sqlite3* database = statement != nullptr ? sqlite3_db_handle(statement) : nullptr;
    return Told(database, sqlite3_finalize(statement));
}

// A number that could not be converted is NULL from then on: only the failure told that it was none.
bool CHynSQStatement::HasLostValue() noexcept
{
    sqlite3* database = sqlite3_db_handle(m_pStatement);
    if (sqlite3_errcode(database) == SQLITE_NOMEM)
    {
        m_bLostValue = true;
        Told(database, SQLITE_NOMEM);
    }
    return m_bLostValue;
}

int CHynSQStatement::Told(sqlite3* database, int code) noexcept
{
    // To run nothing succeeds, without memory too, and is the last call from then on.
    if (code == SQLITE_NOMEM)
        sqlite3_exec(database, "", nullptr, nullptr, nullptr);
    return code;
}
