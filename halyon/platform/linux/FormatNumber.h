// Numbers as formatted text, for TovFormat. Internal to this folder.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace Halyon
{
// Where the text goes. It closes at the first character that does not fit, so that nothing is missing in its middle.
class Output
{
public:
    // Requires: `buffer` is not empty.
    explicit Output(std::span<char16_t> buffer) noexcept : m_buffer(buffer) {}

    void Put(char16_t unit) noexcept { Fill(unit, 1); }

    void Put(std::string_view ascii) noexcept
    {
        for (const char c : ascii)
            Put(static_cast<char16_t>(c));
    }

    void PutPair(char16_t lead, char16_t trail) noexcept
    {
        if (Room() < 2)
            m_open = false;
        Put(lead);
        Put(trail);
    }

    void Fill(char16_t unit, int count) noexcept
    {
        if (!m_open || count <= 0)
            return;
        const std::size_t n = std::min(Room(), static_cast<std::size_t>(count));
        std::fill_n(m_buffer.data() + m_length, n, unit);
        m_length += n;
        m_open = n == static_cast<std::size_t>(count);
    }

    int Finish(bool valid) noexcept
    {
        if (!valid)
            m_length = 0;
        m_buffer[m_length] = 0;
        return static_cast<int>(m_length);
    }

private:
    [[nodiscard]] std::size_t Room() const noexcept { return m_buffer.size() - 1 - m_length; }

    std::span<char16_t> m_buffer;
    std::size_t m_length = 0;
    bool m_open = true;
};

// What stands between "%" and the end of a conversion.
struct Directive
{
    bool bLeft = false;
    bool bPlus = false;
    bool bBlank = false;
    bool bAlternate = false;
    bool bZeros = false;
    int nWidth = 0;
    int nPrecision = -1; // negative: none given
    unsigned uBits = 64; // to which a modifier cuts an integer
    char16_t letter = 0;

    [[nodiscard]] bool IsUpper() const noexcept { return letter >= u'A' && letter <= u'Z'; }
    [[nodiscard]] char16_t Lower() const noexcept { return static_cast<char16_t>(letter | 0x20); }
    [[nodiscard]] std::string_view Sign(bool negative) const noexcept
    {
        return negative ? "-" : bPlus ? "+" : bBlank ? " " : "";
    }
};

// The lower `bits` bits, as a signed number.
inline std::int64_t SignExtended(std::uint64_t value, unsigned bits) noexcept
{
    return static_cast<std::int64_t>(value << (64 - bits)) >> (64 - bits);
}

// Puts the lower `bits` bits of `value` as one of d i u x X o. [any]
void PutInteger(Output& out, const Directive& directive, std::uint64_t value, unsigned bits) noexcept;

// Puts `value` as one of f F e E g G. [any]
void PutDouble(Output& out, const Directive& directive, double value) noexcept;
} // namespace Halyon
