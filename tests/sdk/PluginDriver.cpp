#include "PluginDriver.h"

#include <cstdlib>

namespace {

constexpr const char* NAMES[] = {
#define PLUGIN_NAME(NAME, RESULT) #NAME,
    PLUGIN_CALLS(PLUGIN_NAME)
#undef PLUGIN_NAME
};

} // namespace

CPluginDriver::CPluginDriver(const WCHAR* szDLL) : m_szDLL(szDLL), m_hModule(LoadLibraryW(szDLL))
{
    const FARPROC pfn = m_hModule != nullptr ? GetProcAddress(m_hModule, "TestPlugin") : nullptr;
    if (pfn == nullptr) {
        // The build has left the DLL beside the tests; without it nothing below means anything.
        std::abort();
    }
    m_pInterface = reinterpret_cast<PFN_TEST_PLUGIN>(reinterpret_cast<void (*)()>(pfn))();
    m_pInterface->Reset();
}

CPluginDriver::~CPluginDriver()
{
    m_pInterface->Reset();
    FreeLibrary(m_hModule);
}

std::vector<std::string> CPluginDriver::Calls() const
{
    std::vector<std::string> calls;
    for (DWORD dwIndex = 0; dwIndex < m_pInterface->GetRecordCount(); ++dwIndex) {
        calls.emplace_back(NAMES[static_cast<DWORD>(m_pInterface->GetRecord(dwIndex)->call)]);
    }
    return calls;
}

const PluginRecord& CPluginDriver::LastRecord() const
{
    const DWORD dwCount = m_pInterface->GetRecordCount();
    return dwCount != 0 ? *m_pInterface->GetRecord(dwCount - 1) : throw std::string("no call received");
}
