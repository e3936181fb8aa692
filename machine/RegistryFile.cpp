#include "machine/RegistryFile.h"

#include "machine/SetupError.h"
#include "machine/Text.h"
#include "machine/MachineRegistry.h"

namespace {

/// Fails if the registry file cannot be used, so that nothing of the machine's state gets lost.
void Check(LONG lResult, const char* szVerb, const std::string& path, const std::string& reason = "")
{
    if (lResult == ERROR_CALL_NOT_IMPLEMENTED) {
        throw CSetupError("--registry: this system has a registry of its own, which is used");
    }
    if (lResult == ERROR_FILE_NOT_FOUND) {
        throw CSetupError(Format("there is no registry file %s", path.c_str()));
    }
    if (lResult != ERROR_SUCCESS) {
        throw CSetupError(Format("cannot %s the registry file %s: %s", szVerb, path.c_str(),
                                 reason.empty() ? Format("error %d, see net helpmsg %d",
                                                         static_cast<int>(lResult), static_cast<int>(lResult))
                                                      .c_str()
                                                : reason.c_str()));
    }
}

} // namespace

CRegistryFile::CRegistryFile(const std::string& path, Absence absence) : m_path(path)
{
    if (path.empty()) {
        return;
    }
    std::string reason;
    const LONG lResult = MachineRegistry::Load(ToWide(path).c_str(), &reason);
    if (lResult != ERROR_FILE_NOT_FOUND || absence == Absence::IsError) {
        Check(lResult, "load", path, reason);
    }
}

void CRegistryFile::Import(const std::string& path)
{
    std::string reason;
    const LONG lResult = MachineRegistry::Import(ToWide(path).c_str(), &reason);
    Check(lResult, "import", path, reason);
}

void CRegistryFile::Save() const
{
    if (!m_path.empty()) {
        Check(MachineRegistry::Save(ToWide(m_path).c_str()), "save", m_path);
    }
}

void CRegistryFile::KeepFlushed() const
{
    if (!m_path.empty()) {
        MachineRegistry::KeepIn(ToWide(m_path).c_str());
    }
}
