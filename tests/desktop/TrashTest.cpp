// Deleting files: to the desktop's trash, on the home volume and on others, and for good.

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/syscall.h>

#include <halyon/platform/BaseFunction.h>
#include <halyon/tools/CHynPubTools.h>

#include "tests/support/Command.h"
#include "tests/support/DenyCall.h"
#include "tests/support/Environment.h"
#include "tests/support/InChild.h"
#include "tests/support/TempFolder.h"

using namespace Halyon;
using namespace HalyonTest;
using Tools = CHynPubTools;
namespace fs = std::filesystem;

namespace
{
constexpr int kToTrash = 1;
constexpr int kForGood = 0;

std::string Unescaped(const std::string& text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const bool isCode = text[i] == '%';
        bytes += isCode ? static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16)) : text[i];
        i += isCode ? 2 : 0;
    }
    return bytes;
}

// Where the items of the trash come from, each with what lies there now: "a file's content", "/" for a folder. A record
// that is not as every desktop reads it, and an item without one, are told instead.
std::map<std::string, std::string> ItemsOf(const fs::path& trash)
{
    std::map<std::string, std::string> items;
    for (const auto& entry : fs::directory_iterator(trash / "info"))
    {
        const std::string record = ContentOf(entry.path());
        const std::size_t end = record.find("\nDeletionDate=");
        const std::string date = record.substr(std::min(end, record.size()));
        const bool isGood = record.starts_with("[Trash Info]\nPath=") && record.find('\n', 13) == end &&
                            date.size() == 34 && date[24] == 'T' && entry.path().extension() == ".trashinfo";
        const fs::path item = trash / "files" / entry.path().stem();
        items[isGood ? Unescaped(record.substr(18, end - 18)) : "bad record: " + record] =
            fs::is_symlink(item)     ? "-> " + fs::read_symlink(item).native()
            : fs::is_directory(item) ? "/"
                                     : ContentOf(item);
    }
    const auto filed = std::distance(fs::directory_iterator(trash / "files"), fs::directory_iterator());
    if (static_cast<std::size_t>(filed) != items.size())
        items["items"] = std::to_string(filed);
    return items;
}

// The user's data folder is below the test's own, so that their trash stays as it is.
class Trash : public testing::Test
{
protected:
    Trash() { m_environment.Set("XDG_DATA_HOME", (m_top.Path() / "data").c_str()); }

    [[nodiscard]] fs::path Home() const { return m_top.Path() / "data/Trash"; }
    [[nodiscard]] std::string At(const std::string& name) const { return (m_top.Path() / name).native(); }

    const TempFolder m_top;

private:
    Environment m_environment;
};
} // namespace

TEST_F(Trash, RecordsLeadBackToWhereItemsCameFrom)
{
    const std::string longName(250, 'n');
    const std::vector<std::string> names = {
        "plain.txt",    ".hidden",       "blank \"quote\" 'x'", "100%41 %", "line\nbreak\r", "caf\u00E9 \u5199\u771F",
        "#?&=;+[x]\\~", "tab\tand \x7F", "bytes \xFF\xC3",      longName,   "a.trashinfo",   "-rf",
    };
    std::map<std::string, std::string> expected;
    for (const std::string& name : names)
    {
        m_top.Write(name, "content of " + name);
        FSRef ref = {};
        ASSERT_EQ(FSPathMakeRef(At(name).c_str(), &ref, nullptr), noErr);
        EXPECT_EQ(FEMoveFilesToTrash(1, &ref), noErr) << name;
        EXPECT_FALSE(fs::exists(At(name))) << name;
        EXPECT_EQ(FEMoveFilesToTrash(1, &ref), fnfErr) << "it is there no more";
        expected[At(name)] = "content of " + name;
    }
    EXPECT_EQ(ItemsOf(Home()), expected);
    EXPECT_EQ(fs::status(Home()).permissions(), fs::perms::owner_all);
}

TEST_F(Trash, ItemsOfOneNameKeepApart)
{
    const std::string longName = std::string(240, 'x') + "\u5199\u771F";
    std::map<std::string, std::string> expected;
    for (const char* folder : {"a", "b", "c"})
    {
        fs::create_directory(At(folder));
        for (const std::string& name : {std::string("same.jpg"), longName})
        {
            const std::string path = std::string(folder) + "/" + name;
            m_top.Write(path, path);
            EXPECT_EQ(Tools::DeleteFile(m_top.Wide(path), nullptr, kToTrash, 0), 1);
            expected[At(path)] = path;
        }
    }
    EXPECT_TRUE(fs::exists(Home() / "files" / (std::string(240, 'x') + "\u5199"))) << "cut between characters";
    // Something that lies there without a record is left alone.
    std::ofstream(Home() / "files/orphan") << "old";
    m_top.Write("orphan", "new");
    EXPECT_EQ(Tools::DeleteFile(m_top.Wide("orphan"), nullptr, kToTrash, 0), 1);
    EXPECT_EQ(ContentOf(Home() / "files/orphan"), "old");
    EXPECT_EQ(ContentOf(Home() / "files/orphan.2"), "new");
    fs::remove(Home() / "files/orphan");
    expected[At("orphan")] = "new";
    EXPECT_EQ(ItemsOf(Home()), expected);
}

