// The bytes that a fuzzer gives, read as the values that a target wants, and the means to say that a law is broken.
//
// Made so that a person can write and read inputs: texts end at a zero byte, plain ASCII stands for itself, and what
// the input has no more of is zero or empty. Not thread-safe, and not for tests that know what they want to feed.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace HalyonFuzz
{
class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size) : m_rest(reinterpret_cast<const char*>(data), size) {}

    [[nodiscard]] bool IsEmpty() const { return m_rest.empty(); }

    // Little end first, whatever the machine: inputs are kept in the tree.
    template <class Number>
    Number Take()
    {
        std::uint64_t bits = 0;
        for (std::size_t i = 0; i < sizeof(Number) && !m_rest.empty(); ++i)
            bits |= static_cast<std::uint64_t>(static_cast<unsigned char>(TakeChar())) << (8 * i);
        Number number{};
        if constexpr (sizeof(Number) == 8)
            std::memcpy(&number, &bits, sizeof number);
        else
            number = static_cast<Number>(bits);
        return number;
    }

    // Up to a zero byte, which is passed over.
    std::string_view TakeBytes()
    {
        const std::string_view bytes = m_rest.substr(0, m_rest.find('\0'));
        m_rest.remove_prefix(std::min(bytes.size() + 1, m_rest.size()));
        return bytes;
    }

    // The same as 16-bit units: ASCII as it is, else two bytes a unit, where 8x begins one below U+1000. So any unit
    // but zero can be written, unpaired surrogates too.
    std::u16string TakeText()
    {
        std::u16string text;
        while (!m_rest.empty())
        {
            const auto first = static_cast<unsigned char>(TakeChar());
            if (first == 0)
                break;
            if (first < 0x80)
            {
                text += static_cast<char16_t>(first);
                continue;
            }
            const unsigned high = first < 0x90 ? first & 0x0Fu : first;
            const unsigned low = m_rest.empty() ? 0 : static_cast<unsigned char>(TakeChar());
            text += static_cast<char16_t>(std::max(high << 8 | low, 1u));
        }
        return text;
    }

    std::string_view TakeRest()
    {
        const std::string_view rest = m_rest;
        m_rest = {};
        return rest;
    }

private:
    char TakeChar()
    {
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        return c;
    }

    std::string_view m_rest;
};

// Ends the program, so that the fuzzer keeps the input, when a law does not hold.
inline void Hold(bool holds, const char* law)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken law: %s\n", law);
    std::abort();
}

// A zero-terminated text with room for exactly `units` units, terminator included, so that the address sanitizer sees
// the first one behind it.
class Buffer
{
public:
    explicit Buffer(std::size_t units) : m_units(std::make_unique<char16_t[]>(units)) {}
    Buffer(std::u16string_view text, std::size_t more) : Buffer(text.size() + 1 + more)
    {
        std::copy(text.begin(), text.end(), m_units.get());
    }
    operator char16_t*() const { return m_units.get(); }
    [[nodiscard]] std::u16string Text() const { return m_units.get(); }

private:
    std::unique_ptr<char16_t[]> m_units;
};
} // namespace HalyonFuzz

// What each target is: one input, tried. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
