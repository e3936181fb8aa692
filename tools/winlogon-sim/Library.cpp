#include "Library.h"

#include "machine/SetupError.h"
#include "machine/Text.h"

void CLibrary::Load(const std::string& name)
{
    Free();
    m_hModule = LoadLibraryW(ToWide(name).c_str());
    if (m_hModule == nullptr) {
        throw CSetupError(
            Format("cannot load %s: error %u", name.c_str(), static_cast<unsigned>(GetLastError())));
    }
}

void CLibrary::Free()
{
    if (m_hModule != nullptr) {
        FreeLibrary(m_hModule);
        m_hModule = nullptr;
    }
}
