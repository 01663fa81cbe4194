// Which types go into a parameter and come out of a column, and how each is read.
//
// Not included by itself: `HynSQ.h` brings everything.
#pragma once

#include <array>
#include <bit>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <halyon/client/HynSQForms.h>
#include <halyon/client/HynSQMoment.h>
#include <halyon/database/IHynSQRecordSet.h>
#include <halyon/framework/HynResult.h>
#include <halyon/string/CTovStringW.h>

namespace Halyon::Client
{
inline namespace HALYON_CLIENT_FORMS
{
namespace Detail
{
enum class Kind
{
    None,
    Null,
    Optional,
    Bool,
    Int32,
    UInt32,
    Int64,
    Double,
    Timestamp,
    TimePoint,
    Bytes,    // anything that a span of bytes can be made of
    WideText, // zero-terminated, of known length
    WideZero, // zero-terminated, of unknown length
    WideView, // neither
    UTF8,
};

template <class T>
inline constexpr bool kIsOptional = false;
template <class T>
inline constexpr bool kIsOptional<std::optional<T>> = true;

template <class T>
inline constexpr bool kIsTimePoint = false;
template <class Duration>
inline constexpr bool kIsTimePoint<std::chrono::time_point<std::chrono::system_clock, Duration>> = true;

// Room of the caller's that a column is read into.
template <class T>
inline constexpr bool kIsRoom = false;
template <std::size_t Extent>
inline constexpr bool kIsRoom<std::span<char16_t, Extent>> = true;
template <std::size_t Extent>
inline constexpr bool kIsRoom<std::span<std::byte, Extent>> = true;

template <class T, class... Others>
inline constexpr bool kIsOneOf = (std::is_same_v<T, Others> || ...);

// What stands for `long` in the interfaces; its width is the machine's.
using Long = std::conditional_t<sizeof(long) == sizeof(std::int32_t), std::int32_t, long long>;

template <class T>
consteval Kind NumberKind()
{
    if constexpr (std::is_same_v<T, long>)
        return NumberKind<Long>();
    else if constexpr (std::is_same_v<T, bool>)
        return Kind::Bool;
    else if constexpr (std::is_same_v<T, std::int32_t>)
        return Kind::Int32;
    else if constexpr (std::is_same_v<T, std::uint32_t>)
        return Kind::UInt32;
    else if constexpr (std::is_same_v<T, long long>)
        return Kind::Int64;
    else if constexpr (std::is_same_v<T, double>)
        return Kind::Double;
    else
        return Kind::None;
}

template <class T>
consteval Kind TextKind()
{
    if constexpr (kIsOneOf<T, std::u16string, CTovStringW>)
        return Kind::WideText;
    else if constexpr (std::is_convertible_v<const T&, const char16_t*>)
        return Kind::WideZero;
    else if constexpr (std::is_convertible_v<const T&, std::u16string_view>)
        return Kind::WideView;
    else if constexpr (std::is_convertible_v<const T&, std::string_view>)
        return Kind::UTF8;
    else
        return Kind::None;
}

template <class T>
consteval Kind KindOf()
{
    if constexpr (kIsOneOf<T, std::nullopt_t, std::nullptr_t>)
        return Kind::Null;
    else if constexpr (kIsOptional<T>)
        return Kind::Optional;
    else if constexpr (std::is_arithmetic_v<T>)
        return NumberKind<T>();
    else if constexpr (std::is_same_v<T, FILETIME>)
        return Kind::Timestamp;
    else if constexpr (kIsTimePoint<T>)
        return Kind::TimePoint;
    else if constexpr (std::is_convertible_v<const T&, std::span<const std::byte>>)
        return Kind::Bytes;
    else
        return TextKind<T>();
}

template <class T>
consteval bool IsBindable()
{
    if constexpr (kIsOptional<T>)
        return IsBindable<typename T::value_type>();
    else
        return KindOf<T>() != Kind::None;
}

template <class T>
consteval bool IsReadable()
{
    constexpr Kind kind = KindOf<T>();
    if constexpr (kIsOptional<T>)
        return IsReadable<typename T::value_type>();
    else
        return (kind >= Kind::Bool && kind <= Kind::Timestamp) ||
               kIsOneOf<T, std::chrono::system_clock::time_point, std::u16string, std::string, std::vector<std::byte>>;
}
} // namespace Detail

// What `bind` takes: bool, int, unsigned int, 64-bit signed integers, double; FILETIME and time points of the system's
// clock; text as `const char16_t*`, std::u16string, std::u16string_view or CTovStringW, and as UTF-8 in `const char*`,
// std::string or std::string_view; bytes as whatever converts to std::span<const std::byte>; std::nullopt, nullptr; an
// optional of these. Anything else, 64-bit unsigned integers among it, would be changed on its way and is refused when
// it is compiled.
template <class T>
concept Bindable = Detail::IsBindable<std::remove_cvref_t<T>>();

// What `get` gives: bool, int, unsigned int, 64-bit signed integers, double, FILETIME, system_clock::time_point,
// std::u16string, std::string (UTF-8), std::vector<std::byte>, and an optional of these.
template <class T>
concept Readable = std::is_same_v<T, std::remove_cvref_t<T>> && Detail::IsReadable<T>();

// What `read` fills: that, and room of the caller's (std::span<char16_t>, std::span<std::byte>), without the heap.
template <class T>
concept Fillable = Readable<T> || Detail::kIsRoom<T>;

namespace Detail
{
// Reads one column, `Column` being an index or a name. Values are changed on success alone, but for text and bytes,
// whose content after a failure is anything.
template <class Column>
class Reader
{
public:
    Reader(IHynSQRecordSet* rows, Column column) noexcept : m_rows(rows), m_column(column) {}

    template <class T>
    requires(KindOf<T>() >= Kind::Int32 && KindOf<T>() <= Kind::Timestamp && !std::is_same_v<T, long>) HynResult
        Read(T& value)
    const { return m_rows->GetFieldValue(m_column, &value); }

    HynResult Read(long& value) const
    {
        Long same = value; // which it still is after a failure
        const HynResult result = Read(same);
        value = same;
        return result;
    }
    HynResult Read(bool& value) const
    {
        long long wide = value ? 1 : 0;
        const HynResult result = Read(wide);
        value = wide != 0;
        return result;
    }

    HynResult Read(std::chrono::system_clock::time_point& value) const
    {
        FILETIME timestamp{};
        const HynResult result = Read(timestamp);
        return HynFailed(result) || to_time_point(timestamp, value) ? result : HYN_E_FAIL;
    }

    // Through the reader of bytes: it tells the size, and zero units do not end it.
    HynResult Read(std::u16string& value) const
    {
        std::uint32_t bytes = 0;
        HynResult result = Size(bytes);
        if (HynFailed(result))
            return result;
        value.resize(bytes / sizeof(char16_t));
        if (bytes == 0)
            return Empty();
        return bytes % sizeof(char16_t) != 0 ? HYN_E_FAIL : Copy(value.data(), bytes);
    }

    HynResult Read(std::string& value) const
    {
        std::array<char16_t, 256> local;
        std::uint32_t bytes = 0;
        HynResult result = Size(bytes);
        if (HynFailed(result))
            return result;
        if (bytes > sizeof local)
        {
            std::u16string text;
            result = Read(text);
            if (HynSucceeded(result))
                ToUTF8(text, value);
            return result;
        }
        if (bytes != 0 && bytes % sizeof(char16_t) == 0)
            result = Copy(local.data(), bytes);
        else
            result = bytes == 0 ? Empty() : HYN_E_FAIL;
        if (HynSucceeded(result))
            ToUTF8({local.data(), bytes / sizeof(char16_t)}, value);
        return result;
    }

    HynResult Read(std::vector<std::byte>& value) const
    {
        std::uint32_t bytes = 0;
        const HynResult result = Size(bytes);
        if (HynFailed(result))
            return result;
        value.resize(bytes);
        return bytes == 0 ? result : Copy(value.data(), bytes);
    }

    HynResult Read(std::span<char16_t> room) const
    {
        auto units = static_cast<std::uint32_t>(room.size());
        return m_rows->GetFieldValue(m_column, room.data(), &units);
    }

    HynResult Read(std::span<std::byte> room) const
    {
        // The interface takes a null pointer for a question.
        return room.data() == nullptr ? HYN_E_FAIL : Copy(room.data(), static_cast<std::uint32_t>(room.size()));
    }

    template <class T>
    HynResult Read(std::optional<T>& value) const
    {
        T inner{};
        HynResult result = Read(inner);
        if (result == HYN_E_SQNULLVALUE || (HynSucceeded(result) && IsWhatNullReadsAs(inner) && IsNull()))
        {
            value.reset();
            return HYN_S_OK;
        }
        if (HynSucceeded(result))
            value = std::move(inner);
        return result;
    }

private:
    HynResult Size(std::uint32_t& bytes) const
    {
        return m_rows->GetFieldValue(m_column, static_cast<void*>(nullptr), &bytes);
    }

    HynResult Copy(void* to, std::uint32_t bytes) const { return m_rows->GetFieldValue(m_column, to, &bytes); }

    // Tells the empty text from NULL: HYN_S_OK or HYN_E_SQNULLVALUE.
    HynResult Empty() const
    {
        char16_t terminator = 0;
        return Read(std::span(&terminator, 1));
    }

    [[nodiscard]] bool IsNull() const { return Empty() == HYN_E_SQNULLVALUE; }

    template <class T>
    [[nodiscard]] static bool IsWhatNullReadsAs(const T& value)
    {
        if constexpr (std::is_same_v<T, FILETIME>)
        {
            const auto moment = std::bit_cast<UTCDateTime>(value);
            return moment.highSeconds == 0 && moment.lowSeconds == kSecondsFrom1904To2001 && moment.fraction == 0;
        }
        else if constexpr (kIsTimePoint<T>)
        {
            FILETIME timestamp{};
            return to_timestamp(value, timestamp) && IsWhatNullReadsAs(timestamp);
        }
        else if constexpr (std::is_arithmetic_v<T>)
            return value == T{};
        else
            return value.empty();
    }

    static void ToUTF8(std::u16string_view text, std::string& value)
    {
        std::array<char, 512> local;
        const std::size_t bytes = TovTextToUTF8(text.data(), text.size(), local.data(), local.size());
        if (bytes <= value.capacity() && bytes <= local.size())
            value.assign(local.data(), bytes);
        else if (bytes <= local.size())
            value = std::string(local.data(), bytes); // quicker than to let the old one grow
        else
        {
            value.resize(bytes);
            TovTextToUTF8(text.data(), text.size(), value.data(), bytes);
        }
    }

    IHynSQRecordSet* m_rows;
    Column m_column;
};
} // namespace Detail
} // namespace HALYON_CLIENT_FORMS
} // namespace Halyon::Client
