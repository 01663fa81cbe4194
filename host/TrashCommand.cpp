#include <host/TrashCommand.h>

#include <cerrno>
#include <cstdio>
#include <deque>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>

#include <halyon/tools/CHynPubTools.h>
#include <host/HostError.h>
#include <host/ItemPath.h>
#include <host/PrintableText.h>

namespace HynHost
{
namespace
{
constexpr std::string_view kAction = "cannot move to the trash";

struct Item
{
    explicit Item(const std::string& name) : path(ItemPath(kAction, name)) { lstat(path.c_str(), &status); }

    // Whether the item itself, and nothing else by now, lies at its path.
    [[nodiscard]] bool IsThere() const
    {
        struct stat now = {};
        return lstat(path.c_str(), &now) == 0 && now.st_dev == status.st_dev && now.st_ino == status.st_ino;
    }

    std::string path;
    struct stat status = {};
};

// The tool does not tell why an item stayed where it is.
std::string WhyNotMoved(const std::string& path)
{
    if (access(std::filesystem::path(path).parent_path().c_str(), W_OK) != 0)
        return SystemReason(errno);
    return "it may not be moved, or its volume has no trash of yours";
}

void Tell(const std::exception& failure)
{
    std::fprintf(stderr, "hynhost: %s\n", failure.what());
}

// Returns whether all items were moved. One that cannot be moved keeps none of the others.
bool MoveToTrash(const std::vector<std::string>& names)
{
    bool allMoved = true;
    std::vector<Item> items;
    std::deque<CTovStringW> paths;
    for (const std::string& name : names)
    {
        try
        {
            paths.push_back(CTovStringW::FromUTF8(items.emplace_back(name).path));
        }
        catch (const HostError& failure)
        {
            Tell(failure);
            allMoved = false;
        }
    }
    Halyon::CHynPubTools::DeleteFile(paths, nullptr, 1, 0);
    for (const Item& item : items)
    {
        if (!item.IsThere())
            continue;
        Tell(HostError(kAction, PrintableText(item.path), WhyNotMoved(item.path)));
        allMoved = false;
    }
    return allMoved;
}
} // namespace

void AddTrashCommand(CLI::App& app)
{
    auto files = std::make_shared<std::vector<std::string>>();
    CLI::App* command = app.add_subcommand("trash", "Move files and folders to the desktop's trash");
    command->add_option("FILE", *files, "What goes to the trash; a link goes itself")->required();
    command->callback(
        [files]
        {
            if (!MoveToTrash(*files))
                throw CLI::RuntimeError(1);
        });
}
} // namespace HynHost
