#include "DllTrouble.h"

#include "machine/Text.h"

namespace {

std::string Join(const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

} // namespace

std::vector<std::string> FindMissingExports(const CDllFile& dll, const CExportTable& exports, bool bAll)
{
    std::vector<std::string> missing;
    for (const CGinaExportBase* pExport = exports.m_pFirst; pExport != nullptr; pExport = pExport->m_pNext) {
        const bool bNeeded = bAll || (pExport->m_dwAboveVersion == 0 && pExport->m_missing == Missing::Fatal);
        if (bNeeded && !dll.HasExport(pExport->m_szName)) {
            missing.push_back(pExport->m_szName);
        }
    }
    return missing;
}

std::string DescribeTrouble(const CDllFile& dll, const std::vector<std::string>& missing, const char* szKind)
{
    const std::string path = Shown(dll.path);
    switch (dll.state) {
    case CDllFile::State::Missing:
        return "there is no such DLL";
    case CDllFile::State::Unreadable:
        return Format("%s cannot be read (error %u, see net helpmsg)", path.c_str(),
                      static_cast<unsigned>(dll.dwError));
    case CDllFile::State::Unusable:
        return path + (dll.missingImport.empty()
                           ? " is no whole DLL of this system"
                           : " needs " + Shown(ToWide(dll.missingImport)) + ", and there is no such DLL");
    case CDllFile::State::Leaving:
        return path + " is gone after the restart";
    default:
        return missing.empty() ? std::string() : path + " is no " + szKind + ": it lacks " + Join(missing);
    }
}

std::string DescribeRemedy(const CDllFile& dll, const WideText& name)
{
    if (dll.state == CDllFile::State::Leaving) {
        return "take " + Shown(dll.path) +
               " and the text behind it out of PendingFileRenameOperations or "
               "PendingFileRenameOperations2 in "
               "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Session Manager";
    }
    return "put " + Shown(name) + " into the system directory";
}
