#include "Action.h"

#include <exception>

UINT CarryOut(MSIHANDLE hInstall, void (*body)(const CInstallSession&))
{
    const CInstallSession session(hInstall);
    std::string trouble;
    try {
        body(session);
        return ERROR_SUCCESS;
    } catch (const std::exception& error) {
        trouble = error.what();
    } catch (...) {
        trouble = "failed";
    }
    session.ShowError(trouble);
    return ERROR_INSTALL_FAILURE;
}
