#pragma once

#include <optional>
#include <string>
#include <vector>

#include <windows.h>

#include "ImageBytes.h"

/// The headers of a 32-bit Windows DLL and where its sections lie, as far as exports and imports need them.
class CPeImage
{
public:
    /// Throws CBadImage when the bytes, which must outlive the object, are no such DLL.
    explicit CPeImage(const std::string& bytes);

    /// The names of what it exports. Throws CBadImage.
    std::vector<std::string> ListExports() const;

    /// The names of the DLLs from which it imports. Throws CBadImage.
    std::vector<std::string> ListImports() const;

private:
    /// Where in the file a directory lies; nothing when the image has none.
    std::optional<std::size_t> FindDirectory(DWORD dwDirectory) const;
    IMAGE_SECTION_HEADER GetSection(WORD wSection) const;
    std::size_t OffsetOf(DWORD dwAddress) const;

    CImageBytes m_bytes;
    IMAGE_NT_HEADERS32 m_headers;
    std::size_t m_nSections;
};
