#include "PeImage.h"

#include <cstddef>

CPeImage::CPeImage(const std::string& bytes) : m_bytes(bytes)
{
    const auto dos = m_bytes.Get<IMAGE_DOS_HEADER>(0);
    CImageBytes::Require(dos.e_magic == IMAGE_DOS_SIGNATURE && dos.e_lfanew >= 0);
    const auto nHeaders = static_cast<std::size_t>(dos.e_lfanew);
    m_headers = m_bytes.Get<IMAGE_NT_HEADERS32>(nHeaders);
    CImageBytes::Require(m_headers.Signature == IMAGE_NT_SIGNATURE &&
                         m_headers.FileHeader.Machine == IMAGE_FILE_MACHINE_I386 &&
                         (m_headers.FileHeader.Characteristics & IMAGE_FILE_DLL) != 0 &&
                         m_headers.OptionalHeader.Magic == IMAGE_NT_OPTIONAL_HDR32_MAGIC);
    m_nSections =
        nHeaders + offsetof(IMAGE_NT_HEADERS32, OptionalHeader) + m_headers.FileHeader.SizeOfOptionalHeader;
    // In a file that was copied in part, the headers name sections that lie beyond its end.
    for (WORD wSection = 0; wSection < m_headers.FileHeader.NumberOfSections; ++wSection) {
        const IMAGE_SECTION_HEADER section = GetSection(wSection);
        CImageBytes::Require(section.SizeOfRawData == 0 || section.PointerToRawData == 0 ||
                             (section.PointerToRawData <= m_bytes.GetSize() &&
                              section.SizeOfRawData <= m_bytes.GetSize() - section.PointerToRawData));
    }
}

std::vector<std::string> CPeImage::ListExports() const
{
    std::vector<std::string> names;
    const std::optional<std::size_t> nDirectory = FindDirectory(IMAGE_DIRECTORY_ENTRY_EXPORT);
    if (!nDirectory) {
        return names;
    }
    const auto exports = m_bytes.Get<IMAGE_EXPORT_DIRECTORY>(*nDirectory);
    CImageBytes::Require(exports.NumberOfNames <= m_bytes.GetSize() / sizeof(DWORD));
    for (DWORD dwName = 0; dwName < exports.NumberOfNames; ++dwName) {
        const DWORD dwPointer = exports.AddressOfNames + dwName * DWORD(sizeof(DWORD));
        names.push_back(m_bytes.GetName(OffsetOf(m_bytes.Get<DWORD>(OffsetOf(dwPointer)))));
    }
    return names;
}

std::vector<std::string> CPeImage::ListImports() const
{
    std::vector<std::string> names;
    if (std::optional<std::size_t> nNext = FindDirectory(IMAGE_DIRECTORY_ENTRY_IMPORT); nNext) {
        IMAGE_IMPORT_DESCRIPTOR import;
        while (import = m_bytes.Get<IMAGE_IMPORT_DESCRIPTOR>(*nNext), import.Name != 0) {
            names.push_back(m_bytes.GetName(OffsetOf(import.Name)));
            *nNext += sizeof(import);
        }
    }
    return names;
}

std::optional<std::size_t> CPeImage::FindDirectory(DWORD dwDirectory) const
{
    const IMAGE_DATA_DIRECTORY& directory = m_headers.OptionalHeader.DataDirectory[dwDirectory];
    if (m_headers.OptionalHeader.NumberOfRvaAndSizes <= dwDirectory || directory.VirtualAddress == 0) {
        return std::nullopt;
    }
    return OffsetOf(directory.VirtualAddress);
}

IMAGE_SECTION_HEADER CPeImage::GetSection(WORD wSection) const
{
    return m_bytes.Get<IMAGE_SECTION_HEADER>(m_nSections + wSection * sizeof(IMAGE_SECTION_HEADER));
}

/// Where in the file an address of the loaded image lies.
std::size_t CPeImage::OffsetOf(DWORD dwAddress) const
{
    for (WORD wSection = 0; wSection < m_headers.FileHeader.NumberOfSections; ++wSection) {
        const IMAGE_SECTION_HEADER section = GetSection(wSection);
        if (dwAddress >= section.VirtualAddress && dwAddress - section.VirtualAddress < section.SizeOfRawData)
        {
            return std::size_t(section.PointerToRawData) + (dwAddress - section.VirtualAddress);
        }
    }
    throw CBadImage();
}
