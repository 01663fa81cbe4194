// A prepared statement and the rows that it gives.
//
// Not included by itself: `HynSQ.h` brings everything, and says what holds for all of it.
#pragma once

#include <cstddef>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>

#include <halyon/client/HynSQError.h>
#include <halyon/client/HynSQStatement.h>

namespace Halyon::Client
{
inline namespace HALYON_CLIENT_FORMS
{
// The current row of Rows, whose reference it is: it changes as they step. Columns are named by index from 0, or by
// name (`const char16_t*`) without regard to letter case, which costs a comparison. All [owner].
//
// Values are converted as the engine does it: text "12" is the number 12, text without digits is 0, a number is its
// text. NULL is nothing in an optional, 0 in a number, the start of 2001 in a moment, no bytes in a vector, and
// HYN_E_SQNULLVALUE where text is wanted. Text is read whole, zero units included; a blob read as text is the units
// that its bytes are. As UTF-8, unpaired surrogates are U+FFFD. A moment is exact to 1/65536 s.
class Row
{
public:
    Row(const Row&) = delete;
    Row& operator=(const Row&) = delete;
    ~Row() { Close(); }

    // Reads a column into `value`, whose memory is used again. Room of the caller's, a span, is filled from its start,
    // text with its terminator. HYN_E_FAIL: not on a row; no such column; bytes that do not fit; a moment that a
    // time_point does not hold. HYN_E_BUFFERTOOSMALL: text that does not fit.
    template <class T>
    requires Fillable<std::remove_cvref_t<T>> HynResult try_read(std::int32_t column, T&& value)
    const { return Read(column, value); }
    template <class T>
    requires Fillable<std::remove_cvref_t<T>> HynResult try_read(const char16_t* column, T&& value)
    const { return Read(column, value); }

    // Reads the columns from the first on, until one fails.
    template <Readable... T>
    HynResult try_as(T&... values) const
    {
        HynResult result = HYN_S_OK;
        std::int32_t column = 0;
        static_cast<void>((HynSucceeded(result = Read(column++, values)) && ...));
        return result;
    }

    // Whether there is a row to read.
    [[nodiscard]] explicit operator bool() const noexcept { return m_current != nullptr; }

#if defined(__cpp_exceptions)
    template <class T>
    requires Fillable<std::remove_cvref_t<T>>
    void read(std::int32_t column, T&& value) const
    {
        Check(Read(column, value), column);
    }
    template <class T>
    requires Fillable<std::remove_cvref_t<T>>
    void read(const char16_t* column, T&& value) const
    {
        Check(Read(column, value), column);
    }

    template <Readable T>
    [[nodiscard]] T get(std::int32_t column) const
    {
        T value{};
        read(column, value);
        return value;
    }
    template <Readable T>
    [[nodiscard]] T get(const char16_t* column) const
    {
        T value{};
        read(column, value);
        return value;
    }

    // The columns from the first on as a tuple.
    template <Readable... T>
    [[nodiscard]] std::tuple<T...> as() const
    {
        return [this]<std::size_t... Index>(std::index_sequence<Index...>)
        {
            return std::tuple<T...>{
                this->template get<T>(static_cast<std::int32_t>(Index))...}; // braces: in this order
        }
        (std::index_sequence_for<T...>());
    }
#endif

private:
    friend class Rows;

    Row() noexcept = default;
    Row(Row&& other) noexcept
        : m_statement(std::move(other.m_statement)), m_rows(std::move(other.m_rows)),
          m_current(std::exchange(other.m_current, nullptr)), m_state(std::exchange(other.m_state, HYN_E_FAIL))
    {
    }
    Row& operator=(Row&& other) noexcept
    {
        if (this == &other)
            return *this;
        Close();
        m_statement = std::move(other.m_statement);
        m_rows = std::move(other.m_rows);
        m_current = std::exchange(other.m_current, nullptr);
        m_state = std::exchange(other.m_state, HYN_E_FAIL);
        return *this;
    }

    void Close() noexcept
    {
        Stepped(HYN_E_FAIL);
        m_rows = nullptr;
        if (m_statement != nullptr)
            m_statement->Closed();
        m_statement = nullptr;
    }

    HynResult Stepped(HynResult result) noexcept
    {
        IHynSQRecordSet* rows = m_rows;
        m_current = result == HYN_S_OK ? rows : nullptr;
        return m_state = result;
    }

    template <class Column, class T>
    HynResult Read(Column column, T& value) const
    {
        if (m_current == nullptr) [[unlikely]]
            return HYN_E_FAIL;
        return Detail::Reader<Column>(m_current, column).Read(value);
    }

#if defined(__cpp_exceptions)
    template <class Column>
    void Check(HynResult result, Column column) const
    {
        if (HynFailed(result)) [[unlikely]]
            ThrowReading(result, column);
    }
    [[noreturn, gnu::cold, gnu::noinline]] void ThrowReading(HynResult result, std::int32_t column) const
    {
        Throw(result, "reading column " + std::to_string(column));
    }
    [[noreturn, gnu::cold, gnu::noinline]] void ThrowReading(HynResult result, const char16_t* column) const
    {
        Throw(result, "reading column " + CTovStringW(column).ToUTF8());
    }
    [[noreturn]] void Throw(HynResult result, std::string action) const
    {
        throw Error(result, std::move(action), m_statement == nullptr ? "" : m_statement->Sql().ToUTF8());
    }
#endif

    CHynAutoPtr<Detail::Statement> m_statement;
    CHynAutoPtr<IHynSQRecordSet> m_rows;  // goes first
    IHynSQRecordSet* m_current = nullptr; // that, while it stands on a row
    HynResult m_state = HYN_E_FAIL;       // of the last step
};

// The rows that a statement gives, one after the other and once: an input range. All [owner].
//
// They keep their statement running until they are gone or closed, and with it, outside of a transaction, a lock that
// others' writing waits for.
class Rows
{
public:
    class Iterator
    {
    public:
        using value_type = Row;
        using difference_type = std::ptrdiff_t;

        explicit Iterator(Rows& rows) noexcept : m_rows(&rows) {}
        [[nodiscard]] Row& operator*() const noexcept { return m_rows->m_row; }
        [[nodiscard]] Row* operator->() const noexcept { return &m_rows->m_row; }
        Iterator& operator++()
        {
#if defined(__cpp_exceptions)
            m_rows->next();
#else
            m_rows->try_next();
#endif
            return *this;
        }
        void operator++(int)
        {
            ++*this;
        }
        [[nodiscard]] bool operator==(std::default_sentinel_t) const noexcept
        {
            return m_rows->at_end();
        }

    private:
        Rows* m_rows;
    };

    Rows() noexcept = default;
    Rows(Rows&& other) noexcept = default;
    Rows& operator=(Rows&& other) noexcept = default; // closes what it held

    // Steps to the next row. HYN_S_FALSE: that was the last. A failure ends the rows, too.
    HynResult try_next()
    {
        if (m_row.m_rows == nullptr) [[unlikely]]
            return HYN_E_FAIL;
        return m_row.Stepped(m_row.m_rows->Next());
    }

    [[nodiscard]] bool at_end() const noexcept
    {
        return m_row.m_state != HYN_S_OK;
    }

    // What the last step returned: HYN_S_OK on a row, HYN_S_FALSE after the last, else the failure.
    [[nodiscard]] HynResult result() const noexcept
    {
        return m_row.m_state;
    }

    // The current row.
    [[nodiscard]] Row& row() noexcept
    {
        return m_row;
    }
    [[nodiscard]] const Row& row() const noexcept
    {
        return m_row;
    }

    [[nodiscard]] std::int32_t column_count() const
    {
        return m_row.m_rows == nullptr ? 0 : m_row.m_rows->GetFieldCount();
    }

    // From the current row on.
    [[nodiscard]] Iterator begin() noexcept
    {
        return Iterator(*this);
    }
    [[nodiscard]] static std::default_sentinel_t end() noexcept
    {
        return {};
    }

    // Lets go of the statement, which may then be bound and run again.
    void close() noexcept
    {
        m_row.Close();
    }

    // Null when there are none. Borrowed.
    [[nodiscard]] IHynSQRecordSet* interface() const noexcept
    {
        return m_row.m_rows;
    }

#if defined(__cpp_exceptions)
    // True on a row, false at the end.
    bool next()
    {
        const HynResult result = try_next();
        if (HynFailed(result)) [[unlikely]]
            m_row.Throw(result, "stepping");
        return result == HYN_S_OK;
    }
#endif

private:
    friend class Command;

    HynResult Open(Detail::Statement* statement)
    {
        const HynResult result = statement->Open(m_row.m_rows);
        if (HynFailed(result))
            return result;
        m_row.m_statement = statement;
        m_row.Stepped(m_row.m_rows->IsEof() != 0 ? HYN_S_FALSE : HYN_S_OK);
        return HYN_S_OK;
    }

    Row m_row;
};

// A prepared statement. Parameters are counted from 0. All [owner].
//
// What `bind` is given stays bound until it is replaced; text and bytes are copied. What `execute` and `query` are
// given is bound from the first parameter on for that run alone and is NULL afterwards; `execute` copies nothing, so it
// is the one for large values. One Rows at a time: while they are open, binding and running fail with HYN_E_FAIL.
//
// Two values are refused with HYN_E_FAIL, since the interfaces have no way for them: text with a zero unit in it, which
// would be cut there, and bytes without any, for which a statement can say x''. Moments are stored to the nearest
// 1/65536 s; those of 1904-01-01 and before are refused.
class Command
{
public:
    Command() noexcept = default;
    Command(Command&& other) noexcept = default;
    Command& operator=(Command&& other) noexcept = default;

    template <Bindable T>
    HynResult try_bind(std::int32_t index, const T& value)
    {
        return m_statement == nullptr ? HYN_E_FAIL : m_statement->Bind(index, value);
    }

    // Runs to the first step; HYN_S_OK with and without rows.
    template <Bindable... Values>
    HynResult try_execute(const Values&... values)
    {
        if (m_statement == nullptr) [[unlikely]]
            return HYN_E_FAIL;
        const HynResult result = m_statement->template BindAll<false>(values...);
        return HynFailed(result) ? result : m_statement->Execute();
    }

    // Runs, and stands on the first row or at the end. `rows` are closed first.
    template <Bindable... Values>
    HynResult try_query(Rows& rows, const Values&... values)
    {
        rows.close();
        if (m_statement == nullptr) [[unlikely]]
            return HYN_E_FAIL;
        const HynResult result = m_statement->template BindAll<true>(values...);
        return HynFailed(result) ? result : rows.Open(m_statement);
    }

#if defined(__cpp_exceptions)
    template <Bindable T>
    Command& bind(std::int32_t index, const T& value)
    {
        const HynResult result = try_bind(index, value);
        if (HynFailed(result)) [[unlikely]]
            Throw(result, index);
        return *this;
    }

    template <Bindable... Values>
    void execute(const Values&... values)
    {
        const HynResult result = try_execute(values...);
        if (HynFailed(result)) [[unlikely]]
            Throw(result);
    }

    template <Bindable... Values>
    [[nodiscard]] Rows query(const Values&... values)
    {
        Rows rows;
        const HynResult result = try_query(rows, values...);
        if (HynFailed(result)) [[unlikely]]
            Throw(result);
        return rows;
    }
#endif

private:
    friend class Connection;

#if defined(__cpp_exceptions)
    [[noreturn, gnu::cold, gnu::noinline]] void Throw(HynResult result) const
    {
        Throw(result, m_statement == nullptr ? -1 : m_statement->Refused());
    }
    [[noreturn, gnu::cold, gnu::noinline]] void Throw(HynResult result, std::int32_t parameter) const
    {
        throw Error(result, parameter < 0 ? "executing" : "binding parameter " + std::to_string(parameter),
                    m_statement == nullptr ? "" : m_statement->Sql().ToUTF8());
    }
#endif

    CHynAutoPtr<Detail::Statement> m_statement;
};
} // namespace HALYON_CLIENT_FORMS
} // namespace Halyon::Client
