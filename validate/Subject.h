// The module under test, inside the process of one check.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <validate/ElfFile.h>
#include <validate/Frozen.h>

namespace HynValidate
{
// A class of the module and the interfaces that its objects answer.
struct Class
{
    // From CLASS[:INTERFACE,...] in text form. Throws std::invalid_argument. [any]
    static Class Parse(const std::string& text);
    [[nodiscard]] std::string Text() const;
    // IID_IHynUnknown and the interfaces.
    [[nodiscard]] std::vector<Frozen::Identifier> AllInterfaces() const;

    Frozen::Identifier id;
    std::vector<Frozen::Identifier> interfaces;
};

// The loaded module; closed at the end.
class Module
{
public:
    // Throws Failure with the linker's reason.
    explicit Module(const std::string& path);
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    // Null when the module does not export it. [any]
    [[nodiscard]] void* Symbol(const char* name) const;
    // Whether the linker closed it. Nothing of the module may be used any more.
    [[nodiscard]] bool Close();

    // The entry points. Requires: exported.
    std::int32_t GetClassObject(const Frozen::Identifier& cls, const Frozen::Identifier& iid, void** out) const;
    [[nodiscard]] std::int32_t CanUnloadNow() const;
    // An object with one reference. Throws Failure. [any]
    [[nodiscard]] void* Make(const Frozen::Identifier& cls, const Frozen::Identifier& iid) const;

private:
    void* m_handle;
    void* m_getClassObject;
    void* m_canUnloadNow;
};

class Subject
{
public:
    Subject(std::string path, std::vector<Class> classes);

    [[nodiscard]] const std::string& Path() const { return m_path; }
    [[nodiscard]] const ElfFile& File() const { return m_file; }
    // For the check `classes`: those that the command line names; afterwards: those that were made.
    std::vector<Class>& Classes() { return m_classes; }
    [[nodiscard]] const std::vector<Class>& Classes() const { return m_classes; }

    // Every identifier that has a name here: the shared ones, and those that the module exports under `prefix`.
    [[nodiscard]] std::vector<Frozen::Identifier> Known(const Module& module, std::string_view prefix) const;

private:
    std::string m_path;
    ElfFile m_file;
    std::vector<Class> m_classes;
};

bool Contains(const std::vector<Frozen::Identifier>& list, const Frozen::Identifier& id);
// "CLSID_HynAction" where the identifier is a shared one, else its text form. [any]
std::string NameOf(const Frozen::Identifier& id);
// "0x81000001 (HYN_E_NOINTERFACE)" [any]
std::string CodeText(std::int32_t code);
// Identifiers that nobody has: arbitrary ones, and for each of `known` some that differ from it in one bit. [any]
std::vector<Frozen::Identifier> Strangers(const std::vector<Frozen::Identifier>& known);

// Throws Failure "WHAT gave A, not B" unless they are equal. [any]
void ExpectCode(const std::string& what, std::int32_t code, std::int32_t expected);
void ExpectNumber(const std::string& what, long long number, long long expected);
// Throws Failure when one of the first `slots` slots of the object's table does not point to code. [any]
void ExpectSlotsOfCode(void* object, int slots, const std::string& of);
} // namespace HynValidate
