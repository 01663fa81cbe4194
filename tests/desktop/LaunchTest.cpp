// Starting programs: scripts that record what they were given.

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <deque>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <halyon/platform/LaunchServices.h>
#include <halyon/tools/CHynPubTools.h>

#include "tests/support/Environment.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Threads.h"

using namespace Halyon;
using HalyonTest::TempFolder;
using Tools = CHynPubTools;
namespace fs = std::filesystem;

namespace
{
using Words = std::vector<std::string>;

// A folder with a pipe that the programs in it write to. A record is a list of words, each with a zero byte behind it;
// an end of transmission closes it.
class Launch : public testing::Test
{
protected:
    Launch()
    {
        mkfifo(At("records").c_str(), 0600);
        m_records.open(At("records")); // to read and to write, so that it never ends
    }

    void Script(const std::string& name, const std::string& text, mode_t mode = 0755) const
    {
        fs::create_directories((m_top.Path() / name).parent_path());
        m_top.Write(name, text);
        chmod((m_top.Path() / name).c_str(), mode);
    }

    // Records `name` and the arguments.
    void Recorder(const std::string& name, const std::string& words = "\"$@\"") const
    {
        Script(name, "#!/bin/sh\nprintf '%s\\0' '" + fs::path(name).filename().native() + "' " + words +
                         " \"$(printf '\\004')\" >'" + (m_top.Path() / "records").native() + "'\n");
    }

    // The next record; waits for it.
    Words NextRecord()
    {
        Words words;
        for (std::string word; std::getline(m_records, word, '\0') && word != "\4";)
            words.push_back(word);
        return words;
    }

    [[nodiscard]] std::string At(const std::string& name) const { return (m_top.Path() / name).native(); }

    [[nodiscard]] int Execute(const std::string& name, const Words& documents) const
    {
        std::deque<CTovStringW> paths;
        for (const std::string& document : documents)
            paths.push_back(m_top.Wide(document));
        return Tools::Execute(m_top.Wide(name), paths);
    }

    static int Execute(const std::string& line)
    {
        std::u16string units(CTovStringW::FromUTF8(line).View());
        return Tools::Execute(nullptr, units.data(), 0, nullptr);
    }

    const TempFolder m_top;

private:
    std::fstream m_records;
};

// Not even one that has ended.
bool HasChildren()
{
    return waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD;
}
} // namespace

TEST_F(Launch, DocumentsArriveUnchanged)
{
    const Words names = {"a blank", "\"quoted\" 'twice'", "\u5199\u771F \u3000caf\u00E9", "$HOME `x` \\ *",
                         "line\nbreak"};
    Words expected = {"pro gr\u00E4m"};
    for (const std::string& name : names)
    {
        m_top.Write(name);
        expected.push_back(At(name));
    }
    Words documents = names;
    documents.insert(documents.begin() + 1, {"missing", ""}); // the second is the folder itself
    expected.insert(expected.begin() + 2, m_top.Path().native());
    Recorder("pro gr\u00E4m");
    ASSERT_EQ(Execute("pro gr\u00E4m", documents), 1);
    EXPECT_EQ(NextRecord(), expected);
    ASSERT_EQ(Execute("pro gr\u00E4m", {}), 1);
    EXPECT_EQ(NextRecord(), Words{"pro gr\u00E4m"});
    // An application may be its own document.
    ASSERT_EQ(Execute("pro gr\u00E4m", {"pro gr\u00E4m"}), 1);
    EXPECT_EQ(NextRecord(), (Words{"pro gr\u00E4m", At("pro gr\u00E4m")}));
}

TEST_F(Launch, CommandLinesAreSplitAtBlanksAndNothingElse)
{
    Recorder("my tool");
    const std::string program = "\"" + At("my tool") + "\"";
    const std::pair<std::string, Words> cases[] = {
        {"", {}},
        {" ", {}},
        {" -a", {"-a"}},
        {"   -a \t b  ", {"-a", "b"}},
        {" \"b c\" d\"e  f\"g \"\"", {"b c", "de  fg", ""}},
        {" \"never closed x", {"never closed x"}},
        {" $HOME * ~ 'a b' \\n ; | %f", {"$HOME", "*", "~", "'a", "b'", "\\n", ";", "|", "%f"}},
        {" caf\u00E9 \u5199\u3000\u771F \U0001F4F7", {"caf\u00E9", "\u5199\u3000\u771F", "\U0001F4F7"}},
        {"x -a", {"-a"}}, // whatever follows the quote separates
        {" " + std::string(1023, 'x'), {std::string(1023, 'x')}},
    };
    for (const auto& [rest, arguments] : cases)
    {
        ASSERT_EQ(Execute(program + rest), 1) << rest;
        Words expected = {"my tool"};
        expected.insert(expected.end(), arguments.begin(), arguments.end());
        EXPECT_EQ(NextRecord(), expected) << rest;
    }
    for (const std::string& line : {std::string(), std::string("\""), std::string("\"\""), std::string("\"\" -a"),
                                    At("my tool"), "\"" + At("my tool"), " " + program, "\"" + At("missing") + "\"",
                                    program + " " + std::string(1024, 'x'), "\"/" + std::string(1023, 'x') + "\""})
        EXPECT_EQ(Execute(line), 0) << line;
    EXPECT_EQ(Tools::Execute(nullptr, nullptr, 0, nullptr), 0);
}

