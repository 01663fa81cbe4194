// Holds an open file descriptor and closes it. Internal to this folder.
#pragma once

#include <utility>

#include <unistd.h>

namespace Halyon
{
class Descriptor
{
public:
    Descriptor() noexcept = default;
    explicit Descriptor(int descriptor) noexcept : m_descriptor(descriptor) {}
    Descriptor(Descriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~Descriptor() { Close(); }

    [[nodiscard]] int Get() const noexcept { return m_descriptor; }
    explicit operator bool() const noexcept { return m_descriptor >= 0; }

    // False when what was written could not be kept.
    bool Close() noexcept
    {
        const int descriptor = std::exchange(m_descriptor, -1);
        return descriptor < 0 || close(descriptor) == 0;
    }

private:
    int m_descriptor = -1;
};
} // namespace Halyon
