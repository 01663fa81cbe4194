// What the file of a module says of itself: its exported and its needed symbols, the libraries that it names, its
// flags.
//
// Not for what only the loaded module can tell (the values of its constants).
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace HynValidate
{
// The file cannot be a module that this machine loads; the message names the file and the reason.
class NoModule : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct ElfSymbol
{
    enum class Kind
    {
        Function,
        Object,
        Unique, // an object of which the process keeps one, so that its library is never closed
        Other,
    };

    std::string name;
    Kind kind;
    std::uint64_t size;
};

struct ElfFile
{
    // Reads the file. Throws NoModule. [any]
    explicit ElfFile(const std::string& path);

    std::vector<ElfSymbol> exported;
    std::vector<std::string> needed;    // symbols that some library has to bring
    std::vector<std::string> libraries; // as it names them
    bool neverUnloaded = false;         // marked so that closing does nothing
    bool writesCode = false;            // its code is changed while it is loaded
    bool executableStack = false;
};
} // namespace HynValidate
