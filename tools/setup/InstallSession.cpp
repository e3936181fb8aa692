#include "InstallSession.h"

#include <msiquery.h>

WideText CInstallSession::Property(const WCHAR* szName) const
{
    WideText value(1, L'\0');
    DWORD cchValue = 0;
    while (MsiGetPropertyW(m_hInstall, szName, value.data(), &cchValue) == ERROR_MORE_DATA) {
        value.resize(++cchValue);
    }
    value.resize(cchValue);
    return value;
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