TEST_F(Trash, NothingIsReplacedWhereTheKernelDoesNotSeeToIt)
{
    const std::string found = HalyonTest::InChild(
        [&]() -> std::string
        {
            if (!HalyonTest::DenyCall(SYS_renameat2))
                return "no filter";
            m_top.Write("first");
            Tools::DeleteFile(m_top.Wide("first"), nullptr, kToTrash, 0);
            std::ofstream(Home() / "files/orphan") << "old";
            m_top.Write("orphan", "new");
            Tools::DeleteFile(m_top.Wide("orphan"), nullptr, kToTrash, 0);
            return ContentOf(Home() / "files/orphan") + " " + ContentOf(Home() / "files/orphan.2");
        });
    if (found == "no filter")
        GTEST_SKIP() << "this machine filters no calls";
    EXPECT_EQ(found, "old new");
}

TEST_F(Trash, FoldersGoWholeAndLinksThemselves)
{
    fs::create_directories(At("folder/sub"));
    m_top.Write("folder/sub/file");
    m_top.Write("target");
    fs::create_symlink(At("target"), At("link"));
    fs::create_symlink("nowhere", At("dangling"));
    const std::deque<CTovStringW> paths = {m_top.Wide("folder/"), m_top.Wide("missing"), u"", m_top.Wide("link"),
                                           m_top.Wide("dangling")};
    EXPECT_EQ(Tools::DeleteFile(paths, nullptr, kToTrash, 0), 1);
    const std::map<std::string, std::string> expected = {
        {At("folder"), "/"}, {At("link"), "-> " + At("target")}, {At("dangling"), "-> nowhere"}};
    EXPECT_EQ(ItemsOf(Home()), expected);
    EXPECT_EQ(ContentOf(Home() / "files/folder/sub/file"), "x");
    EXPECT_TRUE(fs::exists(At("target")));
}

TEST_F(Trash, OtherProgramsListIt)
{
    if (OutputOf("trash-list --version 2>&1").starts_with("failed"))
        GTEST_SKIP() << "there is no trash-list (package trash-cli)";
    for (const char* name : {"plain", "100%41 caf\u00E9", "#?[x]"})
    {
        m_top.Write(name);
        EXPECT_EQ(Tools::DeleteFile(m_top.Wide(name), nullptr, kToTrash, 0), 1);
        EXPECT_NE(OutputOf("LC_ALL=C.UTF-8 trash-list").find(At(name) + "\n"), std::string::npos) << name;
    }
}

TEST_F(Trash, WhatCannotBeMovedStaysAndCountsAsDone)
{
    EXPECT_EQ(Tools::DeleteFile({}, nullptr, kToTrash, 0), 0);
    EXPECT_EQ(Tools::DeleteFile(nullptr, nullptr, kToTrash, 0), 0);
    EXPECT_EQ(Tools::DeleteFile(m_top.Wide("missing"), nullptr, kToTrash, 0), 1);
    EXPECT_FALSE(fs::exists(Home().parent_path())) << "nothing was moved, so nothing was made";
    for (const char* folder : {"locked", "nobody's"})
        fs::create_directory(At(folder));
    fs::permissions(At("nobody's"), fs::perms::all);
    m_top.Write("locked/file");
    EXPECT_EQ(HalyonTest::InChild(
                  [&]
                  {
                      HalyonTest::BecomeNobody();
                      setenv("XDG_DATA_HOME", At("nobody's").c_str(), 1);
                      return std::to_string(Tools::DeleteFile(m_top.Wide("locked/file"), nullptr, kToTrash, 0));
                  }),
              "1");
    if (geteuid() == 0)
    {
        EXPECT_EQ(ContentOf(At("locked/file")), "x");
        EXPECT_TRUE(ItemsOf(At("nobody's/Trash")).empty()) << "no record is left without an item";
    }
    EXPECT_EQ(FEMoveFilesToTrash(1, nullptr), paramErr);
    FSRef some[2] = {};
    m_top.Write("between");
    ASSERT_EQ(FSPathMakeRef(At("between").c_str(), &some[1], nullptr), noErr);
    EXPECT_EQ(FEMoveFilesToTrash(2, some), fnfErr) << "a failure is told, also when what follows succeeds";
    EXPECT_FALSE(fs::exists(At("between"))) << "and the others go all the same";
}

