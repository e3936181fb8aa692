#include "machine/DllFile.h"

#include <algorithm>

#include "ImageBytes.h"
#include "TargetDlls.h"
#include "machine/RestartOperations.h"
#include "machine/WholeFile.h"

namespace {

/// Adds .dll to a name without an extension. A dot at the end means that the name has none and gets none.
WideText CompleteName(WideText name)
{
    name.erase(name.find_last_not_of(' ') + 1);
    const std::size_t nDot = name.find_last_of(TEXT(".\\/:"));
    if (nDot == WideText::npos || name[nDot] != '.') {
        return name + TEXT(".dll");
    }
    return name.erase(name.find_last_not_of(TEXT(" .")) + 1);
}

void ReadNames(CDllFile& file, const std::string& bytes, const WideText& directory)
{
    file.state = CDllFile::State::Unusable;
    try {
        TargetDlls::CNames names = TargetDlls::ListNames(bytes);
        for (const std::string& import : names.imports) {
            const WideText name(import.begin(), import.end());
            if (TargetDlls::Find(name, directory).empty() && TargetDlls::Find(name, WideText()).empty()) {
                file.missingImport = import;
                return;
            }
        }
        file.exports = std::move(names.exports);
        std::sort(file.exports.begin(), file.exports.end());
        file.state = CDllFile::State::Usable;
    } catch (const CBadImage&) {
    }
}

} // namespace

bool CDllFile::HasExport(const std::string& name) const
{
    return std::binary_search(exports.begin(), exports.end(), name);
}

WideText LoadedName(const WideText& name)
{
    const WideText file = name.substr(name.find_last_of(TEXT("\\/:")) + 1);
    return file.find_first_not_of(TEXT(" .")) != WideText::npos ? CompleteName(file) : name;
}

CDllFile InspectDll(const WCHAR* szName, const WCHAR* szDirectory)
{
    CDllFile file;
    if (WideText(szName).find_first_not_of(TEXT(" .")) == WideText::npos) {
        return file;
    }
    const WideText directory = szDirectory != nullptr ? szDirectory : TEXT("");
    file.path = TargetDlls::Find(CompleteName(szName), directory);
    if (file.path.empty()) {
        return file;
    }
    const std::optional<WideText> after = FindAfterRestart(file.path);
    std::string bytes;
    file.dwError = LoadFile(after.value_or(file.path), bytes);
    if (file.dwError != ERROR_SUCCESS) {
        file.state = CDllFile::State::Unreadable;
        return file;
    }
    ReadNames(file, bytes, directory);
    if (file.state == CDllFile::State::Usable && !after) {
        file.state = CDllFile::State::Leaving;
    }
    return file;
}
