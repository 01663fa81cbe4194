#include <host/InfoCommand.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>

#include <sys/stat.h>

#include <CLI/CLI.hpp>

#include <halyon/platform/TovPCMac.h>
#include <halyon/tools/CHynPathHelper.h>
#include <halyon/tools/CHynPubTools.h>
#include <host/HostError.h>
#include <host/ItemPath.h>
#include <host/Moment.h>
#include <host/NumberText.h>
#include <host/PrintableText.h>
#include <host/Recogniser.h>

using Halyon::CHynPathHelper;
using Halyon::CHynPubTools;

namespace HynHost
{
namespace
{
constexpr std::string_view kAction = "cannot tell about";

void PrintLine(const char* label, const std::string& value)
{
    if (!value.empty())
        std::printf("%-12s%s\n", label, PrintableText(value).c_str());
}

std::string VolumeText(const CTovStringW& path)
{
    constexpr std::array<const char*, 7> kDrives = {
        "", "", "removable disk", "fixed disk", "network drive", "optical disc", "kept in memory"};
    const CTovStringW mount = CHynPathHelper::GetPathDriver(path);
    const std::uint32_t drive = TovGetDriveType(mount);
    const std::string kind = drive < kDrives.size() ? kDrives.at(drive) : "";
    const std::string name = mount.IsEmpty() ? "startup volume" : mount.ToUTF8();
    return kind.empty() ? name : name + " (" + kind + ")";
}

std::string SizeText(long long bytes)
{
    constexpr std::array<const char*, 5> kUnits = {"", " bytes", " KB", " MB", " GB"};
    std::array<char16_t, 16> text{};
    const int unit = CHynPubTools::GetFileSizeStr(bytes, text.data());
    std::string size = CTovStringW(text.data()).ToUTF8() + kUnits.at(static_cast<std::size_t>(unit));
    if (unit > 1)
        size += " (" + NumberText(bytes) + " bytes)";
    return size;
}

std::string MomentText(const FILETIME& moment)
{
    return CHynPubTools::FileTimeToString(u"%04d-%02d-%02d %02d:%02d:%02d", &moment).ToUTF8();
}

// What the content tells; nothing of a file that is no medium.
void PrintMedium(const std::string& path)
{
    const FileFacts facts = Recogniser().Recognise(path);
    if (facts.kind)
    {
        PrintLine("Kind", std::string(MediaKindName(*facts.kind)));
        PrintLine("Taken", MomentText(facts.taken));
        if (facts.width != 0 && facts.height != 0)
            PrintLine("Pixels", std::to_string(facts.width) + "x" + std::to_string(facts.height));
        PrintLine("Stars", std::string(static_cast<std::size_t>(facts.rating.value_or(0)), '*'));
    }
    PrintLine("Problem", facts.problem);
}

void Tell(const std::string& name)
{
    const std::string path = ItemPath(kAction, name);
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        throw HostError(kAction, PrintableText(path),
                        errno == ENOENT ? "it is a link to nothing" : SystemReason(errno));
    const CTovStringW wide = CTovStringW::FromUTF8(path);
    CTovStringW folder = wide;
    CHynPathHelper::RemoveFileSpec(folder);
    const bool isFile = S_ISREG(status.st_mode);

    PrintLine("Name", CHynPathHelper::FindFileName(wide).ToUTF8());
    if (isFile)
        PrintLine("Extension", CHynPathHelper::FindExtension(wide).ToUTF8());
    PrintLine("Folder", folder.ToUTF8());
    PrintLine("Volume", VolumeText(wide));
    if (S_ISDIR(status.st_mode))
        PrintLine("Kind", "folder");
    if (isFile)
        PrintLine("Size", SizeText(status.st_size));
    PrintLine("Modified", MomentText(MomentFromUnixNs(StampOf(status).modifiedNs)));
    if (isFile && CHynPathHelper::IsReadOnlyFile(wide) != 0)
        PrintLine("Access", "read-only");
    if (isFile)
        PrintMedium(path);
}
} // namespace

void AddInfoCommand(CLI::App& app)
{
    auto file = std::make_shared<std::string>();
    CLI::App* command = app.add_subcommand("info", "Tell name, place, size, dates and pixels of a file");
    command->add_option("FILE", *file, "The file or folder")->required();
    command->callback([file] { Tell(*file); });
}
} // namespace HynHost
