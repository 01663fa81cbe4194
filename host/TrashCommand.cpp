#include <host/TrashCommand.h>

#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include <host/DesktopTrash.h>
#include <host/HostError.h>
#include <host/ItemPath.h>
#include <host/PrintableText.h>

namespace HynHost
{
namespace
{
constexpr std::string_view kAction = "cannot move to the trash";

void Tell(const std::exception& failure)
{
    std::fprintf(stderr, "hynhost: %s\n", failure.what());
}

// Returns whether all items were moved. One that cannot be moved keeps none of the others.
bool MoveToTrash(const std::vector<std::string>& names)
{
    bool allMoved = true;
    std::vector<TrashItem> items;
    for (const std::string& name : names)
    {
        try
        {
            items.emplace_back(ItemPath(kAction, name));
        }
        catch (const HostError& failure)
        {
            Tell(failure);
            allMoved = false;
        }
    }
    MoveToDesktopTrash(items);
    for (const TrashItem& item : items)
    {
        if (!item.IsThere())
            continue;
        Tell(HostError(kAction, PrintableText(item.Path()), item.WhyNotMoved()));
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
