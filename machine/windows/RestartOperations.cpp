#include "machine/RestartOperations.h"

#include <cwchar>

#include "machine/OpenKey.h"

namespace {

constexpr WCHAR SESSION_MANAGER[] = L"SYSTEM\\CurrentControlSet\\Control\\Session Manager";
/// The system carries these out in this order. An installer uses the second where the first is too long.
constexpr const WCHAR* LISTS[] = {L"PendingFileRenameOperations", L"PendingFileRenameOperations2"};

/// Each operation is two texts, from where and to where; the second is empty when the file is deleted. So
/// this is no usual list of texts, which ends at the first empty one.
std::vector<WideText> ReadList(const WCHAR* szName)
{
    COpenKey key;
    LONG lResult = RegOpenKeyExW(HKEY_LOCAL_MACHINE, SESSION_MANAGER, 0, KEY_READ, &key.m_hKey);
    WideText data;
    DWORD cbData = 0;
    // An installer may add to it meanwhile.
    while (lResult == ERROR_SUCCESS || lResult == ERROR_MORE_DATA) {
        data.resize((cbData + 1) / sizeof(WCHAR));
        lResult = RegQueryValueExW(key.m_hKey, szName, nullptr, nullptr,
                                   data.empty() ? nullptr : reinterpret_cast<BYTE*>(data.data()), &cbData);
        if (lResult == ERROR_SUCCESS && cbData <= data.size() * sizeof(WCHAR)) {
            return Split(data.substr(0, cbData / sizeof(WCHAR)), L'\0');
        }
    }
    return {};
}

/// "!\??\C:\file" as "C:\file"; the mark says that a file that is there is replaced.
WideText ToPath(const WideText& text)
{
    static constexpr WCHAR PREFIX[] = L"\\??\\";
    const std::size_t nPrefix = text.find(PREFIX);
    return nPrefix == 0 || (nPrefix == 1 && text[0] == L'!') ? text.substr(nPrefix + std::wcslen(PREFIX))
                                                             : text;
}

WideText MakeFull(const WideText& path)
{
    WCHAR szFull[MAX_PATH] = {};
    const DWORD cchFull = GetFullPathNameW(path.c_str(), MAX_PATH, szFull, nullptr);
    return cchFull != 0 && cchFull < MAX_PATH ? szFull : path;
}

bool Exists(const WideText& path)
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsSamePath(const WideText& l, const WideText& r)
{
    return lstrcmpiW(l.c_str(), r.c_str()) == 0;
}

} // namespace

std::optional<WideText> FindAfterRestart(const WideText& file)
{
    const WideText path = MakeFull(file);
    std::optional<WideText> found = path;
    for (const WCHAR* szList : LISTS) {
        const std::vector<WideText> texts = ReadList(szList);
        for (std::size_t nText = 0; nText + 1 < texts.size(); nText += 2) {
            const WideText from = ToPath(texts[nText]);
            if (IsSamePath(from, path)) {
                found.reset();
            }
            if (IsSamePath(ToPath(texts[nText + 1]), path) && Exists(from)) {
                found = from;
            }
        }
    }
    return found;
}
