// The command lines of desktop entries. GIO reads the entry and finds the program; the field codes are filled in here,
// so that the program is started as every other one: GIO starts it through a helper, which hides that it cannot start.

#include <halyon/platform/gio/DesktopEntry.h>

#include <algorithm>
#include <memory>
#include <span>
#include <string_view>

#include <gio/gdesktopappinfo.h>

namespace Halyon
{
namespace
{
struct GlibFree
{
    void operator()(char* text) const noexcept { g_free(text); }
    void operator()(char** texts) const noexcept { g_strfreev(texts); }
    void operator()(GDesktopAppInfo* entry) const noexcept { g_object_unref(entry); }
};
using Entry = std::unique_ptr<GDesktopAppInfo, GlibFree>;
using Text = std::unique_ptr<char, GlibFree>;
using Texts = std::unique_ptr<char*, GlibFree>;
using Documents = std::span<const std::string>;

std::string StringOf(const Text& text)
{
    return text != nullptr ? text.get() : "";
}

GAppInfo* AppInfo(const Entry& entry) noexcept
{
    return reinterpret_cast<GAppInfo*>(entry.get());
}

std::string ValueOf(const Entry& entry, const char* key)
{
    return StringOf(Text(g_desktop_app_info_get_string(entry.get(), key)));
}

std::string AddressOf(const std::string& path)
{
    return StringOf(Text(g_filename_to_uri(path.c_str(), nullptr, nullptr)));
}

std::string FileOf(const std::string& program)
{
    return StringOf(Text(g_find_program_in_path(program.c_str())));
}

// The words of the Exec line, unquoted; the codes are still in them.
std::vector<std::string> WordsOf(const Entry& entry)
{
    const char* line = g_app_info_get_commandline(AppInfo(entry));
    char** words = nullptr;
    if (line == nullptr || !g_shell_parse_argv(line, nullptr, &words, nullptr))
        return {};
    const Texts owner(words);
    std::vector<std::string> result;
    for (; *words != nullptr; ++words)
        result.emplace_back(*words);
    return result;
}

bool HasCode(const std::vector<std::string>& words, std::string_view codes)
{
    for (const std::string& word : words)
    {
        for (std::size_t at = word.find('%'); at != std::string::npos; at = word.find('%', at + 2))
        {
            if (at + 1 < word.size() && codes.find(word[at + 1]) != std::string_view::npos)
                return true;
        }
    }
    return false;
}

// What a code stands for inside a word. Old codes and unknown ones stand for nothing.
std::string TextOfCode(char code, const Entry& entry, Documents documents)
{
    switch (code)
    {
    case '%':
        return "%";
    case 'c':
        return g_app_info_get_name(AppInfo(entry));
    case 'k':
        return g_desktop_app_info_get_filename(entry.get());
    case 'f':
    case 'F':
        return documents.empty() ? std::string() : documents.front();
    case 'u':
    case 'U':
        return documents.empty() ? std::string() : AddressOf(documents.front());
    default:
        return {};
    }
}

std::string Filled(const std::string& word, const Entry& entry, Documents documents)
{
    std::string text;
    for (std::size_t i = 0; i < word.size(); ++i)
    {
        if (word[i] != '%')
            text += word[i];
        else if (++i < word.size())
            text += TextOfCode(word[i], entry, documents);
    }
    return text;
}

// A word that is one code alone may become several arguments, or none.
void AppendWord(std::vector<std::string>& arguments, const std::string& word, const Entry& entry, Documents documents)
{
    const char code = word.size() == 2 && word[0] == '%' ? word[1] : '\0';
    if (code == 'F')
    {
        arguments.insert(arguments.end(), documents.begin(), documents.end());
    }
    else if (code == 'U')
    {
        for (const std::string& document : documents)
            arguments.push_back(AddressOf(document));
    }
    else if (code == 'i')
    {
        if (std::string icon = ValueOf(entry, "Icon"); !icon.empty())
            arguments.insert(arguments.end(), {"--icon", std::move(icon)});
    }
    else
    {
        std::string text = Filled(word, entry, documents);
        if (!text.empty() || code == '\0')
            arguments.push_back(std::move(text));
    }
}

// The words that open a terminal for the command behind them; empty when there is no terminal.
std::vector<std::string> TerminalWords()
{
    if (!FileOf("xdg-terminal-exec").empty())
        return {"xdg-terminal-exec"};
    if (!FileOf("x-terminal-emulator").empty())
        return {"x-terminal-emulator", "-e"};
    return {};
}

// Its program is empty when there is none: a word may stand for nothing, or for something that is no program.
LaunchCommand CommandFor(const std::vector<std::string>& words, const Entry& entry, Documents documents,
                         const std::vector<std::string>& parameters)
{
    LaunchCommand command;
    for (const std::string& word : words)
        AppendWord(command.arguments, word, entry, documents);
    if (!HasCode(words, "fFuU"))
        command.arguments.insert(command.arguments.end(), documents.begin(), documents.end());
    command.arguments.insert(command.arguments.end(), parameters.begin(), parameters.end());
    if (!command.arguments.empty())
        command.program = FileOf(command.arguments.front());
    command.folder = ValueOf(entry, "Path");
    return command;
}
} // namespace

std::vector<LaunchCommand> CommandsOfDesktopEntry(const char* path, const std::vector<std::string>& documents,
                                                  const std::vector<std::string>& parameters)
{
    const Entry entry(g_desktop_app_info_new_from_filename(path));
    if (entry == nullptr || g_desktop_app_info_get_is_hidden(entry.get()))
        return {};
    std::vector<std::string> words = WordsOf(entry);
    if (words.empty())
        return {};
    if (g_desktop_app_info_get_boolean(entry.get(), "Terminal"))
    {
        const std::vector<std::string> terminal = TerminalWords();
        if (terminal.empty())
            return {};
        words.insert(words.begin(), terminal.begin(), terminal.end());
    }
    std::vector<LaunchCommand> commands;
    if (documents.size() < 2 || !HasCode(words, "fu"))
        commands.push_back(CommandFor(words, entry, documents, parameters));
    else
        for (const std::string& document : documents)
            commands.push_back(CommandFor(words, entry, Documents(&document, 1), parameters));
    const bool isMissing = std::ranges::any_of(commands, &std::string::empty, &LaunchCommand::program);
    return isMissing ? std::vector<LaunchCommand>() : commands;
}
} // namespace Halyon
