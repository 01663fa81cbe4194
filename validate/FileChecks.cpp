// The file and its loading: what can be told before anything of the module is called.
#include <validate/Check.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>

#include <validate/FrozenIdentifiers.h>
#include <validate/ProcessState.h>
#include <validate/Step.h>
#include <validate/Subject.h>

namespace HynValidate
{
namespace
{
constexpr std::array<std::string_view, 2> kEntryPoints = {"MyDllGetClassObject", "MyDllCanUnloadNow"};

bool StartsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

bool IsIdentifierName(std::string_view name)
{
    return StartsWith(name, "CLSID_") || StartsWith(name, "IID_");
}

// Made by the linker for every library, or by a sanitizer for the parts that it instruments.
bool IsToolchains(std::string_view name)
{
    constexpr std::array<std::string_view, 5> kLinker = {"_init", "_fini", "_edata", "_end", "__bss_start"};
    constexpr std::array<std::string_view, 6> kStarts = {"__asan_", "__odr_asan",   "__ubsan_",
                                                         "__tsan_", "__sanitizer_", "__lsan_"};
    return std::find(kLinker.begin(), kLinker.end(), name) != kLinker.end() ||
           std::any_of(kStarts.begin(), kStarts.end(), [&](auto start) { return StartsWith(name, start); });
}
} // namespace

void CheckLoad(Subject& subject)
{
    const ProcessState state;
    Step("loading the module");
    const Module module(subject.Path());
    state.ExpectUnchanged("loading");
}

void CheckDependencies(Subject& subject)
{
    const ElfFile& file = subject.File();
    for (const std::string& library : file.libraries)
    {
        if (library.find('/') != std::string::npos)
            throw Failure("names a library by its place: " + library);
    }
    if (file.writesCode)
        throw Failure("has relocations in its code; build it with -fPIC");
    if (file.executableStack)
        throw Failure("asks for an executable stack");
    // A look-up through the handle sees the module and the libraries that it names, and nothing of this program.
    const Module module(subject.Path());
    for (const std::string& symbol : file.needed)
    {
        if (!IsToolchains(symbol) && module.Symbol(symbol.c_str()) == nullptr)
            throw Failure("needs " + symbol + ", which no library that it names brings");
    }
}

void CheckExports(Subject& subject)
{
    for (const std::string_view entry : kEntryPoints)
    {
        const auto& exported = subject.File().exported;
        const auto found =
            std::find_if(exported.begin(), exported.end(), [&](const auto& symbol) { return symbol.name == entry; });
        if (found == exported.end())
            throw Failure("does not export " + std::string(entry));
        if (found->kind != ElfSymbol::Kind::Function)
            throw Failure("exports " + std::string(entry) + ", but not as a function");
    }
}

void CheckNothingElseExported(Subject& subject)
{
    std::string extra;
    int count = 0;
    for (const ElfSymbol& symbol : subject.File().exported)
    {
        const bool isEntry = std::find(kEntryPoints.begin(), kEntryPoints.end(), symbol.name) != kEntryPoints.end();
        if (isEntry || IsIdentifierName(symbol.name) || IsToolchains(symbol.name))
            continue;
        if (++count <= 3)
            extra += (count == 1 ? "" : ", ") + symbol.name;
    }
    if (count > 3)
        extra += " and " + std::to_string(count - 3) + " more";
    if (count > 0)
        throw Failure("exports " + extra);
}

void CheckIdentifiers(Subject& subject)
{
    const Module module(subject.Path());
    std::map<std::string, std::string> names; // by value
    for (const ElfSymbol& symbol : subject.File().exported)
    {
        if (!IsIdentifierName(symbol.name))
            continue;
        Frozen::Identifier id{};
        if (symbol.kind != ElfSymbol::Kind::Object || symbol.size != sizeof id)
            throw Failure("exports " + symbol.name + ", which is no constant of 16 bytes");
        std::memcpy(&id, module.Symbol(symbol.name.c_str()), sizeof id);
        const std::string value = Class{id, {}}.Text();
        for (const auto& shared : Frozen::kIdentifiers)
        {
            if (symbol.name == shared.name && value != shared.text)
                throw Failure("exports " + symbol.name + " as " + value + ", not " + shared.text);
        }
        const auto [other, isNew] = names.emplace(value, symbol.name);
        if (!isNew)
            throw Failure("exports " + symbol.name + " with the value of " + other->second);
    }
}
} // namespace HynValidate
