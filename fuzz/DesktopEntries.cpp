// Desktop entries and the command lines that come of them. The search path has programs that are called like field
// codes.

#include <halyon/platform/gio/DesktopEntry.h>
#include <tests/support/TempFolder.h>

#include "Input.h"

using namespace Halyon;
using HalyonFuzz::Hold;

namespace
{
const HalyonTest::TempFolder& Folder()
{
    static const HalyonTest::TempFolder folder;
    static const bool isMade = []
    {
        for (const char* name : {"prog", "%f", "%u", "%F", "%U", "%i", "%c", "%%", "x-terminal-emulator"})
        {
            folder.Write(name);
            std::filesystem::permissions(folder.Path() / name, std::filesystem::perms::owner_all);
        }
        return setenv("PATH", folder.Path().c_str(), 1) == 0;
    }();
    Hold(isMade, "the search path can be set");
    return folder;
}

std::vector<std::string> TakeTexts(HalyonFuzz::Input& input, unsigned count)
{
    std::vector<std::string> texts;
    while (count-- > 0)
        texts.emplace_back(input.TakeBytes());
    return texts;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    HalyonFuzz::Input input(data, size);
    const auto counts = input.Take<std::uint8_t>();
    std::vector<std::string> documents = TakeTexts(input, counts % 4);
    for (std::string& document : documents)
        document.insert(0, 1, '/');
    const std::vector<std::string> parameters = TakeTexts(input, counts / 4 % 4);
    Folder().Write("entry.desktop", std::string(input.TakeRest()));

    const auto commands = CommandsOfDesktopEntry((Folder().Path() / "entry.desktop").c_str(), documents, parameters);
    Hold(commands.size() <= std::max<std::size_t>(documents.size(), 1), "there is at most one command for a document");
    for (const LaunchCommand& command : commands)
    {
        Hold(!command.program.empty() && command.program.front() == '/', "a command has a program");
        Hold(command.arguments.size() > parameters.size(), "a command has its name and its parameters");
        Hold(std::equal(parameters.rbegin(), parameters.rend(), command.arguments.rbegin()), "parameters come last");
    }
    return 0;
}
