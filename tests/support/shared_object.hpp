// A shared library as a loader reads it, and the functions that a header declares.
#pragma once

#include <gtest/gtest.h>

#include <elf.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace zsp::test {

inline std::string readFile(const char* path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) ADD_FAILURE() << "cannot open " << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The dynamic parts of an ELF64 shared object.
class SharedObject {
  public:
    struct Symbol {
        std::string name;
        std::string version; // version node, or the library that a needed version comes from
        Elf64_Sym entry;
    };

    explicit SharedObject(const char* path) : bytes_(readFile(path))
    {
        const auto header = at<Elf64_Ehdr>(0);
        for (unsigned i = 0; i < header.e_phnum; ++i)
            segments.push_back(at<Elf64_Phdr>(header.e_phoff + i * sizeof(Elf64_Phdr)));
        for (unsigned i = 0; i < header.e_shnum; ++i)
            sections_.push_back(at<Elf64_Shdr>(header.e_shoff + i * sizeof(Elf64_Shdr)));
        for (const Elf64_Shdr& s : sections_) {
            if (s.sh_type == SHT_GNU_verdef) readDefinitions(s);
            if (s.sh_type == SHT_GNU_verneed) readNeeds(s);
        }
        for (const Elf64_Shdr& s : sections_)
            if (s.sh_type == SHT_DYNSYM) readSymbols(s);
    }

    template <typename T>
    T at(std::size_t offset) const
    {
        T value{};
        EXPECT_LE(offset + sizeof(T), bytes_.size());
        std::memcpy(&value, bytes_.data() + offset, sizeof(T));
        return value;
    }

    /// File offset of an address; the segment's flags through `flags`.
    std::size_t offsetOf(Elf64_Addr address, Elf64_Word* flags = nullptr) const
    {
        for (const Elf64_Phdr& p : segments)
            if (p.p_type == PT_LOAD && address >= p.p_vaddr && address < p.p_vaddr + p.p_filesz) {
                if (flags) *flags = p.p_flags;
                return address - p.p_vaddr + p.p_offset;
            }
        ADD_FAILURE() << "address outside of the file: " << address;
        return 0;
    }

    bool insideRelro(Elf64_Addr address) const
    {
        return std::any_of(segments.begin(), segments.end(), [address](const Elf64_Phdr& p) {
            return p.p_type == PT_GNU_RELRO && address >= p.p_vaddr &&
                   address < p.p_vaddr + p.p_memsz;
        });
    }

    /// Bytes of memory that stay writable when the loader is done.
    std::size_t writableBytes() const
    {
        std::size_t count = 0;
        for (const Elf64_Phdr& p : segments) {
            if (p.p_type == PT_LOAD && (p.p_flags & PF_W) != 0) count += p.p_memsz;
            if (p.p_type == PT_GNU_RELRO) count -= p.p_memsz;
        }
        return count;
    }

    /// Addresses that the loader relocates by the load address alone.
    std::set<Elf64_Addr> relativeRelocations() const
    {
        std::set<Elf64_Addr> found;
        for (const Elf64_Shdr& s : sections_)
            for (std::size_t i = 0; s.sh_type == SHT_RELA && i < s.sh_size / sizeof(Elf64_Rela);
                 ++i) {
                const auto r = at<Elf64_Rela>(s.sh_offset + i * sizeof(Elf64_Rela));
                if (ELF64_R_TYPE(r.r_info) == R_X86_64_RELATIVE) found.insert(r.r_offset);
            }
        return found;
    }

    std::set<std::string> dynamicStrings(Elf64_Sxword tag) const
    {
        std::set<std::string> found;
        for (const Elf64_Shdr& s : sections_)
            for (std::size_t i = 0; s.sh_type == SHT_DYNAMIC && i < s.sh_size / sizeof(Elf64_Dyn);
                 ++i) {
                const auto d = at<Elf64_Dyn>(s.sh_offset + i * sizeof(Elf64_Dyn));
                if (d.d_tag == tag) found.insert(text(s, d.d_un.d_val));
            }
        return found;
    }

