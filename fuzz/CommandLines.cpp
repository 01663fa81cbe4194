// The command line of `Execute` and the words of its parameters. Nothing is started: the launch ends here.

#include <halyon/platform/LaunchServices.h>
#include <halyon/platform/gio/CommandWords.h>
#include <halyon/tools/CHynPubTools.h>
#include <tests/support/TempFolder.h>

#include "Input.h"

using namespace Halyon;
using HalyonFuzz::Hold;

namespace
{
std::u16string g_parameters; // of the last launch
int g_launches = 0;

std::u16string Joined(const std::vector<std::string>& words)
{
    std::u16string text;
    for (const std::string& word : words)
        text += (text.empty() ? u"\"" : u" \"") + std::u16string(CTovStringW::FromUTF8(word).View()) + u"\"";
    return text;
}

void CheckWords(const std::u16string& text)
{
    const std::vector<std::string> words = CommandWords(text.c_str());
    for (const std::string& word : words)
        Hold(word.find('"') == std::string::npos, "quotes are no part of a word");
    Hold(CommandWords(Joined(words).c_str()) == words, "words that are quoted and joined are the same again");
}

void Execute(const std::u16string& line)
{
    const HalyonFuzz::Buffer buffer(line, 0);
    g_launches = 0;
    const int result = CHynPubTools::Execute(u"open", buffer, 0, nullptr);
    Hold(result == g_launches, "the result says whether something was launched");
    Hold(buffer.Text() == line, "the command line is left as it was");
    if (result == 0)
        return;
    const std::size_t quote = line.find(u'"', 1);
    Hold(quote != std::u16string::npos && line.front() == u'"', "a program stands in quotes");
    Hold(g_parameters == line.substr(std::min(quote + 2, line.size())), "what follows the program are its parameters");
}
} // namespace

// In the place of the platform's.
OSStatus Halyon::LSOpenFromRefSpec(const LSLaunchFSRefSpec* pSpec, FSRef* /*pLaunched*/) noexcept
{
    g_parameters = pSpec->passThruParams;
    ++g_launches;
    return noErr;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const HalyonTest::TempFolder folder;
    HalyonFuzz::Input input(data, size);
    const std::u16string line = input.TakeText();
    CheckWords(line);
    Execute(line);
    Execute(u'"' + std::u16string(folder.Wide("").View()) + u'"' + line);
    return 0;
}
