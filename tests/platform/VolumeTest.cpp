// Volumes: real mounts where the machine allows them, and lists of mounts that only other machines have.

#include <array>
#include <filesystem>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <halyon/platform/TovPCMac.h>
#include <tests/support/InChild.h>
#include <tests/support/TempFolder.h>
#include <tests/support/Text.h>

using HalyonTest::EnterOwnMounts;
using HalyonTest::InChild;
using HalyonTest::MayHaveOwnMounts;
using HalyonTest::TempFolder;
using HalyonTest::U8;
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

TEST(Volume, KindsByWhatIsMounted)
{
    if (!MayHaveOwnMounts())
        GTEST_SKIP() << "this user may not mount anything (needs CAP_SYS_ADMIN)";
    const std::tuple<const char*, const char*, std::uint32_t> cases[] = {
        {"/nfs", "nfs4 host:/export", kTovDriveRemote}, {"/ssh", "fuse.sshfs ann@host:", kTovDriveRemote},
        {"/plan", "9p share", kTovDriveRemote},         {"/disc", "iso9660 /none/sr0", kTovDriveOptical},
        {"/mem", "ramfs none", kTovDriveMemory},        {"/layers", "overlay overlay", kTovDriveFixed},
        {"/pool", "zfs pool/data", kTovDriveFixed},     {"/tree", "btrfs /none/sda2", kTovDriveFixed},
        {"/sys2", "sysfs sysfs", kTovDriveUnknown},     {"/fuse", "fuse.portal portal", kTovDriveUnknown},
        {"/word", "other  ", kTovDriveUnknown},
    };
    const TempFolder folder;
    std::string table = "1 0 0:99 / / rw - overlay overlay rw\n";
    int id = 2;
    for (const auto& [at, what, kind] : cases)
        table += std::to_string(id++) + " 1 0:99 / /none" + at + " rw shared:1 master:2 - " + what + " rw\n";
    table += std::to_string(id) + " 1 11:0 / /none/udf rw - udf /dev/sr0 rw\nnot a line\n";
    folder.Write("table", table);
    const std::string kinds = InChild(
        [&]
        {
            if (!EnterOwnMounts() ||
                mount((folder.Path() / "table").c_str(), "/proc/self/mountinfo", nullptr, MS_BIND, nullptr) != 0)
                return std::string("no mount");
            std::string text;
            for (const auto& [at, what, kind] : cases)
                text += std::to_string(KindOf(std::string("/none") + at)) + " ";
            return text + std::to_string(KindOf("/none/udf")) + DriverOf("/none/nfs/a");
        });
    std::string expected;
    for (const auto& [at, what, kind] : cases)
        expected += std::to_string(kind) + " ";
    EXPECT_EQ(kinds, expected + "5/none/nfs");
}

// In place of the system's devices stand some that say what the disk of "/" would.
TEST(Volume, RemovableIsWhatTheDiskOrItsDeviceSays)
{
    struct stat root = {};
    ASSERT_EQ(stat("/", &root), 0);
    if (!MayHaveOwnMounts() || TovGetDriveType(u"/") != kTovDriveFixed || major(root.st_dev) == 0)
        GTEST_SKIP() << "needs CAP_SYS_ADMIN and a root folder on a disk";
    const std::string device = std::to_string(major(root.st_dev)) + ":" + std::to_string(minor(root.st_dev));
    const std::string kinds = InChild(
        [&]
        {
            const fs::path devices = "/sys/dev/block";
            if (!EnterOwnMounts() || !MountMemory(devices))
                return std::string("no mount");
            const auto write = [&](const char* name, const char* text)
            {
                std::ofstream(devices / name) << text;
            };
            fs::create_directories(devices / "disk/part");
            fs::create_directory_symlink("disk", devices / device);
            std::string text = std::to_string(KindOf("/"));
            write("disk/removable", "1\n");
            text += std::to_string(KindOf("/"));
            fs::remove(devices / device);
            fs::create_directory_symlink("disk/part", devices / device);
            text += std::to_string(KindOf("/"));
            write("disk/removable", "0\n");
            return text + std::to_string(KindOf("/"));
        });
    EXPECT_EQ(kinds, "3223");
}
