#include <validate/Subject.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <regex>
#include <utility>

#include <dlfcn.h>

#include <validate/Check.h>
#include <validate/FrozenIdentifiers.h>
#include <validate/Step.h>

namespace HynValidate
{
using Frozen::Identifier;

namespace
{
std::string TextOf(const Identifier& id)
{
    char text[40];
    std::snprintf(text, sizeof text, "%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X", id.word, id.half[0],
                  id.half[1], id.bytes[0], id.bytes[1], id.bytes[2], id.bytes[3], id.bytes[4], id.bytes[5], id.bytes[6],
                  id.bytes[7]);
    return text;
}

bool IsCode(const void* address)
{
    const auto place = reinterpret_cast<std::uintptr_t>(address);
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
    {
        // "55d0c0a3f000-55d0c0a41000 r-xp ..."
        char* rest = nullptr;
        const auto first = std::strtoull(line.c_str(), &rest, 16);
        const auto end = std::strtoull(rest + 1, &rest, 16);
        if (place >= first && place < end)
            return rest[3] == 'x';
    }
    return false;
}

std::string LinkerReason()
{
    const char* reason = dlerror();
    return reason == nullptr ? "unknown reason" : reason;
}
} // namespace

Class Class::Parse(const std::string& text)
{
    static const std::string kId = "[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}";
    static const std::regex form(kId + "(:" + kId + "(," + kId + ")*)?");
    if (!std::regex_match(text, form))
        throw std::invalid_argument("'" + text + "' is not CLASS[:INTERFACE,...] with identifiers of the form " +
                                    "FE15F6EB-1E69-4568-9111-3FB8FACBAAF9");
    constexpr std::size_t kLength = 36;
    Class result{Frozen::FromText(text), {}};
    for (std::size_t at = kLength + 1; at < text.size(); at += kLength + 1)
        result.interfaces.push_back(Frozen::FromText(text.substr(at, kLength)));
    return result;
}

std::string Class::Text() const
{
    std::string text = TextOf(id);
    for (std::size_t i = 0; i < interfaces.size(); ++i)
        text += (i == 0 ? ":" : ",") + TextOf(interfaces[i]);
    return text;
}

std::vector<Identifier> Class::AllInterfaces() const
{
    std::vector<Identifier> all{Frozen::kUnknown};
    std::copy_if(interfaces.begin(), interfaces.end(), std::back_inserter(all),
                 [](const Identifier& iid) { return iid != Frozen::kUnknown; });
    return all;
}

Module::Module(const std::string& path) : m_handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (m_handle == nullptr)
        throw Failure("cannot load it: " + LinkerReason());
    m_getClassObject = Symbol("MyDllGetClassObject");
    m_canUnloadNow = Symbol("MyDllCanUnloadNow");
}

Module::~Module()
{
    if (m_handle != nullptr)
        dlclose(m_handle);
}

bool Module::Close()
{
    return dlclose(std::exchange(m_handle, nullptr)) == 0;
}

void* Module::Symbol(const char* name) const
{
    return dlsym(m_handle, name);
}

std::int32_t Module::GetClassObject(const Identifier& cls, const Identifier& iid, void** out) const
{
    using Function = std::int32_t (*)(const Identifier*, const Identifier*, void**);
    return reinterpret_cast<Function>(m_getClassObject)(&cls, &iid, out);
}

std::int32_t Module::CanUnloadNow() const
{
    return reinterpret_cast<std::int32_t (*)()>(m_canUnloadNow)();
}

void* Module::Make(const Identifier& cls, const Identifier& iid) const
{
    void* object = nullptr;
    const std::int32_t code = GetClassObject(cls, iid, &object);
    if (code != Frozen::kOk || object == nullptr)
        throw Failure("cannot make " + NameOf(cls) + " with " + NameOf(iid) + ": MyDllGetClassObject gave " +
                      CodeText(code) + (object == nullptr ? " and no object" : ""));
    return object;
}

