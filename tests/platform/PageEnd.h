// Memory that ends where reading on is a fault.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

namespace HalyonTest
{
class PageEnd
{
public:
    PageEnd() : m_page(static_cast<std::size_t>(sysconf(_SC_PAGESIZE)))
    {
        void* memory = mmap(nullptr, 2 * m_page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED || mprotect(static_cast<char*>(memory) + m_page, m_page, PROT_NONE) != 0)
            throw std::runtime_error("no memory for a guarded page");
        m_memory = static_cast<char*>(memory);
        std::memset(m_memory, 'x', m_page);
    }
    ~PageEnd() { munmap(m_memory, 2 * m_page); }
    PageEnd(const PageEnd&) = delete;
    PageEnd& operator=(const PageEnd&) = delete;

    // The last `bytes` bytes before the fault, or those that end `before` bytes earlier.
    [[nodiscard]] char* Last(std::size_t bytes, std::size_t before = 0) const
    {
        return m_memory + m_page - before - bytes;
    }

    // Copies of bytes and of a text there, the text with its terminator or without; at an odd address when `before` is.
    [[nodiscard]] const char* PutBytes(std::string_view bytes, std::size_t before = 0) const
    {
        char* place = Last(bytes.size(), before);
        std::copy(bytes.begin(), bytes.end(), place);
        return place;
    }
    [[nodiscard]] const char16_t* PutUnits(std::u16string_view text, std::size_t before = 0) const
    {
        const auto* bytes = reinterpret_cast<const char*>(text.data());
        return reinterpret_cast<const char16_t*>(PutBytes({bytes, text.size() * sizeof(char16_t)}, before));
    }
    [[nodiscard]] const char16_t* Put(const std::u16string& text, std::size_t before = 0) const
    {
        return PutUnits({text.c_str(), text.size() + 1}, before);
    }

private:
    std::size_t m_page;
    char* m_memory = nullptr;
};
} // namespace HalyonTest
