// The system's folders, the names that people see, and what the caller may do with an item.

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include <spawn.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <halyon/platform/BaseFunction.h>
#include <halyon/platform/LaunchServices.h>
#include <tests/support/Command.h>
#include <tests/support/InChild.h>
#include <tests/support/TempFolder.h>
#include <tests/support/Text.h>

using namespace Halyon;
using namespace HalyonTest;
namespace fs = std::filesystem;

namespace
{
std::string Find(FSVolumeRefNum domain, OSType type, Boolean create = 0)
{
    FSRef ref;
    const OSStatus status = FSFindFolder(domain, type, create, &ref);
    return status == noErr ? ref.szPath : "status " + std::to_string(status);
}

// Statuses of the lock, of opening for reading and for writing; whether writable; the privileges.
std::string Rights(const fs::path& path)
{
    FSRef ref;
    if (FSPathMakeRef(path.c_str(), &ref, nullptr) != noErr)
        return "no item";
    std::string text = std::to_string(FSRefCheckLock(&ref));
    for (const std::int8_t permissions : {fsRdPerm, fsRdWrPerm})
    {
        FSIORefNum file = -7;
        text += " " + std::to_string(FSOpenFork(&ref, 0, nullptr, permissions, &file));
        if (file != 0 && FSCloseFork(file) != noErr)
            text += "?";
    }
    Boolean writable = 9;
    FSCatalogInfo info = {9};
    OSStatus status = FSRefIsWritable(&ref, &writable);
    text += " " + std::to_string(status) + std::to_string(writable);
    status = FSGetCatalogInfo(&ref, kFSCatInfoUserPrivs, &info, nullptr, nullptr, nullptr);
    return text + " " + std::to_string(status) + std::to_string(info.userPrivileges);
}

std::string NameOf(const fs::path& path)
{
    FSRef ref;
    CFStringRef name = nullptr;
    EXPECT_EQ(FSPathMakeRef(path.c_str(), &ref, nullptr), noErr) << path;
    EXPECT_EQ(LSCopyDisplayNameForRef(&ref, &name), noErr) << path;
    const CTovStringW text = name;
    CFRelease(name);
    return text.ToUTF8();
}
} // namespace

TEST(Folders, TheUsersOwnFollowTheEnvironment)
{
    const TempFolder folder;
    const std::string home = folder.Path();
    const std::string found = InChild(
        [&]
        {
            setenv("HOME", home.c_str(), 1);
            unsetenv("XDG_DATA_HOME");
            std::string text = Find(kUserDomain, kDomainLibraryFolderType) + "\n";
            text += Find(kUserDomain, kDomainLibraryFolderType, kCreateFolder) + "\n";
            setenv("XDG_DATA_HOME", (home + "/data/of programs").c_str(), 1);
            text += Find(kUserDomain, kDomainLibraryFolderType, kCreateFolder) + "\n";
            setenv("XDG_DATA_HOME", "relative", 1);
            text += Find(kUserDomain, kDomainLibraryFolderType) + "\n";
            text += Find(kLocalDomain, kCurrentUserFolderType) + "\n";
            setenv("HOME", (home + "/none").c_str(), 1);
            text += Find(kLocalDomain, kCurrentUserFolderType, kCreateFolder) + "\n";
            return text + Find(kUserDomain, kDomainLibraryFolderType, kCreateFolder);
        });
    EXPECT_EQ(found, "status -43\n" + home + "/.local/share\n" + home + "/data/of programs\n" + home +
                         "/.local/share\n" + home + "\nstatus -43\nstatus -43");
    EXPECT_FALSE(fs::exists(folder.Path() / "none")) << "a home is never made";
    EXPECT_EQ(fs::status(folder.Path() / ".local/share").permissions(), fs::perms::owner_all);
}

TEST(Folders, TheSystemsAreFoundAndNeverMade)
{
    const std::tuple<FSVolumeRefNum, OSType, const char*> cases[] = {
        {kSystemDomain, kSystemFolderType, "/usr"},
        {kLocalDomain, kDomainLibraryFolderType, "/var"},
        {kSystemDomain, kDeveloperFolderType, "/usr/src"},
        {kSystemDomain, kApplicationsFolderType, "/opt"},
        {kLocalDomain, kUsersFolderType, "/home"},
        {kClassicDomain, kSystemFolderType, ""},
        {kClassicDomain, kApplicationsFolderType, ""},
        {kSystemDomain, kUsersFolderType, ""},
        {0, 0, ""},
    };
    for (const auto& [domain, type, path] : cases)
    {
        const std::string expected = *path != 0 && fs::exists(path) ? fs::canonical(path).string() : "status -43";
        EXPECT_EQ(Find(domain, type, kCreateFolder), expected) << domain << " " << path;
    }
    EXPECT_EQ(FSFindFolder(kSystemDomain, kSystemFolderType, 0, nullptr), paramErr);
}

TEST(Folders, NamesThatPeopleSee)
{
    const TempFolder folder;
    folder.Write("写真 1.jpg");
    folder.Write("\xFF.jpg");
    EXPECT_EQ(NameOf(folder.Path() / "写真 1.jpg"), "写真 1.jpg");
    EXPECT_EQ(NameOf(folder.Path() / "\xFF.jpg"), "\uFFFD.jpg");
    const std::string startup = NameOf("/");
    EXPECT_FALSE(startup.empty());
    EXPECT_EQ(startup.find('/'), std::string::npos);
    const FSRef none = {};
    CFStringRef name = reinterpret_cast<CFStringRef>(1);
    EXPECT_EQ(LSCopyDisplayNameForRef(&none, &name), fnfErr);
    EXPECT_EQ(name, nullptr);
}

