// Volumes: real mounts where the machine allows them, and lists of mounts that only other machines have.

#include <array>
#include <filesystem>
#include <sstream>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include <sys/mount.h>

#include <halyon/platform/TovPCMac.h>
#include <tests/support/InChild.h>
#include <tests/support/TempFolder.h>
#include <tests/support/Text.h>

using namespace HalyonTest;
namespace fs = std::filesystem;

namespace
{
std::string DriverOf(const char16_t* path)
{
    std::u16string driver(kTovPathUnits, u'#');
    const int result = TovGetPathDriver(path, driver.data());
    EXPECT_EQ(result != 0, driver[0] != 0);
    return U8(driver.c_str());
}

std::string DriverOf(const std::string& path)
{
    return DriverOf(CTovStringW::FromUTF8(path));
}

std::uint32_t KindOf(const std::string& path)
{
    return TovGetDriveType(CTovStringW::FromUTF8(path));
}

// "driver kind root" with the test's folder left out.
std::string About(const fs::path& below, const std::string& name)
{
    const std::string path = (below / name).string();
    const std::string driver = DriverOf(path);
    const std::string shown = driver.starts_with(below.native()) ? driver.substr(below.native().size()) : driver;
    return shown + " " + std::to_string(KindOf(path)) + " " +
           std::to_string(TovPathIsRoot(CTovStringW::FromUTF8(path))) + "\n";
}

bool MountMemory(const fs::path& folder)
{
    fs::create_directories(folder);
    return mount("any word", folder.c_str(), "tmpfs", 0, "size=64k") == 0;
}
} // namespace

TEST(Volume, PathsOfTheStartupVolumeHaveNoDriver)
{
    for (const char16_t* path : {u"/", u"/none/at all", u"relative", u"", u"//host/share", u"\\\\host\\share"})
        EXPECT_EQ(DriverOf(path), "") << U8(path);
    EXPECT_EQ(DriverOf((u"/" + std::u16string(5000, u'x')).c_str()), "");
    EXPECT_EQ(DriverOf("/proc/self"), "/proc");
    EXPECT_EQ(DriverOf("/process"), "");
    const std::pair<const char16_t*, int> roots[] = {{u"/", 1},    {u"//", 1}, {u"/proc", 1},   {u"/proc/", 1},
                                                     {u"proc", 0}, {u"", 0},   {u"/proc/1", 0}, {nullptr, 0}};
    for (const auto& [path, isRoot] : roots)
        EXPECT_EQ(TovPathIsRoot(path), isRoot) << U8(path);
}

TEST(Volume, KindsThatEveryMachineHas)
{
    EXPECT_EQ(TovGetDriveType(u"/proc"), kTovDriveUnknown);
    EXPECT_EQ(TovGetDriveType(u"/proc/self/status"), kTovDriveUnknown);
    EXPECT_EQ(TovGetDriveType(u"/none"), kTovDriveUnknown);
    EXPECT_EQ(TovGetDriveType((u"/" + std::u16string(5000, u'x')).c_str()), kTovDriveUnknown);
    EXPECT_NE(TovGetDriveType(u"/"), kTovDriveUnknown);
    EXPECT_EQ(TovGetDriveType(u""), TovGetDriveType(u"/"));
    EXPECT_EQ(TovGetDriveType(nullptr), TovGetDriveType(u"/"));
    fs::current_path("/proc");
    EXPECT_EQ(TovGetDriveType(u"self"), kTovDriveUnknown);
    fs::current_path("/");
}

TEST(Volume, SameRootMeansOneVolumeOrOneShare)
{
    const std::tuple<const char16_t*, const char16_t*, int> cases[] = {
        {u"/", u"/none", 1},       {u"/proc/1", u"/proc", 1}, {u"/proc", u"/", 0},  {u"//h/s/a", u"//H/S/b", 1},
        {u"//h/s", u"//h/s/a", 1}, {u"//h/s", u"//h/t", 0},   {u"//h/s", u"/s", 0}, {u"\\\\h\\s\\a", u"\\\\h\\s", 1},
        {u"a", u"b", 1},           {nullptr, u"/", 0},
    };
    for (const auto& [a, b, same] : cases)
    {
        EXPECT_EQ(TovPathIsSameRoot(a, b), same) << U8(a) << " and " << U8(b);
        EXPECT_EQ(TovPathIsSameRoot(b, a), same) << U8(b) << " and " << U8(a);
    }
}

