// The manual page: it renders, and it leaves out nothing that the program offers.
#include <tests/system/HostTest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <regex>

namespace
{
class ManPageTest : public HalyonTest::HostTest
{
};
} // namespace

TEST_F(ManPageTest, NamesEveryOptionOfEverySubcommand)
{
    std::ifstream file(HALYON_MAN_PAGE);
    std::string page(std::istreambuf_iterator<char>(file), {});
    std::erase(page, '\\');
    for (const std::string subcommand : {"import", "list", "info", "open", "trash", "sql"})
    {
        const std::string help = Host({subcommand, "--help"}).out;
        const std::regex option("--[a-z-]+");
        auto found = std::sregex_iterator(help.begin(), help.end(), option);
        EXPECT_NE(found, std::sregex_iterator()) << subcommand;
        for (; found != std::sregex_iterator(); ++found)
            EXPECT_TRUE(page.find(found->str()) != std::string::npos) << subcommand << " " << found->str();
        EXPECT_TRUE(page.find("\n.SS " + subcommand + "\n") != std::string::npos) << subcommand;
    }
}

TEST_F(ManPageTest, RendersWithoutAWarning)
{
    const std::string command = "LC_ALL=C man --warnings -E UTF-8 -l '" HALYON_MAN_PAGE "' 2>&1 >/dev/null";
    FILE* pipe = popen(command.c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::string warnings;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        warnings += static_cast<char>(c);
    EXPECT_EQ(pclose(pipe), 0);
    EXPECT_EQ(warnings, "");
}
