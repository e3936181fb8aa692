#pragma once

#include <cstdlib>
#include <string>
#include <vector>

#include <windows.h>
#include "WlxInterface.h"

#include "StandinGina.h"
#include "TestPlugin.h"

/// The export that gives the interface, and the names of its calls.
template <typename Interface>
struct CDrivenDll;
template <>
struct CDrivenDll<StandinInterface>
{
    static constexpr char EXPORT[] = "StandinGina";
    static constexpr const char* CALLS[] = {
#define CALL_NAME(NAME, RESULT) #NAME,
        STANDIN_CALLS(CALL_NAME)};
};
template <>
struct CDrivenDll<TestPluginInterface>
{
    static constexpr char EXPORT[] = "TestPlugin";
    static constexpr const char* CALLS[] = {PLUGIN_CALLS(CALL_NAME)};
#undef CALL_NAME
};

/// A stand-in GINA or test plugin loaded by name: stays loaded, with its settings, for the life of this
/// object.
template <typename Interface>
class CDllDriver
{
public:
    explicit CDllDriver(const WCHAR* szDLL) : m_szDLL(szDLL), m_hModule(LoadLibraryW(szDLL))
    {
        const FARPROC pfn =
            m_hModule != nullptr ? GetProcAddress(m_hModule, CDrivenDll<Interface>::EXPORT) : nullptr;
        if (pfn == nullptr) {
            // The build has left the DLL beside the tests; without it nothing below means anything.
            std::abort();
        }
        m_pInterface = reinterpret_cast<const Interface*(WINAPI*)()>(reinterpret_cast<void (*)()>(pfn))();
        m_pInterface->Reset();
    }
    ~CDllDriver()
    {
        m_pInterface->Reset();
        FreeLibrary(m_hModule);
    }
    CDllDriver(const CDllDriver&) = delete;
    CDllDriver& operator=(const CDllDriver&) = delete;

    const Interface* operator->() const { return m_pInterface; }

    const WCHAR* GetName() const { return m_szDLL; }
    /// The names of the calls received so far; those of a plugin without "LUM".
    std::vector<std::string> Calls() const
    {
        std::vector<std::string> calls;
        for (DWORD dwIndex = 0; dwIndex < m_pInterface->GetRecordCount(); ++dwIndex) {
            const auto dwCall = static_cast<DWORD>(m_pInterface->GetRecord(dwIndex)->call);
            calls.emplace_back(CDrivenDll<Interface>::CALLS[dwCall]);
        }
        return calls;
    }
    /// The last call received; a test that has none has failed already.
    const auto& LastRecord() const
    {
        const DWORD dwCount = m_pInterface->GetRecordCount();
        return dwCount != 0 ? *m_pInterface->GetRecord(dwCount - 1) : throw std::string("no call received");
    }

private:
    const WCHAR* m_szDLL;
    HMODULE m_hModule;
    const Interface* m_pInterface;
};

using CStandin = CDllDriver<StandinInterface>;
using CPluginDriver = CDllDriver<TestPluginInterface>;
