#include <host/Launching.h>

#include <halyon/platform/LaunchServices.h>
#include <halyon/string/CTovStringW.h>
#include <host/DefaultApplication.h>
#include <host/HostError.h>
#include <host/PrintableText.h>

namespace HynHost
{
namespace
{
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
} // namespace

bool TryStart(const std::string& application, const std::string& document)
{
    const Halyon::OSStatus status = Start(application, document);
    if (status == Halyon::noErr || status == Halyon::kLSNotAnApplicationErr)
        return status == Halyon::noErr;
    throw HostError(kOpenAction, PrintableText(application),
                    status == Halyon::fnfErr ? "there is no such file, or its path is too long"
                                             : "the system cannot start it");
}

void StartApplication(const std::string& application, const std::string& document)
{
    if (!TryStart(application, document))
        throw HostError(kOpenAction, PrintableText(application), "it is no application that could be started");
}

void OpenDocument(const std::string& path)
{
    const std::string application = DefaultApplication(path);
    if (application.empty())
        throw HostError(kOpenAction, PrintableText(path),
                        "the desktop knows no application for it; name one with --with");
    StartApplication(application, path);
}
} // namespace HynHost
