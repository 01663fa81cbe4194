// Formatting of numbers into 16-bit text: reading the format.

#include <halyon/platform/TovPCMac.h>

#include <algorithm>
#include <climits>
#include <string_view>

#include <halyon/platform/linux/FormatNumber.h>

using Halyon::Directive;
using Halyon::Output;
using Halyon::SignExtended;

namespace
{
using Kind = TovFormatArgument::Kind;

// The arguments that are still to come.
class Arguments
{
public:
    explicit Arguments(std::span<const TovFormatArgument> list) noexcept : m_list(list) {}

    // The next argument, or null when there is none.
    const TovFormatArgument* Next() noexcept
    {
        if (m_list.empty())
            return nullptr;
        const TovFormatArgument* argument = m_list.data();
        m_list = m_list.subspan(1);
        return argument;
    }

    // The number for a `*`; false when the next argument is none.
    bool NextStar(int& number) noexcept
    {
        const TovFormatArgument* argument = Next();
        if (argument == nullptr || argument->kind == Kind::Double)
            return false;
        const std::int64_t value = SignExtended(ValueOf(*argument), BitsOf(*argument));
        number = static_cast<int>(std::clamp<std::int64_t>(value, -INT_MAX, INT_MAX));
        return true;
    }

    static std::uint64_t ValueOf(const TovFormatArgument& argument) noexcept
    {
        return argument.kind == Kind::Signed ? static_cast<std::uint64_t>(argument.nValue) : argument.uValue;
    }

    // Integers shorter than an int count as one, as they do wherever arguments are passed without a type.
    static unsigned BitsOf(const TovFormatArgument& argument) noexcept
    {
        return std::clamp(argument.uBytes * 8, 32u, 64u);
    }

private:
    std::span<const TovFormatArgument> m_list;
};

// Reads a directive behind its "%".
class Reader
{
public:
    Reader(const char16_t*& position, Arguments& arguments) noexcept : m_position(position), m_arguments(arguments) {}

    // False when a `*` has no integer to go with it.
    bool Read(Directive& directive) noexcept
    {
        while (ReadFlag(directive))
            ++m_position;
        if (!ReadNumber(directive.nWidth))
            return false;
        if (directive.nWidth < 0)
        {
            directive.bLeft = true;
            directive.nWidth = -directive.nWidth;
        }
        if (*m_position == u'.')
        {
            ++m_position;
            directive.nPrecision = 0;
            if (!ReadNumber(directive.nPrecision))
                return false;
        }
        ReadModifier(directive);
        directive.letter = *m_position;
        if (directive.letter != 0)
            ++m_position;
        return true;
    }

private:
    [[nodiscard]] bool ReadFlag(Directive& directive) const noexcept
    {
        switch (*m_position)
        {
        case u'-':
            return directive.bLeft = true;
        case u'+':
            return directive.bPlus = true;
        case u' ':
            return directive.bBlank = true;
        case u'#':
            return directive.bAlternate = true;
        case u'0':
            return directive.bZeros = true;
        default:
            return false;
        }
    }

    // Digits or a `*`; `number` keeps its value when there is neither.
    bool ReadNumber(int& number) noexcept
    {
        if (*m_position == u'*')
        {
            ++m_position;
            return m_arguments.NextStar(number);
        }
        std::int64_t value = number;
        for (; *m_position >= u'0' && *m_position <= u'9'; ++m_position)
            value = std::min<std::int64_t>(value * 10 + (*m_position - u'0'), INT_MAX);
        number = static_cast<int>(value);
        return true;
    }

    // Arguments carry their size, so that `l` and `ll` have nothing to add.
    void ReadModifier(Directive& directive) noexcept
    {
        const char16_t modifier = *m_position;
        if (modifier != u'h' && modifier != u'l')
            return;
        const bool twice = *++m_position == modifier;
        m_position += twice ? 1 : 0;
        if (modifier == u'h')
            directive.uBits = twice ? 8 : 16;
    }

    const char16_t*& m_position;
    Arguments& m_arguments;
};

// Puts the number that the directive at `position` (behind its "%") asks for; false when it cannot.
bool PutDirective(Output& out, const char16_t*& position, Arguments& arguments) noexcept
{
    Directive directive;
    if (!Reader(position, arguments).Read(directive))
        return false;
    const bool integer = std::u16string_view(u"diuxXo").find(directive.letter) != std::u16string_view::npos;
    const bool floating = std::u16string_view(u"fFeEgG").find(directive.letter) != std::u16string_view::npos;
    const TovFormatArgument* argument = integer || floating ? arguments.Next() : nullptr;
    if (argument == nullptr || (argument->kind == Kind::Double) != floating)
        return false;
    if (floating)
        Halyon::PutDouble(out, directive, argument->fValue);
    else
        Halyon::PutInteger(out, directive, Arguments::ValueOf(*argument), Arguments::BitsOf(*argument));
    return true;
}

bool IsPair(const char16_t* text) noexcept
{
    return (text[0] & 0xFC00) == 0xD800 && (text[1] & 0xFC00) == 0xDC00;
}
} // namespace

int TovFormat(std::span<char16_t> buffer, const char16_t* format, std::span<const TovFormatArgument> arguments) noexcept
{
    if (buffer.empty())
        return 0;
    Output out(buffer);
    Arguments remaining(arguments);
    while (*format != 0)
    {
        if (*format == u'%' && format[1] != u'%')
        {
            if (!PutDirective(out, ++format, remaining))
                return out.Finish(false);
        }
        else if (IsPair(format))
        {
            out.PutPair(format[0], format[1]);
            format += 2;
        }
        else
        {
            out.Put(*format);
            format += *format == u'%' ? 2 : 1;
        }
    }
    return out.Finish(true);
}
