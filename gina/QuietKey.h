#pragma once

#include <string>

#include <windows.h>

/// A key below HKEY_LOCAL_MACHINE whose values are read and written without a line in the trace log: for
/// settings and notes that no machine has by default. Of a key that cannot be opened every value is missing.
///
/// One thread at a time.
class CQuietKey
{
public:
    using Text = std::basic_string<WCHAR>;

    CQuietKey() noexcept = default;
    /// Opens the key for reading.
    explicit CQuietKey(const WCHAR* szSubKey) noexcept;
    ~CQuietKey();
    CQuietKey(const CQuietKey&) = delete;
    CQuietKey& operator=(const CQuietKey&) = delete;

    /// Opens the key for reading and writing, and makes it when it is missing. False when that fails.
    bool Create(const WCHAR* szSubKey) noexcept;

    bool Has(const WCHAR* szValue) const noexcept;
    /// A REG_DWORD; 0 when it is missing or of another type.
    DWORD ReadNumber(const WCHAR* szValue) const noexcept;
    /// A REG_SZ of any length; false, and an empty text, when it is missing or of another type. Throws
    /// std::bad_alloc.
    bool ReadText(const WCHAR* szValue, Text& text) const;

    // These are tried, and that is all.
    void WriteNumber(const WCHAR* szValue, DWORD dwNumber) noexcept;
    void WriteText(const WCHAR* szValue, const WCHAR* szText) noexcept;
    void Delete(const WCHAR* szValue) noexcept;
    /// Brings what was written to the disk, where it outlasts the machine's sudden end.
    void Flush() noexcept;

private:
    void Write(const WCHAR* szValue, DWORD dwType, const void* pData, std::size_t cbData) noexcept;

    HKEY m_hKey = nullptr;
};
