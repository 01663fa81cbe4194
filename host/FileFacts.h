// What is known of a file: how to tell that it changed, and what was read from it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <halyon/framework/HynTypes.h>
#include <host/MediaKind.h>

namespace HynHost
{
// Two equal stamps mean an unchanged file.
struct FileStamp
{
    long long size = 0;       // bytes
    long long modifiedNs = 0; // nanoseconds since 1970 UTC
    long long inode = 0;

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

// What reading a file tells.
struct FileFacts
{
    bool wasRead = false;          // false: only `problem` means anything
    FileStamp stamp;               // of the bytes that were read
    std::optional<MediaKind> kind; // nothing: not a media file
    FILETIME taken{};              // the moment of the picture, else the modified time
    std::int32_t width = 0;        // pixels; 0: not known
    std::int32_t height = 0;
    std::optional<std::int32_t> rating; // 0 to 5
    std::string problem;                // why it could not be read, or not wholly; empty when all is well
};
} // namespace HynHost
