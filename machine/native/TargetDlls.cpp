#include "machine/dllfile/TargetDlls.h"

#include <elf.h>
#include <sys/stat.h>

#include "machine/DllDirectories.h"
#include "machine/dllfile/PeImage.h"
#include "platform/LibrarySearch.h"

namespace {

/// The section headers of a shared object.
class CElfImage
{
public:
    explicit CElfImage(const std::string& bytes) : m_bytes(bytes), m_header(m_bytes.Get<Elf64_Ehdr>(0))
    {
        CImageBytes::Require(std::memcmp(m_header.e_ident, ELFMAG, SELFMAG) == 0 &&
                             m_header.e_ident[EI_CLASS] == ELFCLASS64 && m_header.e_type == ET_DYN);
    }

    std::vector<std::string> ListExports() const
    {
        std::vector<std::string> names;
        for (Elf64_Half nSection = 0; nSection < m_header.e_shnum; ++nSection) {
            const Elf64_Shdr section = GetSection(nSection);
            if (section.sh_type == SHT_DYNSYM) {
                AddSymbols(section, GetSection(section.sh_link), names);
            }
        }
        return names;
    }

private:
    Elf64_Shdr GetSection(Elf64_Word nSection) const
    {
        return m_bytes.Get<Elf64_Shdr>(m_header.e_shoff + nSection * sizeof(Elf64_Shdr));
    }

    void AddSymbols(const Elf64_Shdr& symbols, const Elf64_Shdr& texts, std::vector<std::string>& names) const
    {
        CImageBytes::Require(symbols.sh_size <= m_bytes.GetSize());
        for (Elf64_Xword nSymbol = 0; nSymbol < symbols.sh_size / sizeof(Elf64_Sym); ++nSymbol) {
            const auto symbol = m_bytes.Get<Elf64_Sym>(symbols.sh_offset + nSymbol * sizeof(Elf64_Sym));
            if (symbol.st_shndx != SHN_UNDEF && symbol.st_name != 0) {
                names.push_back(m_bytes.GetName(texts.sh_offset + symbol.st_name));
            }
        }
    }

    CImageBytes m_bytes;
    Elf64_Ehdr m_header;
};

} // namespace

WideText TargetDlls::Find(const WideText& name, const WideText& directory)
{
    WideText path;
    Native::FromUtf8(Native::FindLibraryFile(name, directory), path);
    return path;
}

std::vector<WideText> ListDllDirectories()
{
    std::vector<WideText> directories;
    for (const std::string& path : Native::ListLibraryDirectories()) {
        Native::FromUtf8(path, directories.emplace_back());
    }
    return directories;
}

bool LooksWhereWinlogonLooks()
{
    return false;
}

bool IsDllDirectory(const WCHAR* szDirectory)
{
    struct stat status;
    return stat(Native::ToPath(szDirectory).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

TargetDlls::CNames TargetDlls::ListNames(const std::string& bytes)
{
    if (!bytes.starts_with("MZ")) {
        return {CElfImage(bytes).ListExports(), {}};
    }
    // The registry of a Windows machine can be looked at here, too, together with its GINAs. The system's
    // DLLs that those import from are on that machine.
    const CPeImage image(bytes);
    image.ListImports();
    return {image.ListExports(), {}};
}
