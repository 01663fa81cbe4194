#include <host/DatabaseFile.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>

#include <host/HostError.h>
#include <host/PrintableText.h>

namespace HynHost
{
namespace
{
std::string AbsolutePath(std::string_view action, const std::string& name)
{
    std::error_code error;
    std::string path = std::filesystem::absolute(name, error).string();
    if (error)
        throw HostError(action, PrintableText(name), error.message());
    if (!IsUTF8(path))
        throw HostError(action, PrintableText(name), "its path is not valid UTF-8");
    return path;
}

void CheckContent(std::string_view action, const std::string& path)
{
    constexpr std::string_view kMagic("SQLite format 3\0", 16);
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        ThrowSystemError(action, path, errno);
    std::array<char, kMagic.size()> head{};
    stream.read(head.data(), head.size());
    if (stream.gcount() != 0 && std::string_view(head.data(), head.size()) != kMagic)
        throw HostError(action, path, "it is not a database");
}
} // namespace

DatabaseFile LookAtDatabaseFile(std::string_view action, const std::string& name)
{
    DatabaseFile file{AbsolutePath(action, name)};
    std::error_code error;
    const auto status = std::filesystem::status(file.path, error);
    if (status.type() == std::filesystem::file_type::not_found)
        return file;
    if (!std::filesystem::exists(status))
        throw HostError(action, file.path, error.message());
    if (!std::filesystem::is_regular_file(status))
        throw HostError(action, file.path, "it is not a regular file");
    CheckContent(action, file.path);
    file.exists = true;
    return file;
}

bool IsEngineName(std::string_view name) noexcept
{
    return name.starts_with("file:");
}

std::string EngineName(std::string_view action, std::string name, bool mayMake)
{
    if (!IsUTF8(name))
        throw HostError(action, PrintableText(name), "it is not valid UTF-8");
    const std::size_t end = std::min(name.find('#'), name.size()); // what follows means nothing to the engine
    const std::string_view read = std::string_view(name).substr(0, end);
    const bool hasQuery = read.find('?') != std::string_view::npos;
    if (!mayMake && read.find("?mode=") == std::string_view::npos && read.find("&mode=") == std::string_view::npos)
        name.insert(end, hasQuery ? "&mode=rw" : "?mode=rw");
    return name;
}
} // namespace HynHost
