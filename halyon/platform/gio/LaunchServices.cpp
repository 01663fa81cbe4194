// Starting applications: executable files, desktop entries, bundle folders.

#include <halyon/platform/LaunchServices.h>

#include <cstring>
#include <filesystem>
#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include <halyon/platform/gio/CommandWords.h>
#include <halyon/platform/gio/DesktopEntry.h>
#include <halyon/platform/linux/Spawn.h>

namespace Halyon
{
namespace
{
namespace fs = std::filesystem;

bool IsProgram(const fs::path& path)
{
    std::error_code ignored;
    return fs::is_regular_file(path, ignored) && access(path.c_str(), X_OK) == 0;
}

// The one program in the folder, or the one that is called like the bundle; empty when neither says which.
fs::path ProgramIn(const fs::path& folder, const fs::path& name)
{
    if (IsProgram(folder / name))
        return folder / name;
    fs::path only;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error))
    {
        if (!IsProgram(entry->path()))
            continue;
        if (!only.empty())
            return {};
        only = entry->path();
    }
    return only;
}

fs::path ProgramOfBundle(const fs::path& bundle)
{
    for (const char* folder : {"Contents/Linux", "Contents/MacOS"})
    {
        if (fs::path program = ProgramIn(bundle / folder, bundle.stem()); !program.empty())
            return program;
    }
    return {};
}

std::vector<LaunchCommand> CommandsFor(const fs::path& application, const std::vector<std::string>& documents,
                                       const std::vector<std::string>& parameters)
{
    std::error_code ignored;
    const bool isFolder = fs::is_directory(application, ignored);
    if (!isFolder && application.extension() == ".desktop")
        return CommandsOfDesktopEntry(application.c_str(), documents, parameters);
    LaunchCommand command;
    command.program = isFolder ? ProgramOfBundle(application).native() : application.native();
    if (command.program.empty())
        return {};
    command.arguments.push_back(command.program);
    command.arguments.insert(command.arguments.end(), documents.begin(), documents.end());
    command.arguments.insert(command.arguments.end(), parameters.begin(), parameters.end());
    return {command};
}

// Returns 0 or the system's reason.
int Start(const LaunchCommand& command)
{
    std::vector<char*> arguments;
    for (const std::string& argument : command.arguments)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    const char* folder = command.folder.empty() ? nullptr : command.folder.c_str();
    return SpawnDetached(command.program.c_str(), arguments.data(), folder);
}

std::vector<std::string> DocumentsOf(const LSLaunchFSRefSpec& spec)
{
    std::vector<std::string> documents;
    for (std::uint32_t i = 0; i < spec.numDocs; ++i)
    {
        const FSRef& item = spec.itemRefs[i];
        const bool isApplication = spec.passThruParams != nullptr && std::memcmp(&item, spec.appRef, sizeof item) == 0;
        char path[sizeof item.szPath];
        if (!isApplication && FSRefMakePath(&item, path, sizeof path) == noErr)
            documents.emplace_back(path);
    }
    return documents;
}

OSStatus Launch(const LSLaunchFSRefSpec& spec)
{
    char application[sizeof spec.appRef->szPath];
    if (const OSStatus status = FSRefMakePath(spec.appRef, application, sizeof application); status != noErr)
        return status;
    const std::vector<std::string> parameters =
        spec.passThruParams != nullptr ? CommandWords(spec.passThruParams) : std::vector<std::string>();
    const std::vector<LaunchCommand> commands = CommandsFor(application, DocumentsOf(spec), parameters);
    if (commands.empty())
        return kLSNotAnApplicationErr;
    for (const LaunchCommand& command : commands)
    {
        if (Start(command) != 0)
            return kLSUnknownErr;
    }
    return noErr;
}
} // namespace

OSStatus LSOpenFromRefSpec(const LSLaunchFSRefSpec* pSpec, FSRef* pLaunched) noexcept
{
    if (pSpec == nullptr || pSpec->appRef == nullptr || (pSpec->numDocs != 0 && pSpec->itemRefs == nullptr))
        return paramErr;
    try
    {
        const OSStatus status = Launch(*pSpec);
        if (status == noErr && pLaunched != nullptr)
            *pLaunched = *pSpec->appRef;
        return status;
    }
    catch (const std::bad_alloc&)
    {
        return memFullErr;
    }
    catch (const std::exception&)
    {
        return kLSUnknownErr;
    }
}
} // namespace Halyon
