// What a command and its rows own together: the prepared statement, and the values that it reads where they lie.
//
// Not included by itself: `HynSQ.h` brings everything.
#pragma once

#include <algorithm>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include <halyon/client/HynSQValue.h>
#include <halyon/database/IHynSQCommand.h>
#include <halyon/database/IHynSQConnection.h>
#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/platform/ModuleFile.h>

namespace Halyon::Client
{
inline namespace HALYON_CLIENT_FORMS
{
namespace Detail
{
// Counted without a lock: a statement and all that holds it stay on one thread.
class Statement
{
public:
    Statement(std::shared_ptr<const ModuleFile> module, const char16_t* sql) noexcept
        : m_module(std::move(module)), m_sql(sql)
    {
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    void AddRef() noexcept { ++m_references; }
    void Release() noexcept
    {
        --m_references;
#if !defined(__clang_analyzer__) // which takes any call through an interface for a change of the count
        if (m_references == 0)
            delete this;
#endif
    }

    [[nodiscard]] const CTovStringW& Sql() const noexcept
    {
        return m_sql;
    }
    // The parameter whose binding failed last in BindAll; -1 when none did.
    [[nodiscard]] std::int32_t Refused() const noexcept
    {
        return m_refused;
    }

    HynResult Prepare(IHynSQConnection* connection)
    {
        const HynResult result = connection->CreateCommand(m_command.Receive());
        return HynFailed(result) ? result : m_command->PrepareSQL(m_sql);
    }

    // Binds a value that stays bound; text and bytes are copied.
    template <class T>
    HynResult Bind(std::int32_t index, const T& value)
    {
        const HynResult result = Ready();
        return HynFailed(result) ? result : BindOne<true>(index, value);
    }

    // Binds values for the next run alone. With `Keep` false text and bytes are read where the caller has them.
    template <bool Keep, class... Values>
    HynResult BindAll(const Values&... values)
    {
        if (m_busy)
            return HYN_E_FAIL;
        constexpr auto kCount = static_cast<std::int32_t>(sizeof...(Values));
        if (kCount < m_passing)
        {
            if (const HynResult result = Ready(); HynFailed(result))
                return result;
        }
        HynResult result = HYN_S_OK;
        std::int32_t index = 0;
        static_cast<void>((HynSucceeded(result = BindOne<Keep>(index++, values)) && ...));
        m_refused = HynFailed(result) ? index - 1 : -1;
        m_passing = HynFailed(result) ? std::max(m_passing, m_refused) : kCount;
        return result;
    }

    HynResult Execute()
    {
        return m_command->ExecuteSQL();
    }

    HynResult Open(CHynAutoPtr<IHynSQRecordSet>& rows)
    {
        const HynResult result = m_command->OpenRecordSet(rows.Receive());
        m_busy = HynSucceeded(result);
        return result;
    }

    // The rows are gone, and the statement may be bound and run again.
    void Closed() noexcept
    {
        m_busy = false;
    }

private:
    static constexpr std::int32_t kMostParameters = 32766; // the engine's own limit

    ~Statement() = default;

    // Takes away what was bound for one run: its text may be gone.
    HynResult Ready()
    {
        if (m_busy)
            return HYN_E_FAIL;
        for (; m_passing > 0; --m_passing)
        {
            if (const HynResult result = BindNull(m_passing - 1); HynFailed(result))
                return result;
        }
        return HYN_S_OK;
    }

    template <bool Keep, class T>
    HynResult BindOne(std::int32_t index, const T& value)
    {
        constexpr Kind kind = KindOf<T>();
        if constexpr (kind == Kind::Null)
            return BindNull(index);
        else if constexpr (kind == Kind::Optional)
            return value.has_value() ? BindOne<Keep>(index, *value) : BindNull(index);
        else if constexpr (kind == Kind::Bool || kind == Kind::Int32)
            return m_command->BindFieldValue(index, static_cast<std::int32_t>(value));
        else if constexpr (kind == Kind::Int64)
            return m_command->BindFieldValue(index, static_cast<long long>(value));
        else if constexpr (kind == Kind::UInt32 || kind == Kind::Double)
            return m_command->BindFieldValue(index, value);
        else if constexpr (kind == Kind::Timestamp || kind == Kind::TimePoint)
            return BindMoment(index, value);
        else if constexpr (kind == Kind::Bytes)
            return BindBytes<Keep>(index, std::span<const std::byte>(value));
        else if constexpr (kind == Kind::WideZero)
            return BindZero<Keep>(index, value);
        else if constexpr (kind == Kind::WideText)
            return BindText<Keep>(index, value);
        else if constexpr (kind == Kind::WideView)
            return KeepView(index, value);
        else
            return KeepUTF8(index, value);
    }

    // The interface has no binding of NULL; the engine stores what is not a number as NULL.
    HynResult BindNull(std::int32_t index)
    {
        return m_command->BindFieldValue(index, std::numeric_limits<double>::quiet_NaN());
    }

    HynResult BindMoment(std::int32_t index, FILETIME value)
    {
        return m_command->BindFieldValue(index, &value);
    }

    template <class Duration>
    HynResult BindMoment(std::int32_t index, std::chrono::time_point<std::chrono::system_clock, Duration> value)
    {
        FILETIME timestamp{};
        return to_timestamp(value, timestamp) ? BindMoment(index, timestamp) : HYN_E_FAIL;
    }

    template <bool Keep>
    HynResult BindBytes(std::int32_t index, std::span<const std::byte> bytes)
    {
        if constexpr (!Keep)
            return BindRaw(index, bytes);
        else
            return KeepSpare(index,
                             [&]
                             {
                                 if (m_spare.size() < bytes.size())
                                     m_spare.resize(bytes.size());
                                 std::copy(bytes.begin(), bytes.end(), m_spare.begin());
                                 return BindRaw(index, {m_spare.data(), bytes.size()});
                             });
    }

    HynResult BindRaw(std::int32_t index, std::span<const std::byte> bytes)
    {
        if (bytes.size() > std::numeric_limits<std::uint32_t>::max())
            return HYN_E_FAIL;
        return m_command->BindFieldValue(index, const_cast<std::byte*>(bytes.data()), // which the interface only reads
                                         static_cast<std::uint32_t>(bytes.size()));
    }

    template <bool Keep>
    HynResult BindZero(std::int32_t index, const char16_t* text)
    {
        if constexpr (!Keep)
            return m_command->BindFieldValue(index, text);
        else
            return text == nullptr ? HYN_E_FAIL : KeepText(index, {text, tov_wcslen(text)});
    }

    // `text` has its terminator behind it.
    template <bool Keep>
    HynResult BindText(std::int32_t index, std::u16string_view text)
    {
        if (tov_wcslen(text.data()) != text.size())
            return HYN_E_FAIL;
        if constexpr (Keep)
            return KeepText(index, text);
        else
            return m_command->BindFieldValue(index, text.data());
    }

    // `text` holds no zero unit.
    HynResult KeepText(std::int32_t index, std::u16string_view text)
    {
        return KeepSpare(index,
                         [&]
                         {
                             text.copy(SpareUnits(text.size()), text.size());
                             return BindSpareUnits(index, text.size());
                         });
    }

    HynResult KeepView(std::int32_t index, std::u16string_view text)
    {
        return text.find(u'\0') == std::u16string_view::npos ? KeepText(index, text) : HYN_E_FAIL;
    }

    HynResult KeepUTF8(std::int32_t index, std::string_view text)
    {
        if (text.find('\0') != std::string_view::npos)
            return HYN_E_FAIL;
        return KeepSpare(index,
                         [&]
                         {
                             // A byte never becomes more than a unit.
                             char16_t* units = SpareUnits(text.size());
                             return BindSpareUnits(index,
                                                   TovTextFromUTF8(text.data(), text.size(), units, text.size()));
                         });
    }

    // Room for `count` units and a terminator in the spare block.
    char16_t* SpareUnits(std::size_t count)
    {
        const std::size_t bytes = (count + 1) * sizeof(char16_t);
        if (m_spare.size() < bytes)
            m_spare.resize(bytes);
        return reinterpret_cast<char16_t*>(m_spare.data());
    }

    HynResult BindSpareUnits(std::int32_t index, std::size_t count)
    {
        auto* text = reinterpret_cast<char16_t*>(m_spare.data());
        text[count] = 0;
        return m_command->BindFieldValue(index, text);
    }

    // Binds what `bind` puts into the spare block, which takes the place of the old one when that has worked: until
    // then the statement reads the old one.
    template <class BindSpare>
    HynResult KeepSpare(std::int32_t index, BindSpare bind)
    {
        if (index < 0 || index > kMostParameters)
            return HYN_E_FAIL;
        const auto slot = static_cast<std::size_t>(index);
        if (m_kept.size() <= slot)
            m_kept.resize(slot + 1);
        const HynResult result = bind();
        if (HynSucceeded(result))
            m_kept[slot].swap(m_spare);
        return result;
    }

    // In the order in which the last is let go first: the command before what it reads, all of it before the module.
    std::shared_ptr<const ModuleFile> m_module;
    CTovStringW m_sql;
    std::vector<std::vector<std::byte>> m_kept; // by parameter
    std::vector<std::byte> m_spare;
    CHynAutoPtr<IHynSQCommand> m_command;
    std::int32_t m_references = 0;
    std::int32_t m_passing = 0; // parameters from the first on that were bound for one run
    std::int32_t m_refused = -1;
    bool m_busy = false; // rows are open
};
} // namespace Detail
} // namespace HALYON_CLIENT_FORMS
} // namespace Halyon::Client