TEST_F(Trash, DeletingForGoodStopsAtThePathThatNamesNothing)
{
    const auto deleteAll = [&](const std::vector<const char*>& names)
    {
        std::deque<CTovStringW> paths;
        for (const char* name : names)
            paths.push_back(m_top.Wide(name));
        return Tools::DeleteFile(paths, nullptr, kForGood, 0);
    };
    fs::create_directories(At("full/empty"));
    for (const char* name : {"a", "b", "c", "target"})
        m_top.Write(name);
    fs::create_symlink(At("target"), At("link"));
    EXPECT_EQ(deleteAll({}), 0);
    EXPECT_EQ(deleteAll({"missing", "a"}), 0);
    EXPECT_TRUE(fs::exists(At("a")));
    EXPECT_EQ(deleteAll({"full", "a", "missing", "b"}), 1) << "a folder with content is refused, but does not stop it";
    EXPECT_FALSE(fs::exists(At("a")));
    EXPECT_TRUE(fs::exists(At("b")));
    EXPECT_EQ(deleteAll({"full"}), 0);
    EXPECT_EQ(deleteAll({"full/empty", "full", "link", "c"}), 1);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_top.Path()), fs::directory_iterator()), 2) << "b and target";
    EXPECT_EQ(Tools::DeleteFile(m_top.Wide("b"), nullptr, kForGood, 0), 1);
    EXPECT_EQ(Tools::DeleteFile(nullptr, nullptr, kForGood, 0), 0);
    EXPECT_FALSE(fs::exists(Home()));
}

TEST_F(Trash, AnotherVolumeHasItsOwn)
{
    if (!HalyonTest::MayHaveOwnMounts())
        GTEST_SKIP() << "this process may not mount anything";
    const struct
    {
        const char* rule;
        const char* prepare; // in the top folder of the volume
        std::string trash;   // where the item goes; empty: it stays
    } cases[] = {
        {"its own folder", "true", ".Trash-$U"},
        {"the folder for all users", "mkdir -m 1777 .Trash", ".Trash/$U"},
        {"only when nobody can take it away", "mkdir -m 777 .Trash", ".Trash-$U"},
        {"and not when it is a link", "mkdir -m 1777 other && ln -s other .Trash", ".Trash-$U"},
        {"nothing goes through a link", "mkdir other && ln -s other .Trash-$U", ""},
        {"nothing goes to another user", "mkdir .Trash-$U && chown 12345:12345 .Trash-$U", ""},
        {"nothing is deleted where nothing can be written", "mount -o remount,ro .", ""},
        {"no empty record is left on a full volume", "mount -o remount,size=16k . && ! yes 2>&- >full", ""},
    };
    const std::string user = std::to_string(geteuid());
    Environment environment;
    environment.Set("U", user.c_str());
    for (const auto& c : cases)
    {
        const std::string volume = At("mounted here");
        fs::create_directories(volume);
        const std::string found = HalyonTest::InChild(
            [&]() -> std::string
            {
                if (!HalyonTest::EnterOwnMounts() || mount("none", volume.c_str(), "tmpfs", 0, nullptr) != 0)
                    return "cannot mount";
                fs::create_directory(volume + "/fold\u00E9r");
                m_top.Write("mounted here/fold\u00E9r/100% x", "kept");
                if (chdir(volume.c_str()) != 0 || std::system(c.prepare) != 0)
                    return "cannot prepare";
                // Items of the home volume before and behind it go to the user's own, all the same.
                for (const char* name : {"before", "behind"})
                    m_top.Write(name, c.rule);
                const std::deque<CTovStringW> paths = {
                    m_top.Wide("before"), m_top.Wide("mounted here/fold\u00E9r/100% x"), m_top.Wide("behind")};
                Tools::DeleteFile(paths, nullptr, kToTrash, 0);
                if (c.trash.empty())
                    return OutputOf("ls -A .Trash-$U/info 2>&- || true") + ContentOf("fold\u00E9r/100% x");
                const std::string trash = c.trash.substr(0, c.trash.size() - 2) + user;
                const bool isPrivate = fs::status(trash).permissions() == fs::perms::owner_all;
                const auto items = ItemsOf(trash);
                return items.size() == 1 && isPrivate ? items.begin()->first + " " + items.begin()->second : "not one";
            });
        EXPECT_EQ(found, c.trash.empty() ? "kept" : "fold\u00E9r/100% x kept") << c.rule;
        const std::map<std::string, std::string> home = {{At("before"), c.rule}, {At("behind"), c.rule}};
        EXPECT_EQ(ItemsOf(Home()), home);
        fs::remove_all(Home());
    }
}
