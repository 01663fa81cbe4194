// The bytes of one file after the other, for looking into them.
//
// A small file is read at once into a buffer that is used again; a large one is mapped, so that only the pages that are
// looked at are read. A mapped file that shrinks or cannot be read any further while it is looked at reads as zeros and
// says so in `Failed()`; it never ends the program.
//
// One object a thread: the bytes of a file are gone when the next one is opened.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include <sys/stat.h>

namespace HynHost
{
class FileBytes
{
public:
    FileBytes();
    ~FileBytes();
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;

    // Opens the next file. Returns 0, or the system's error number; EINVAL for what is no regular file, which is not
    // read. [owner]
    [[nodiscard]] int Open(const std::string& path);

    // What the system says of the open file, and its bytes. [owner & open]
    [[nodiscard]] const struct stat& Status() const noexcept { return m_status; }
    [[nodiscard]] std::span<const std::uint8_t> Bytes() const noexcept { return m_bytes; }

    // Whether bytes of the open file could not be had since it was opened. [owner & open]
    [[nodiscard]] bool Failed() const noexcept;

private:
    int Read(int descriptor);
    int Map(int descriptor);
    void Close() noexcept;

    struct stat m_status = {};
    std::vector<std::uint8_t> m_buffer;
    std::span<const std::uint8_t> m_bytes;
    bool m_mapped = false;
};
} // namespace HynHost
