#include "Standin.h"

#include <cstdlib>

namespace {

constexpr const char* NAMES[] = {
#define STANDIN_NAME(NAME, RESULT) #NAME,
    STANDIN_CALLS(STANDIN_NAME)
#undef STANDIN_NAME
};

} // namespace

CStandin::CStandin(const WCHAR* szDLL) : m_hModule(LoadLibraryW(szDLL)), m_pInterface(nullptr)
{
    const FARPROC pfn = m_hModule != nullptr ? GetProcAddress(m_hModule, "StandinGina") : nullptr;
    if (pfn == nullptr) {
        // The build has left the DLL beside the tests; without it nothing below means anything.
        std::abort();
    }
    m_pInterface = reinterpret_cast<PFN_STANDIN_GINA>(reinterpret_cast<void (*)()>(pfn))();
    m_pInterface->Reset();
}

CStandin::~CStandin()
{
    m_pInterface->Reset();
    FreeLibrary(m_hModule);
}

std::vector<std::string> CStandin::Calls() const
{
    std::vector<std::string> calls;
    for (DWORD dwIndex = 0; dwIndex < m_pInterface->GetRecordCount(); ++dwIndex) {
        calls.emplace_back(NAMES[static_cast<DWORD>(m_pInterface->GetRecord(dwIndex)->call)]);
    }
    return calls;
}
