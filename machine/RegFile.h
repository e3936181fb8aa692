#pragma once

#include <optional>
#include <string>
#include <vector>

#include <windows.h>

#include "platform/RegistryData.h"

// The files that Windows' registry editor exports and imports, read and written without that editor. No
// operation touches a registry.

namespace Platform {

inline constexpr WCHAR MACHINE_ROOT[] = TEXT("HKEY_LOCAL_MACHINE");

/// One entry of a .reg file. With a value's name it is about that value, otherwise about the key itself.
struct CRegFileChange
{
    /// MACHINE_ROOT, or another root of the registry, such as "HKEY_USERS".
    std::basic_string<WCHAR> root;
    /// The names on the way from there.
    std::vector<std::basic_string<WCHAR>> key;
    /// Empty for the default value.
    std::optional<std::basic_string<WCHAR>> value;
    /// What the value becomes. Nothing when the key or value is deleted, and when the entry only makes the
    /// key.
    std::optional<CRegistryData> data;
    bool bDelete = false;
};

/// What is wrong with a .reg file.
struct CRegFileError
{
    std::string text; ///< with the number of the line
};

/// The changes that the bytes of a .reg file stand for, in its order. The heading is "Windows Registry Editor
/// Version 5.00", in UTF-16 or UTF-8, or "REGEDIT4". Throws CRegFileError.
std::vector<CRegFileChange> ParseRegFile(const std::string& bytes);

/// Writes a .reg file of version 5.00, as the system's editor does.
class CRegFileWriter
{
public:
    CRegFileWriter();

    /// Begins a key, given by its path below the root; an empty path means the root itself. Returns false, as
    /// AddValue does, when a name contains a control character: the format has no place for it.
    bool AddKey(const std::basic_string<WCHAR>& path, const std::basic_string<WCHAR>& root = MACHINE_ROOT);

    /// Adds a value of the key that was begun last. Without data, adds its deletion.
    bool AddValue(const std::basic_string<WCHAR>& name, const CRegistryData* pData);

    /// Adds a comment, which is ignored when the file is imported.
    void AddComment(const std::basic_string<WCHAR>& text);

    /// The contents of the file, in UTF-16 with a byte order mark.
    std::string GetBytes() const;

private:
    std::basic_string<WCHAR> m_text;
};

} // namespace Platform
