#pragma once

#include <string>
#include <vector>

#include <windows.h>

#include <msi.h>

#include "machine/Text.h"

/// What a custom action has of the installation that runs it. The handle stays the caller's. To be
/// used on the action's thread.
class CInstallSession
{
public:
    explicit CInstallSession(MSIHANDLE hInstall) : m_hInstall(hInstall) {}

    /// Empty for none. A deferred action sees CustomActionData and little else.
    WideText Property(const WCHAR* szName) const;
    /// For an action that is not deferred. What the installer refuses is lost.
    void SetProperty(const WCHAR* szName, const WCHAR* szValue) const;
    /// The fields of a deferred action's CustomActionData, which has "|" between them. At least one.
    std::vector<WideText> Fields() const;

    /// Adds a line to the installer's log. What the installer refuses is lost.
    void Log(const std::string& text) const { Send(INSTALLMESSAGE_INFO, text); }
    /// The same behind "LUM GINA: ", and shows it unless the installation is quiet.
    void ShowError(const std::string& text) const { Send(INSTALLMESSAGE_ERROR, "LUM GINA: " + text); }

private:
    void Send(INSTALLMESSAGE message, const std::string& text) const;

    const MSIHANDLE m_hInstall;
};