TEST_F(Launch, DesktopEntriesFillInTheirCodes)
{
    Recorder("tool");
    m_top.Write("a b%.jpg");
    m_top.Write("\u5199.jpg");
    const std::string tool = At("tool");
    const std::string first = At("a b%.jpg");
    const std::string second = At("\u5199.jpg");
    const std::string address = "file://" + At("a%20b%25.jpg");
    const std::string address2 = "file://" + At("%E5%86%99.jpg");
    const struct
    {
        std::string words; // behind the program
        Words documents;
        std::vector<Words> launches;
    } cases[] = {
        {"", {}, {{}}},
        {" %F --last", {"a b%.jpg", "\u5199.jpg"}, {{first, second, "--last"}}},
        {" %U", {"a b%.jpg", "\u5199.jpg"}, {{address, address2}}},
        {" -x %f", {"a b%.jpg", "\u5199.jpg"}, {{"-x", first}, {"-x", second}}},
        {" --open=%u", {"a b%.jpg"}, {{"--open=" + address}}},
        {" -x %f", {}, {{"-x"}}},
        {" -x", {"a b%.jpg", "\u5199.jpg"}, {{"-x", first, second}}},
        {" \"two words\" \"\\\\$x\" %% 5%%", {}, {{"two words", "$x", "%", "5%"}}},
        {" %i %c %k", {}, {{"--icon", "camera", "My Tool", At("tool.desktop")}}},
        {" a%mb %d %v", {}, {{"ab"}}},
    };
    for (const auto& c : cases)
    {
        Script("tool.desktop",
               "[Desktop Entry]\nType=Application\nName=My Tool\nIcon=camera\nExec=" + tool + c.words + "\n", 0644);
        ASSERT_EQ(Execute("tool.desktop", c.documents), 1) << c.words;
        std::vector<Words> launches;
        for (std::size_t i = 0; i < c.launches.size(); ++i)
        {
            launches.push_back(NextRecord());
            launches.back().erase(launches.back().begin());
        }
        std::ranges::sort(launches); // programs may overtake one another
        EXPECT_EQ(launches, c.launches) << c.words;
    }
    // Parameters of a command line come last.
    ASSERT_EQ(Execute("\"" + At("tool.desktop") + "\" p \"q r\""), 1);
    EXPECT_EQ(NextRecord(), (Words{"tool", "ab", "p", "q r"}));
}

TEST_F(Launch, DesktopEntriesChooseFolderTerminalAndProgramOfThePath)
{
    Recorder("bin/tool", "\"$PWD\" \"$@\"");
    Script("bin/x-terminal-emulator", "#!/bin/sh\n[ \"$1\" = -e ] && shift && exec \"$@\" in-terminal\n");
    HalyonTest::Environment environment;
    environment.Set("PATH", (At("bin") + ":/usr/bin:/bin").c_str());
    fs::create_directory(At("w\u00F6rk"));
    Script("t.desktop",
           "[Desktop Entry]\nType=Application\nName=T\nExec=tool x\nTerminal=true\nPath=" + At("w\u00F6rk") + "\n");
    ASSERT_EQ(Execute("t.desktop", {}), 1);
    EXPECT_EQ(NextRecord(), (Words{"tool", At("w\u00F6rk"), "x", "in-terminal"}));
    fs::remove(At("bin/x-terminal-emulator"));
    environment.Set("PATH", At("bin").c_str());
    EXPECT_EQ(Execute("t.desktop", {}), 0) << "no terminal";
}

