#include <string>

#include "ScreenSupport.h"
#include "tests/support/Command.h"

using namespace Halyon;
using namespace HalyonTest;

namespace
{
// What the probe says, or how it ended, with the changes to the environment that `env` is told. A shell starts it: the
// toolkit's own way of starting is one that emulators do not know.
std::string Probe(const std::string& how, const std::string& settings = "")
{
    const std::string said = OutputOf("env " + settings + " timeout 60 " SCREEN_PROBE " " + how);
    return said.substr(0, said.find_last_not_of('\n') + 1);
}
} // namespace

TEST(Application, NoDisplayThatFailsEndsTheProgram)
{
    for (const char* settings : {
             "-u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM",
             "-u QT_QPA_PLATFORM DISPLAY=:64999 WAYLAND_DISPLAY=nobody-0",
             "-u WAYLAND_DISPLAY DISPLAY=:64999 QT_QPA_PLATFORM=xcb",
             "-u DISPLAY WAYLAND_DISPLAY=nobody-0 'QT_QPA_PLATFORM=wayland;xcb'",
             "-u DISPLAY -u WAYLAND_DISPLAY QT_QPA_PLATFORM=no-such-platform",
             "-u DISPLAY -u WAYLAND_DISPLAY QT_QPA_PLATFORM=",
         })
        EXPECT_EQ(Probe("none", settings), "offscreen, window 1") << settings;
    EXPECT_EQ(Probe("none", "QT_QPA_PLATFORM=minimal"), "minimal, window 1");
}

TEST(Application, TheDisplayThatAnswersIsUsed)
{
    const char* expected = OnX11() ? "xcb, window 1" : "offscreen, window 1";
    EXPECT_EQ(Probe("none"), expected);
    EXPECT_EQ(Probe("loop"), expected);
}

TEST(Application, TheProgramsOwnIsKeptAndAnotherThreadMakesNone)
{
    EXPECT_EQ(Probe("own"), "offscreen, window 1");
    EXPECT_EQ(Probe("core"), "no screen");
    EXPECT_EQ(Probe("thread").substr(0, 9), "no screen");
}
