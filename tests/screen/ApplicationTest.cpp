#include <string>

#include "ScreenSupport.h"
#include "tests/support/Command.h"

using namespace Halyon;
using namespace HalyonTest;

namespace
{
struct Setting
{
    const char* name;
    const char* value; // null: not set
};

// What the probe says, or how it ended. A shell starts it: the toolkit's own way of starting is one that emulators do
// not know.
std::string Probe(const char* how, std::initializer_list<Setting> settings)
{
    std::string without;
    std::string with;
    for (const Setting& setting : settings)
    {
        without += std::string(" -u ") + setting.name;
        if (setting.value != nullptr)
            with += std::string(" ") + setting.name + "='" + setting.value + "'";
    }
    const std::string said = OutputOf("env" + without + with + " timeout 60 " SCREEN_PROBE " " + how);
    return said.substr(0, said.find_last_not_of('\n') + 1);
}
} // namespace

TEST(Application, NoDisplayThatFailsEndsTheProgram)
{
    const Setting noX = {"DISPLAY", nullptr};
    const Setting deadX = {"DISPLAY", ":64999"};
    const Setting noWayland = {"WAYLAND_DISPLAY", nullptr};
    const Setting deadWayland = {"WAYLAND_DISPLAY", "nobody-0"};
    const Setting unset = {"QT_QPA_PLATFORM", nullptr};
    const std::initializer_list<Setting> cases[] = {
        {noX, noWayland, unset},
        {deadX, deadWayland, unset},
        {deadX, noWayland, {"QT_QPA_PLATFORM", "xcb"}},
        {noX, deadWayland, {"QT_QPA_PLATFORM", "wayland;xcb"}},
        {noX, noWayland, {"QT_QPA_PLATFORM", "no-such-platform"}},
        {noX, noWayland, {"QT_QPA_PLATFORM", ""}},
    };
    for (const auto& settings : cases)
        EXPECT_EQ(Probe("none", settings), "offscreen, window 1");
    EXPECT_EQ(Probe("none", {{"QT_QPA_PLATFORM", "minimal"}}), "minimal, window 1");
}

TEST(Application, TheDisplayThatAnswersIsUsed)
{
    const char* expected = OnX11() ? "xcb, window 1" : "offscreen, window 1";
    EXPECT_EQ(Probe("none", {}), expected);
    EXPECT_EQ(Probe("loop", {}), expected);
}

TEST(Application, TheProgramsOwnIsKeptAndAnotherThreadMakesNone)
{
    EXPECT_EQ(Probe("own", {}), "offscreen, window 1");
    EXPECT_EQ(Probe("core", {}), "no screen");
    EXPECT_EQ(Probe("thread", {}).substr(0, 9), "no screen");
}