TEST_F(Launch, BundleFoldersStartTheirProgram)
{
    m_top.Write("document");
    Recorder("One.app/Contents/MacOS/anything");
    Script("One.app/Contents/MacOS/readme", "no program", 0644);
    ASSERT_EQ(Execute("One.app", {"document"}), 1);
    EXPECT_EQ(NextRecord(), (Words{"anything", At("document")}));
    Recorder("One.app/Contents/Linux/helper");
    Recorder("One.app/Contents/Linux/One");
    ASSERT_EQ(Execute("\"" + At("One.app") + "/\" -a"), 1);
    EXPECT_EQ(NextRecord(), (Words{"One", "-a"})) << "the system's own, called like the bundle";
    fs::remove(At("One.app/Contents/Linux/One"));
    Recorder("One.app/Contents/Linux/other");
    fs::remove_all(At("One.app/Contents/MacOS"));
    EXPECT_EQ(Execute("One.app", {}), 0) << "either of two";
}

TEST_F(Launch, WhatCannotStartGivesZero)
{
    const std::string entry = "[Desktop Entry]\nName=x\nType=Application\n";
    Script("data", "echo never", 0644);
    Script("no interpreter", "#!/no/such/interpreter\n");
    Script("no program", "just text that may be executed");
    Script("empty", "");
    Script("missing.desktop", entry + "Exec=/no/such/program %f\n");
    Script("text.desktop", entry + "Exec='" + At("no program") + "'\n");
    Script("hidden.desktop", entry + "Hidden=true\nExec=true\n");
    Script("link.desktop", "[Desktop Entry]\nName=x\nType=Link\nURL=file:///\n");
    Script("bare.desktop", entry);
    Script("quote.desktop", entry + "Exec=true \"open\n");
    Script("folder.desktop", entry + "Exec=true\nPath=/no/such/folder\n");
    Script("noise.desktop", "noise");
    fs::create_directories(At("Empty.app/Contents/MacOS"));
    for (const char* name : {"missing", "", "data", "no interpreter", "no program", "empty", "missing.desktop",
                             "text.desktop", "hidden.desktop", "link.desktop", "bare.desktop", "quote.desktop",
                             "folder.desktop", "noise.desktop", "Empty.app"})
    {
        EXPECT_EQ(Execute(name, {"data"}), 0) << name;
        EXPECT_FALSE(HasChildren()) << name;
    }
    EXPECT_EQ(Tools::Execute(nullptr, {}), 0);
    EXPECT_EQ(LSOpenFromRefSpec(nullptr, nullptr), paramErr);
    FSRef program = {};
    const LSLaunchFSRefSpec noItems = {&program, 1, nullptr, nullptr, 1, nullptr};
    EXPECT_EQ(LSOpenFromRefSpec(&noItems, nullptr), paramErr);
}

TEST_F(Launch, ProgramsLiveOnByThemselves)
{
    // What this process holds and how it treats signals is its own business.
    m_top.Write("held open");
    const int held = open(At("held open").c_str(), O_RDONLY);
    sigset_t blocked = {};
    sigset_t before = {};
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const auto ignored = std::signal(SIGPIPE, SIG_IGN);
    Recorder("tool",
             "\"$(readlink /proc/$$/fd/0)\" \"$(readlink /proc/$$/fd/* | grep -c held)\" "
             "\"$(grep -hE 'Sig(Blk|Ign)' /proc/$$/status | tr -d '\\t\\n')\" \"$(cut -d' ' -f6 /proc/$$/stat)\"");
    EXPECT_EQ(Execute("tool", {}), 1);
    EXPECT_FALSE(HasChildren());
    const Words record = NextRecord();
    ASSERT_EQ(record.size(), 5u);
    EXPECT_EQ(record[1], "/dev/null");
    EXPECT_EQ(record[2], "0");
    EXPECT_EQ(record[3], "SigBlk:0000000000000000SigIgn:0000000000000000");
    EXPECT_NE(record[4], std::to_string(getsid(0)));
    std::signal(SIGPIPE, ignored);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    close(held);
}

TEST_F(Launch, ManyThreadsMayStartProgramsAtOnce)
{
    constexpr std::size_t kThreads = 4;
    constexpr std::size_t kLaunches = 5;
    Recorder("tool");
    std::multiset<Words> expected;
    for (std::size_t i = 0; i < kThreads * kLaunches; ++i)
        expected.insert({"tool", std::to_string(i)});
    HalyonTest::OnThreads(kThreads,
                          [&](std::size_t thread)
                          {
                              for (std::size_t i = 0; i < kLaunches; ++i)
                                  EXPECT_EQ(Execute("\"" + At("tool") + "\" " + std::to_string(thread * kLaunches + i)),
                                            1);
                          });
    EXPECT_FALSE(HasChildren());
    std::multiset<Words> records;
    while (records.size() < expected.size())
        records.insert(NextRecord());
    EXPECT_EQ(records, expected);
}