    /// Whether the loader binds everything before the first call, so that the table of addresses
    /// can be write-protected.
    bool bindsNow() const
    {
        for (const Elf64_Shdr& s : sections_)
            for (std::size_t i = 0; s.sh_type == SHT_DYNAMIC && i < s.sh_size / sizeof(Elf64_Dyn);
                 ++i) {
                const auto d = at<Elf64_Dyn>(s.sh_offset + i * sizeof(Elf64_Dyn));
                if (d.d_tag == DT_FLAGS) return (d.d_un.d_val & DF_BIND_NOW) != 0;
            }
        return false;
    }

    /// Names of all exports, each of which has the version node.
    std::set<std::string> exportedNames(const char* version) const
    {
        std::set<std::string> names;
        for (const Symbol& symbol : exported) {
            names.insert(symbol.name);
            EXPECT_EQ(symbol.version, version) << symbol.name;
        }
        return names;
    }

    std::vector<Elf64_Phdr> segments;
    std::vector<Symbol> exported, imported;

  private:
    std::string text(const Elf64_Shdr& section, std::size_t index) const
    {
        return bytes_.data() + sections_.at(section.sh_link).sh_offset + index;
    }

    void readDefinitions(const Elf64_Shdr& s)
    {
        std::size_t offset = s.sh_offset;
        for (unsigned i = 0; i < s.sh_info; ++i) {
            const auto definition = at<Elf64_Verdef>(offset);
            const auto name = at<Elf64_Verdaux>(offset + definition.vd_aux);
            versions_[definition.vd_ndx] = text(s, name.vda_name);
            offset += definition.vd_next;
        }
    }

    void readNeeds(const Elf64_Shdr& s)
    {
        std::size_t offset = s.sh_offset;
        for (unsigned i = 0; i < s.sh_info; ++i) {
            const auto need = at<Elf64_Verneed>(offset);
            std::size_t inner = offset + need.vn_aux;
            for (unsigned j = 0; j < need.vn_cnt; ++j) {
                const auto entry = at<Elf64_Vernaux>(inner);
                versions_[entry.vna_other] = text(s, need.vn_file);
                inner += entry.vna_next;
            }
            offset += need.vn_next;
        }
    }

    void readSymbols(const Elf64_Shdr& s)
    {
        const Elf64_Shdr* versym = nullptr;
        for (const Elf64_Shdr& v : sections_)
            if (v.sh_type == SHT_GNU_versym) versym = &v;
        for (std::size_t i = 1; i < s.sh_size / sizeof(Elf64_Sym); ++i) {
            const auto entry = at<Elf64_Sym>(s.sh_offset + i * sizeof(Elf64_Sym));
            Symbol symbol{text(s, entry.st_name), "", entry};
            if (versym)
                symbol.version = versions_[at<Elf64_Half>(versym->sh_offset + 2 * i) & 0x7fff];
            if (entry.st_shndx == SHN_UNDEF)
                imported.push_back(symbol);
            else if (entry.st_shndx != SHN_ABS) // version nodes are absolute symbols
                exported.push_back(symbol);
        }
    }

    std::string bytes_;
    std::vector<Elf64_Shdr> sections_;
    std::map<unsigned, std::string> versions_;
};

/// The functions that a header declares, each on a line that begins with the macro.
inline std::set<std::string> declaredNames(const char* header, const std::string& macro,
                                           const std::string& prefix)
{
    const std::string page = readFile(header);
    const std::string folder = std::string(header).substr(0, std::string(header).rfind('/') + 1);
    const std::regex include("#include \"([^\"]+)\"");
    const std::regex declaration("\n" + macro + " [A-Za-z0-9_ *]*?(" + prefix + "\\w+)\\(");
    std::set<std::string> names;
    for (std::sregex_iterator part(page.begin(), page.end(), include), end; part != end; ++part) {
        const std::string text = readFile((folder + part->str(1)).c_str());
        for (std::sregex_iterator it(text.begin(), text.end(), declaration); it != end; ++it)
            names.insert((*it)[1]);
    }
    return names;
}

} // namespace zsp::test