Subject::Subject(std::string path, std::vector<Class> classes)
    : m_path(std::move(path)), m_file(m_path), m_classes(std::move(classes))
{
}

std::vector<Identifier> Subject::Known(const Module& module, std::string_view prefix) const
{
    std::vector<Identifier> known;
    const auto add = [&](std::string_view name, const Identifier& id)
    {
        if (name.substr(0, prefix.size()) == prefix && !Contains(known, id))
            known.push_back(id);
    };
    for (const ElfSymbol& symbol : m_file.exported)
    {
        Identifier id{};
        const void* value = module.Symbol(symbol.name.c_str());
        if (symbol.kind != ElfSymbol::Kind::Object || symbol.size != sizeof id || value == nullptr)
            continue;
        std::memcpy(&id, value, sizeof id);
        add(symbol.name, id);
    }
    for (const auto& [name, text, slots] : Frozen::kIdentifiers)
        add(name, Frozen::FromText(text));
    return known;
}

bool Contains(const std::vector<Identifier>& list, const Identifier& id)
{
    return std::find(list.begin(), list.end(), id) != list.end();
}

std::string NameOf(const Identifier& id)
{
    const std::string text = TextOf(id);
    const auto* named = std::find_if(std::begin(Frozen::kIdentifiers), std::end(Frozen::kIdentifiers),
                                     [&](const auto& shared) { return text == shared.text; });
    return named == std::end(Frozen::kIdentifiers) ? text : named->name;
}

std::string CodeText(std::int32_t code)
{
    static constexpr std::pair<std::int32_t, const char*> kNames[] = {
        {Frozen::kOk, "HYN_S_OK"},
        {Frozen::kFalse, "HYN_S_FALSE"},
        {Frozen::kBufferTooSmall, "HYN_E_BUFFERTOOSMALL"},
        {Frozen::kFail, "HYN_E_FAIL"},
        {Frozen::kNoInterface, "HYN_E_NOINTERFACE"},
        {Frozen::kPointer, "HYN_E_POINTER"},
        {Frozen::kStep, "HYN_E_SQSTEP"},
        {Frozen::kNullValue, "HYN_E_SQNULLVALUE"},
    };
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<std::uint32_t>(code));
    const auto* named = std::find_if(std::begin(kNames), std::end(kNames), [&](auto& n) { return n.first == code; });
    return named == std::end(kNames) ? text : std::string(text) + " (" + named->second + ")";
}

std::vector<Identifier> Strangers(const std::vector<Identifier>& known)
{
    std::vector<Identifier> strangers{Identifier{}, Frozen::FromText("FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF"),
                                      Frozen::FromText("6B1F0C52-93D8-4E07-A6B5-2F9E41D7C380")};
    for (const Identifier& id : known)
    {
        // One bit in each of the four words that identifiers are compared by.
        for (std::size_t word = 0; word < 4; ++word)
        {
            Identifier other = id;
            reinterpret_cast<unsigned char*>(&other)[word * 4 + word] ^= 0x10;
            if (!Contains(known, other))
                strangers.push_back(other);
        }
    }
    return strangers;
}

void ExpectCode(const std::string& what, std::int32_t code, std::int32_t expected)
{
    if (code != expected)
        throw Failure(what + " gave " + CodeText(code) + ", not " + CodeText(expected));
}

void ExpectNumber(const std::string& what, long long number, long long expected)
{
    if (number != expected)
        throw Failure(what + " gave " + std::to_string(number) + ", not " + std::to_string(expected));
}

void ExpectSlotsOfCode(void* object, int slots, const std::string& of)
{
    Step("reading the slots of " + of);
    for (int slot = 0; slot < slots; ++slot)
    {
        if (!IsCode((*static_cast<void***>(object))[slot]))
            throw Failure("slot " + std::to_string(slot) + " of " + of + " holds no code");
    }
}
} // namespace HynValidate
