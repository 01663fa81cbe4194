// Bundle folders: made of the input, then asked for everything that they may hold.

#include <halyon/platform/CoreFoundation.h>
#include <halyon/tools/CHynPubTools.h>
#include <tests/support/TempFolder.h>

#include "Input.h"

using namespace Halyon;
using HalyonFuzz::Hold;
namespace fs = std::filesystem;

namespace
{
// "NAME/" a folder, "NAME=TARGET" a link, else a file. Nothing outside of the bundle is made.
void MakeItem(const fs::path& bundle, std::string_view item)
{
    const std::size_t equals = item.find('=');
    const fs::path name(item.substr(0, equals));
    if (name.is_absolute() || std::find(name.begin(), name.end(), "..") != name.end())
        return;
    std::error_code ignored;
    if (fs::weakly_canonical((bundle / name).parent_path(), ignored).native().rfind(bundle.native(), 0) != 0)
        return;
    fs::create_directories((bundle / name).parent_path(), ignored);
    if (equals != std::string_view::npos)
        fs::create_symlink(fs::path(item.substr(equals + 1)), bundle / name, ignored);
    else if (!item.ends_with('/'))
        std::ofstream(bundle / name) << "x";
}

void AskByPath(const char16_t* path, const char16_t* name)
{
    const std::u16string begin = path;
    const auto isInside = [&](const CTovStringW& answer)
    {
        Hold(answer.IsEmpty() || answer.View().starts_with(begin), "what a bundle holds lies in it");
    };
    isInside(CHynPubTools::GetResourcePathFromBundlePath(path));
    isInside(CHynPubTools::GetLocalizePathFromBundlePath(path));
    isInside(CHynPubTools::GetLocalizeUIPathFromBundlePath(path));
    isInside(CHynPubTools::GetResourcePathWithNameFromBundlePath(path, name));
    isInside(CHynPubTools::GetLocalizePathWithNameFromBundlePath(path, name));
    isInside(CHynPubTools::GetLocalizeUIPathWithNameFromBundlePath(path, name));
}

void AskBundle(CFBundleRef bundle, const std::u16string& name)
{
    static_cast<void>(CHynPubTools::GetBundleContentsPathWithName(bundle, name.c_str()));
    static_cast<void>(CHynPubTools::GetBundleResourcePathWithName(bundle, name.c_str()));
    static_cast<void>(CHynPubTools::GetBundleLocalizeUIPathWithName(bundle, name.c_str()));
    const HalyonFuzz::Buffer path(1024);
    Hold(CHynPubTools::GetModulePath(bundle, path) == 1, "a bundle lies in a folder");
    Hold(CHynPubTools::GetModuleUIPath(bundle, path) == 1, "that folder may hold one for the interface");
    const CFStringRef resource = CTovStringW(name.c_str()).StringRef();
    for (const CFStringRef folder : {static_cast<CFStringRef>(nullptr), resource})
        CFRelease(CFBundleCopyResourceURL(bundle, resource, folder, folder));
    CFRelease(resource);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const HalyonTest::TempFolder folder;
    HalyonFuzz::Input input(data, size);
    setenv("LANGUAGE", std::string(input.TakeBytes()).c_str(), 1);
    const std::u16string name = input.TakeText();
    const fs::path bundle = folder.Path() / "B";
    fs::create_directories(bundle / "Contents/Resources");
    for (int k = 0; k < 20 && !input.IsEmpty(); ++k)
        MakeItem(bundle, input.TakeBytes());

    const CTovStringW path = folder.Wide("B");
    AskByPath(path, name.c_str());
    const CFBundleRef made = CHynPubTools::CreateBundleByPath(path);
    Hold(made != nullptr, "a folder is a bundle");
    AskBundle(made, name);
    CFRelease(made);
    fs::remove_all(bundle);
    return 0;
}
