// Looks into a file and tells what it is: its kind by content, never by name, and for a picture what its metadata says.
//
//     Recogniser recogniser;
//     FileFacts facts = recogniser.Recognise("/home/ann/Pictures/a.jpg");
//
// Nothing is stored and nothing is remembered from one file to the next, so every thread may have one of its own and
// the results may be taken elsewhere. Making one loads the recognition library's database, a few milliseconds.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>

#include <host/FileBytes.h>
#include <host/FileFacts.h>

struct magic_set;

namespace HynHost
{
class Recogniser
{
public:
    // Throws HostError when the recognition library cannot be set up. [any]
    Recogniser();

    // The facts of one file. Nothing is thrown for a file that cannot be read: `facts.problem` says why. [owner]
    [[nodiscard]] FileFacts Recognise(const std::string& path);

    // The bytes of the file that was recognised last, as long as no other is; none when it could not be opened.
    // [owner]
    [[nodiscard]] std::span<const std::uint8_t> Bytes() const noexcept { return m_file.Bytes(); }

private:
    struct Closer
    {
        void operator()(magic_set* magic) const noexcept;
    };

    std::optional<MediaKind> KindOf(std::span<const std::uint8_t> bytes);

    std::unique_ptr<magic_set, Closer> m_magic;
    FileBytes m_file;
};

// How the system tells that a file changed. [any]
[[nodiscard]] FileStamp StampOf(const struct stat& status) noexcept;
} // namespace HynHost
