#include <host/OpenCommand.h>

#include <filesystem>
#include <memory>
#include <string>

#include <unistd.h>

#include <CLI/CLI.hpp>

#include <halyon/platform/LaunchServices.h>
#include <halyon/string/CTovStringW.h>
#include <host/DefaultApplication.h>
#include <host/HostError.h>
#include <host/ItemPath.h>
#include <host/PrintableText.h>
#include <host/Recogniser.h>

namespace HynHost
{
namespace
{
constexpr std::string_view kAction = "cannot open";

struct Options
{
    std::string file;
    std::string application;
};

// Starts an application, with a document unless `document` is empty.
Halyon::OSStatus Start(const std::string& application, const std::string& document)
{
    Halyon::FSRef program{};
    Halyon::FSRef item{};
    if (!CTovStringW::FromUTF8(application).MakeFSRef(&program))
        return Halyon::fnfErr;
    if (!document.empty() && !CTovStringW::FromUTF8(document).MakeFSRef(&item))
        return Halyon::fnfErr;
    const std::uint32_t items = document.empty() ? 0 : 1;
    const Halyon::LSLaunchFSRefSpec launch{&program, items, items == 0 ? nullptr : &item, nullptr, 1, nullptr};
    return Halyon::LSOpenFromRefSpec(&launch, nullptr);
}

void Check(Halyon::OSStatus status, const std::string& path)
{
    if (status == Halyon::noErr)
        return;
    const char* reason = status == Halyon::fnfErr                   ? "there is no such file, or its path is too long"
                         : status == Halyon::kLSNotAnApplicationErr ? "it is no application that could be started"
                                                                    : "the system cannot start it";
    throw HostError(kAction, PrintableText(path), reason);
}

void OpenDocument(const std::string& path)
{
    const std::string application = DefaultApplication(path);
    if (application.empty())
        throw HostError(kAction, PrintableText(path), "the desktop knows no application for it; name one with --with");
    Check(Start(application, path), application);
}

// Whether the item itself is to be started. A disk without permissions of its own marks every file as a program, so a
// medium is none, whatever its permissions say.
bool IsApplication(const std::string& path)
{
    if (!std::filesystem::is_regular_file(path) || path.ends_with(".desktop"))
        return true; // a folder may be a bundle; the launch tells
    return access(path.c_str(), X_OK) == 0 && !Recogniser().Recognise(path).kind;
}

void Open(const Options& options)
{
    const std::string path = ItemPath(kAction, options.file);
    if (!options.application.empty())
    {
        const std::string application = ItemPath(kAction, options.application);
        return Check(Start(application, path), application);
    }
    if (!IsApplication(path))
        return OpenDocument(path);
    const Halyon::OSStatus status = Start(path, {});
    if (status == Halyon::kLSNotAnApplicationErr && std::filesystem::is_directory(path))
        return OpenDocument(path);
    Check(status, path);
}
} // namespace

void AddOpenCommand(CLI::App& app)
{
    auto options = std::make_shared<Options>();
    CLI::App* command =
        app.add_subcommand("open", "Open a file with its application, or start it when it is an application");
    command->add_option("FILE", options->file, "The file, folder, program, desktop entry or bundle")->required();
    command
        ->add_option("--with", options->application,
                     "The application: a program, desktop entry or bundle (default: the desktop's choice)")
        ->type_name("FILE");
    command->callback([options] { Open(*options); });
}
} // namespace HynHost
