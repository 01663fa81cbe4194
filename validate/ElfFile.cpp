#include <validate/ElfFile.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

#include <elf.h>
#include <link.h>

// This program's own header, of which the linker says where it is.
extern "C" [[gnu::visibility("hidden")]] const ElfW(Ehdr) __ehdr_start;

namespace HynValidate
{
namespace
{
// The bytes of the file; everything that is read from them lies inside or throws.
class Image
{
public:
    explicit Image(const std::string& path) : m_path(path)
    {
        std::ifstream file(path, std::ios::binary);
        file.peek();
        if (!file)
            Refuse(file.is_open() ? "it is empty or no file" : std::generic_category().message(errno));
        m_bytes.assign(std::istreambuf_iterator<char>(file), {});
    }

    [[noreturn]] void Refuse(const std::string& reason) const
    {
        throw NoModule("cannot check the module " + m_path + ": " + reason);
    }

    [[nodiscard]] bool StartsWith(std::string_view start) const { return m_bytes.compare(0, start.size(), start) == 0; }

    template <class T>
    [[nodiscard]] T At(std::uint64_t offset) const
    {
        if (offset > m_bytes.size() || m_bytes.size() - offset < sizeof(T))
            Refuse("it is cut short");
        T value;
        std::memcpy(&value, m_bytes.data() + offset, sizeof(T));
        return value;
    }

    template <class T>
    [[nodiscard]] std::vector<T> Table(std::uint64_t offset, std::uint64_t bytes) const
    {
        std::vector<T> table;
        for (std::uint64_t done = 0; done + sizeof(T) <= bytes; done += sizeof(T))
            table.push_back(At<T>(offset + done));
        return table;
    }

    [[nodiscard]] std::string TextAt(std::uint64_t offset) const
    {
        const auto start = static_cast<std::size_t>(std::min<std::uint64_t>(offset, m_bytes.size()));
        const std::size_t end = m_bytes.find('\0', start);
        if (end == std::string::npos)
            Refuse("it is cut short");
        return m_bytes.substr(start, end - start);
    }

private:
    std::string m_path;
    std::string m_bytes;
};

using Header = ElfW(Ehdr);
using Section = ElfW(Shdr);

Header HeaderOf(const Image& image)
{
    if (!image.StartsWith(ELFMAG))
        image.Refuse("it is no ELF file");
    const auto header = image.At<Header>(0);
    const bool isSameForm =
        std::equal(header.e_ident + EI_CLASS, header.e_ident + EI_VERSION, __ehdr_start.e_ident + EI_CLASS);
    if (!isSameForm || header.e_machine != __ehdr_start.e_machine)
        image.Refuse("it is for another machine");
    if (header.e_type != ET_DYN)
        image.Refuse("it is no shared object");
    return header;
}

ElfSymbol::Kind KindOf(const ElfW(Sym) & symbol)
{
    if (symbol.st_info >> 4 == STB_GNU_UNIQUE)
        return ElfSymbol::Kind::Unique;
    switch (symbol.st_info & 0xF)
    {
    case STT_FUNC:
    case STT_GNU_IFUNC:
        return ElfSymbol::Kind::Function;
    case STT_OBJECT:
        return ElfSymbol::Kind::Object;
    default:
        return ElfSymbol::Kind::Other;
    }
}

void ReadSymbols(ElfFile& file, const Image& image, const Section& symbols, const Section& names)
{
    for (const auto& symbol : image.Table<ElfW(Sym)>(symbols.sh_offset, symbols.sh_size))
    {
        const int binding = symbol.st_info >> 4;
        std::string name = image.TextAt(names.sh_offset + symbol.st_name);
        if (symbol.st_shndx == SHN_UNDEF && binding == STB_GLOBAL)
            file.needed.push_back(std::move(name));
        else if (symbol.st_shndx != SHN_UNDEF && symbol.st_shndx != SHN_ABS && binding != STB_LOCAL)
            file.exported.push_back({std::move(name), KindOf(symbol), symbol.st_size});
    }
}

void ReadDynamic(ElfFile& file, const Image& image, const Section& dynamic, const Section& names)
{
    for (const auto& entry : image.Table<ElfW(Dyn)>(dynamic.sh_offset, dynamic.sh_size))
    {
        const auto value = entry.d_un.d_val;
        if (entry.d_tag == DT_NEEDED)
            file.libraries.push_back(image.TextAt(names.sh_offset + value));
        file.writesCode =
            file.writesCode || entry.d_tag == DT_TEXTREL || (entry.d_tag == DT_FLAGS && (value & DF_TEXTREL) != 0);
        file.neverUnloaded = file.neverUnloaded || (entry.d_tag == DT_FLAGS_1 && (value & DF_1_NODELETE) != 0);
        if (entry.d_tag == DT_FLAGS_1 && (value & DF_1_PIE) != 0)
            image.Refuse("it is a program");
    }
}
} // namespace

ElfFile::ElfFile(const std::string& path)
{
    const Image image(path);
    const Header header = HeaderOf(image);
    const auto sections =
        image.Table<Section>(header.e_shoff, std::uint64_t{header.e_shnum} * sizeof(Section)); // none: no table below
    bool hasSymbols = false;
    for (const Section& section : sections)
    {
        if (section.sh_type != SHT_DYNSYM && section.sh_type != SHT_DYNAMIC)
            continue;
        if (section.sh_link >= sections.size())
            image.Refuse("its tables are damaged");
        const Section& names = sections[section.sh_link];
        if (section.sh_type == SHT_DYNAMIC)
            ReadDynamic(*this, image, section, names);
        else
            ReadSymbols(*this, image, section, names);
        hasSymbols = hasSymbols || section.sh_type == SHT_DYNSYM;
    }
    if (!hasSymbols)
        image.Refuse("it has no table of dynamic symbols");
    for (const auto& segment :
         image.Table<ElfW(Phdr)>(header.e_phoff, std::uint64_t{header.e_phnum} * sizeof(ElfW(Phdr))))
        executableStack = executableStack || (segment.p_type == PT_GNU_STACK && (segment.p_flags & PF_X) != 0);
}
} // namespace HynValidate
