#include "Action.h"

#include <exception>

UINT CarryOut(MSIHANDLE hInstall, void (*action)(const CInstallSession&))
{
    const CInstallSession session(hInstall);
    std::string trouble;
    try {
        action(session);
        return ERROR_SUCCESS;
    } catch (const std::exception& error) {
        trouble = error.what();
    } catch (...) {
        trouble = "failed";
    }
    session.ShowError("LUM GINA: " + trouble);
    return ERROR_INSTALL_FAILURE;
}
