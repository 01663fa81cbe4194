#include <halyon/platform/gio/CommandWords.h>

#include <halyon/platform/TovPCMac.h>

namespace Halyon
{
std::vector<std::string> CommandWords(const char16_t* text)
{
    std::vector<std::u16string> words;
    bool isInWord = false;
    bool isQuoted = false;
    for (; *text != 0; ++text)
    {
        if (!isQuoted && (*text == u' ' || *text == u'\t'))
        {
            isInWord = false;
            continue;
        }
        if (!isInWord)
            words.emplace_back();
        isInWord = true;
        if (*text == u'"')
            isQuoted = !isQuoted;
        else
            words.back() += *text;
    }
    std::vector<std::string> result;
    for (const std::u16string& word : words)
    {
        std::string& bytes = result.emplace_back(word.size() * 3, '\0');
        bytes.resize(TovTextToUTF8(word.data(), word.size(), bytes.data(), bytes.size()));
    }
    return result;
}
} // namespace Halyon