TEST(Volume, FoldersOfRealMountsWhateverTheirNames)
{
    if (!MayHaveOwnMounts())
        GTEST_SKIP() << "this user may not mount anything (needs CAP_SYS_ADMIN)";
    const TempFolder folder;
    folder.Write("file");
    const fs::path& at = folder.Path();
    const std::string seen = InChild(
        [&]
        {
            if (!EnterOwnMounts() || !MountMemory(at / "a b\t\\040\n写") || !MountMemory(at / "outer") ||
                !MountMemory(at / "outer/inner") || !MountMemory(at / "\xFF\xFE") ||
                !MountMemory(at / "covered/inner") || !MountMemory(at / "covered") ||
                mount((at / "file").c_str(), (at / "file").c_str(), nullptr, MS_BIND, nullptr) != 0)
                return std::string("no mount");
            fs::create_directories(at / "covered/inner");
            std::string text;
            for (const char* name : {"a b\t\\040\n写/deep/none", "a b\t\\040\n写/", "outer/inner", "outer/inner2",
                                     "outer", "outermost", "covered/inner", "file", "OUTER"})
                text += About(at, name);
            return text;
        });
    EXPECT_EQ(seen, "/a b\t\\040\n写 1 0\n"
                    "/a b\t\\040\n写 6 1\n"
                    "/outer/inner 6 1\n"
                    "/outer 1 0\n"
                    "/outer 6 1\n" +
                        std::string(" 1 0\n") + "/covered 6 0\n" + " " + std::to_string(KindOf(at / "file")) + " 0\n" +
                        " 1 0\n");
}

// In place of the machine's own stand a list of mounts, and devices that say whether they or their disk are removable.
TEST(Volume, KindsByWhatIsMounted)
{
    if (!MayHaveOwnMounts())
        GTEST_SKIP() << "this user may not mount anything (needs CAP_SYS_ADMIN)";
    const struct
    {
        const char* device;
        const char* what;
        std::uint32_t kind;
    } cases[] = {
        {"0:99", "nfs4 host:/export", kTovDriveRemote},
        {"0:99", "fuse.sshfs ann@host:", kTovDriveRemote},
        {"0:99", "9p share", kTovDriveRemote},
        {"0:99", "iso9660 /none/sr0", kTovDriveOptical},
        {"0:99", "ramfs none", kTovDriveMemory},
        {"0:99", "overlay overlay", kTovDriveFixed},
        {"0:99", "zfs pool/data", kTovDriveFixed},
        {"0:99", "btrfs /none/sda2", kTovDriveFixed},
        {"0:99", "sysfs sysfs", kTovDriveUnknown},
        {"0:99", "fuse.portal portal", kTovDriveUnknown},
        {"0:99", "other  ", kTovDriveUnknown},
        {"11:0", "udf /dev/sr0", kTovDriveOptical},
        {"8:1", "ext4 /dev/silent", kTovDriveFixed},
        {"8:2", "ext4 /dev/stick", kTovDriveRemovable},
        {"8:3", "ext4 /dev/part-of-stick", kTovDriveRemovable},
        {"8:4", "ext4 /dev/part-of-disk", kTovDriveFixed},
    };
    const TempFolder folder;
    std::ostringstream table;
    table << "1 0 0:99 / / rw - overlay overlay rw\n";
    std::string expected;
    for (int id = 2; const auto& [device, what, kind] : cases)
    {
        table << id << " 1 " << device << " / /none/" << id << " rw shared:1 master:2 - " << what << " rw\n";
        expected += std::to_string(kind) + " ";
        ++id;
    }
    table << "not a line\n";
    folder.Write("table", table.str());
    const std::string kinds = InChild(
        [&]
        {
            const fs::path devices = "/sys/dev/block";
            if (!EnterOwnMounts() || !MountMemory(devices) ||
                mount((folder.Path() / "table").c_str(), "/proc/self/mountinfo", nullptr, MS_BIND, nullptr) != 0)
                return std::string("no mount");
            for (const auto& [device, place] : {std::pair("8:1", "silent"), std::pair("8:2", "stick"),
                                                std::pair("8:3", "stick/part"), std::pair("8:4", "disk/part")})
            {
                fs::create_directories(devices / place);
                fs::create_directory_symlink(place, devices / device);
            }
            std::ofstream(devices / "stick/removable") << "1\n";
            std::ofstream(devices / "disk/removable") << "0\n";
            std::string text;
            for (std::size_t id = 2; id < std::size(cases) + 2; ++id)
                text += std::to_string(KindOf("/none/" + std::to_string(id))) + " ";
            return text + DriverOf("/none/2/a");
        });
    EXPECT_EQ(kinds, expected + "/none/2");
}
