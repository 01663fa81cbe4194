// The manual page: it renders, and it leaves out nothing that the program offers.
#include <tests/system/HostTest.h>

#include <regex>

#include <tests/support/Command.h>

using ManPageTest = HalyonTest::HostTest;

TEST_F(ManPageTest, NamesEveryOptionOfEverySubcommand)
{
    std::string page = HalyonTest::ContentOf(HALYON_MAN_PAGE);
    std::erase(page, '\\');
    for (const std::string subcommand : {"import", "show", "list", "info", "open", "trash", "sql"})
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
    EXPECT_EQ(HalyonTest::ManualPageWarnings(HALYON_MAN_PAGE), "");
}
