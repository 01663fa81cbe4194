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
            return code == SQLITE_OK ? HYN_S_OK : HYN_E_FAIL;
        TovUSleep(kPrepareRetryMicroseconds);
    }
}

HynResult CHynSQStatement::Step() noexcept
{
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

int CHynSQStatement::Finalize() noexcept
{
    sqlite3_stmt* statement = Get();
    m_pStatement = nullptr;
    m_nParameters = 0;
    m_nColumns = 0;
    return sqlite3_finalize(statement);
}
