// Numbers come from std::to_chars, which knows no locale. Widths and precisions are as large as a format says, so
// nothing is ever as long as they are: fills stop where the buffer does, and digits that must be zero are fills too.

#include <halyon/platform/linux/FormatNumber.h>

#include <array>
#include <charconv>
#include <climits>
#include <cmath>

#include <halyon/framework/HynUnit.h>

namespace Halyon
{
namespace
{
// A double has no more digits than these: behind the point, and before it.
constexpr int kMaxFraction = 1074;
constexpr int kMaxWhole = 309;
// Significant digits, of which an exponent is still subtracted.
constexpr int kMaxGeneral = INT_MAX / 2;

// A number in the order in which its parts are put.
struct Number
{
    std::string_view prefix; // sign or "0x"
    int nLeadingZeros = 0;
    std::string_view digits;
    std::string_view point; // one that `digits` lacks
    int nTrailingZeros = 0;
    std::string_view exponent;
    bool bMayPadWithZeros = true;
};

void PutNumber(Output& out, const Directive& directive, const Number& number) noexcept
{
    const std::size_t written =
        number.prefix.size() + number.digits.size() + number.point.size() + number.exponent.size();
    const std::int64_t length =
        std::int64_t{number.nLeadingZeros} + number.nTrailingZeros + static_cast<std::int64_t>(written);
    const int padding = static_cast<int>(std::max<std::int64_t>(directive.nWidth - length, 0));
    const bool zeros = number.bMayPadWithZeros && directive.bZeros && !directive.bLeft;
    out.Fill(u' ', directive.bLeft || zeros ? 0 : padding);
    out.Put(number.prefix);
    out.Fill(u'0', zeros ? padding : 0);
    out.Fill(u'0', number.nLeadingZeros);
    out.Put(number.digits);
    out.Put(number.point);
    out.Fill(u'0', number.nTrailingZeros);
    out.Put(number.exponent);
    out.Fill(u' ', directive.bLeft ? padding : 0);
}

void RaiseLetters(std::span<char> text) noexcept
{
    for (char& c : text)
        c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 0x20 : c);
}

// A finite double that is not negative, in digits of its own.
class DoubleText
{
public:
    // `precision` digits behind the point, in the form ddd.ddd or d.ddde+dd.
    void Convert(double value, std::chars_format form, int precision, Number& number) noexcept
    {
        const int exact = std::min(precision, kMaxFraction);
        const char* end = std::to_chars(m_buffer.begin(), m_buffer.end(), value, form, exact).ptr;
        const std::string_view text(m_buffer.data(), static_cast<std::size_t>(end - m_buffer.data()));
        const std::size_t digits = std::min(text.find('e'), text.size());
        number.digits = text.substr(0, digits);
        number.exponent = text.substr(digits);
        number.nTrailingZeros = precision - exact;
    }

    // `precision` significant digits, in the shorter form.
    void ConvertGeneral(double value, int precision, bool keepZeros, Number& number) noexcept
    {
        Convert(value, std::chars_format::scientific, precision - 1, number);
        const int exponent = ExponentOf(number.exponent);
        if (exponent >= -4 && exponent < precision)
            Convert(value, std::chars_format::fixed, precision - 1 - exponent, number);
        if (keepZeros)
            return;
        number.nTrailingZeros = 0;
        if (number.digits.find('.') != std::string_view::npos)
        {
            number.digits = number.digits.substr(0, number.digits.find_last_not_of('0') + 1);
            number.digits.remove_suffix(number.digits.ends_with('.') ? 1 : 0);
        }
    }

    void Raise() noexcept { RaiseLetters(m_buffer); }

private:
    static int ExponentOf(std::string_view text) noexcept
    {
        text.remove_prefix(text.starts_with("e+") ? 2 : 1);
        int exponent = 0;
        std::from_chars(text.data(), text.data() + text.size(), exponent);
        return exponent;
    }

    std::array<char, kMaxWhole + 1 + kMaxFraction> m_buffer = {};
};
} // namespace

void PutInteger(Output& out, const Directive& directive, std::uint64_t value, unsigned bits) noexcept
{
    bits = std::min(bits, directive.uBits);
    const bool isSigned = directive.letter == u'd' || directive.letter == u'i';
    const std::int64_t extended = SignExtended(value, bits);
    const bool negative = isSigned && extended < 0;
    value = isSigned ? static_cast<std::uint64_t>(extended) : value & (UINT64_MAX >> (64 - bits));
    const int base = directive.Lower() == u'x' ? 16 : directive.letter == u'o' ? 8 : 10;

    std::array<char, 24> buffer = {};
    const char* end = std::to_chars(buffer.begin(), buffer.end(), negative ? 0 - value : value, base).ptr;
    if (directive.IsUpper())
        RaiseLetters(buffer);

    Number number;
    number.prefix = isSigned ? directive.Sign(negative) : "";
    if (value != 0 || directive.nPrecision != 0)
        number.digits = {buffer.data(), static_cast<std::size_t>(end - buffer.data())};
    const int length = static_cast<int>(number.digits.size());
    number.nLeadingZeros = std::max(directive.nPrecision - length, 0);
    if (directive.bAlternate && base == 8 && number.nLeadingZeros == 0 && !number.digits.starts_with('0'))
        number.nLeadingZeros = 1;
    if (directive.bAlternate && base == 16 && value != 0)
        number.prefix = directive.IsUpper() ? "0X" : "0x";
    number.bMayPadWithZeros = directive.nPrecision < 0;
    PutNumber(out, directive, number);
}

void PutDouble(Output& out, const Directive& directive, double value) noexcept
{
    Number number;
    number.prefix = directive.Sign(std::signbit(value));
    if (!std::isfinite(value))
    {
        const bool isNaN = std::isnan(value);
        number.digits = directive.IsUpper() ? (isNaN ? "NAN" : "INF") : (isNaN ? "nan" : "inf");
        number.bMayPadWithZeros = false;
        PutNumber(out, directive, number);
        return;
    }
    const int precision = directive.nPrecision < 0 ? 6 : directive.nPrecision;
    DoubleText text;
    if (directive.Lower() == u'g')
        text.ConvertGeneral(std::fabs(value), std::clamp(precision, 1, kMaxGeneral), directive.bAlternate, number);
    else if (directive.Lower() == u'e')
        text.Convert(std::fabs(value), std::chars_format::scientific, precision, number);
    else
        text.Convert(std::fabs(value), std::chars_format::fixed, precision, number);
    if (directive.IsUpper())
        text.Raise();
    if (directive.bAlternate && number.digits.find('.') == std::string_view::npos)
        number.point = ".";
    PutNumber(out, directive, number);
}
} // namespace Halyon
