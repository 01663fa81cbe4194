#include <host/ItemPath.h>

#include <cerrno>
#include <filesystem>

#include <sys/stat.h>

#include <host/HostError.h>
#include <host/PrintableText.h>

namespace HynHost
{
std::string ItemPath(std::string_view action, const std::string& name)
{
    namespace fs = std::filesystem;
    const std::string shown = PrintableText(name);
    fs::path item(name.substr(0, name.find_last_not_of('/') + 1));
    if (item.empty() && name.starts_with('/'))
        item = "/";
    std::error_code error;
    if (item.has_filename() && item.filename() != "." && item.filename() != "..")
        item = fs::canonical(item.has_parent_path() ? item.parent_path() : ".", error) / item.filename();
    else
        item = fs::canonical(item, error);
    if (error)
        throw HostError(action, shown, error.message());
    struct stat status = {};
    if (lstat(item.c_str(), &status) != 0)
        ThrowSystemError(action, shown, errno);
    if (!IsUTF8(item.string()))
        throw HostError(action, shown, "its path is not valid UTF-8");
    return item.string();
}
} // namespace HynHost