TEST(Folders, TextComesFromWellFormedBytesOnly)
{
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"/a b", "/a b"},
        {"/写真/\U0001F600", "/写真/\U0001F600"},
        {"/\xFF", nullptr},
        {"/\xE5\x86", nullptr},
        {"/\xED\xA0\x80", nullptr},
        {"/\xC0\xAF", nullptr},
        {nullptr, nullptr},
    };
    for (const auto& [bytes, text] : cases)
    {
        const CFStringRef string = CFStringCreateWithCString(nullptr, bytes, kCFStringEncodingUTF8);
        EXPECT_EQ(string != nullptr, text != nullptr) << bytes;
        EXPECT_EQ(CTovStringW(string).ToUTF8(), text != nullptr ? text : "");
        CFRelease(string);
    }
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "a", 0), nullptr);
}

TEST(Rights, AreTheCallersOwnAndAskingChangesNothing)
{
    const TempFolder folder;
    const fs::path& at = folder.Path();
    for (const char* name : {"open", "closed", "hidden"})
        folder.Write(name, "content");
    fs::permissions(at / "open", fs::perms(0666));
    fs::permissions(at / "closed", fs::perms(0644));
    fs::permissions(at / "hidden", fs::perms(0000));
    fs::create_directory(at / "folder");
    fs::permissions(at / "folder", fs::perms(0777));
    ASSERT_EQ(mkfifo((at / "pipe").c_str(), 0666), 0);
    fs::permissions(at / "pipe", fs::perms(0666));
    struct stat before = {};
    ASSERT_EQ(stat((at / "open").c_str(), &before), 0);
    const std::string rights = InChild(
        [&]
        {
            BecomeNobody();
            std::string text;
            for (const char* name : {"open", "closed", "hidden", "folder", "pipe", "none"})
                text += Rights(at / name) + "\n";
            return text;
        });
    const bool isRoot = geteuid() == 0; // who owns the files may write to one of them more
    EXPECT_EQ(rights, "0 0 0 01 00\n" + std::string(isRoot ? "0 0 -54 00 04\n" : "0 0 0 01 00\n") +
                          "0 -54 -54 00 04\n"
                          "0 -1302 -1302 01 00\n"
                          "0 -1302 -1302 01 00\n"
                          "no item\n");
    struct stat after = {};
    ASSERT_EQ(stat((at / "open").c_str(), &after), 0);
    EXPECT_EQ(after.st_size, 7);
    EXPECT_EQ(after.st_ctim.tv_sec, before.st_ctim.tv_sec);
    EXPECT_EQ(after.st_ctim.tv_nsec, before.st_ctim.tv_nsec);
}

TEST(Rights, NobodyWritesToLockedFilesRunningProgramsAndReadOnlyVolumes)
{
    // Another program than this one, whose file does not run under an emulator.
    pid_t running = 0;
    char name[] = "sleep";
    char seconds[] = "60";
    char* const words[] = {name, seconds, nullptr};
    ASSERT_EQ(posix_spawnp(&running, name, nullptr, nullptr, words, environ), 0);
    EXPECT_EQ(Rights("/proc/" + std::to_string(running) + "/exe").substr(0, 7), "0 0 -54");
    kill(running, SIGKILL);
    waitpid(running, nullptr, 0);
    const TempFolder folder;
    folder.Write("locked");
    const std::string locked = (folder.Path() / "locked").native();
    if (HalyonTest::RunShell("chattr +i " + locked + " 2>&1").status == 0)
    {
        EXPECT_EQ(Rights(locked).substr(0, 9), "-45 0 -54");
        EXPECT_EQ(HalyonTest::RunShell("chattr -i " + locked).status, 0);
    }
    if (!HalyonTest::MayHaveOwnMounts())
        GTEST_SKIP() << "the volume part needs CAP_SYS_ADMIN";
    EXPECT_EQ(InChild(
                  [&]
                  {
                      const char* path = folder.Path().c_str();
                      if (!EnterOwnMounts() || mount(path, path, nullptr, MS_BIND, nullptr) != 0 ||
                          mount(nullptr, path, nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr) != 0)
                          return std::string("no mount");
                      return Rights(locked);
                  }),
              "0 0 -54 00 04");
}

TEST(Rights, WrongArgumentsOpenNothing)
{
    FSRef root;
    ASSERT_EQ(FSPathMakeRef("/", &root, nullptr), noErr);
    const FSRef none = {};
    FSIORefNum file = 7;
    EXPECT_EQ(FSOpenFork(&root, 1, u"x", fsRdPerm, &file), paramErr);
    EXPECT_EQ(FSOpenFork(&root, 0, nullptr, 0, &file), paramErr);
    EXPECT_EQ(FSOpenFork(&none, 0, nullptr, fsRdPerm, &file), fnfErr);
    EXPECT_EQ(file, 0);
    EXPECT_EQ(FSCloseFork(file), paramErr);
    EXPECT_EQ(FSRefCheckLock(&none), fnfErr);
    FSCatalogInfo info = {};
    EXPECT_EQ(FSGetCatalogInfo(&root, 1, &info, nullptr, nullptr, nullptr), paramErr);
}
