#include "InstallSession.h"

#include <msiquery.h>

std::vector<WideText> Split(const WideText& text, WCHAR separator)
{
    std::vector<WideText> parts;
    std::size_t nBegin = 0;
    for (std::size_t nEnd; (nEnd = text.find(separator, nBegin)) != text.npos; nBegin = nEnd + 1) {
        parts.push_back(text.substr(nBegin, nEnd - nBegin));
    }
    parts.push_back(text.substr(nBegin));
    return parts;
}

WideText CInstallSession::Property(const WCHAR* szName) const
{
    WideText data(1, L'\0');
    DWORD cchData = 0;
    while (MsiGetPropertyW(m_hInstall, szName, data.data(), &cchData) == ERROR_MORE_DATA) {
        data.resize(++cchData);
    }
    data.resize(cchData);
    return data;
}

void CInstallSession::SetProperty(const WCHAR* szName, const WCHAR* szValue) const
{
    MsiSetPropertyW(m_hInstall, szName, szValue);
}

std::vector<WideText> CInstallSession::Fields() const
{
    return Split(Property(L"CustomActionData"), L'|');
}

void CInstallSession::Send(INSTALLMESSAGE message, const std::string& text) const
{
    const MSIHANDLE hRecord = MsiCreateRecord(1);
    // As a field, so that brackets in it are only text.
    MsiRecordSetStringW(hRecord, 0, L"[1]");
    MsiRecordSetStringW(hRecord, 1, ToWide(text).c_str());
    MsiProcessMessage(m_hInstall, message, hRecord);
    MsiCloseHandle(hRecord);
}
