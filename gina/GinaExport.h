#pragma once

#include <windows.h>

/// Whether an export that a DLL lacks makes the DLL unusable.
enum class Missing
{
    Fatal,
    Tolerated
};

class CGinaExportBase;

/// The exports of one DLL, in the order in which they are looked up. Owns none of them.
class CExportTable
{
public:
    CGinaExportBase* m_pFirst = nullptr;
    CGinaExportBase* m_pLast = nullptr;
};

/// One export of a GINA or plugin DLL: its name, when it is looked up, and its address once resolved.
class CGinaExportBase
{
public:
    /// Appends itself to the table, so exports are looked up in the order in which the members that hold them
    /// are declared. An export is looked up only when the negotiated Winlogon interface version is above
    /// dwAboveVersion.
    CGinaExportBase(CExportTable& table, const char* szName, DWORD dwAboveVersion, Missing missing) noexcept
        : m_szName(szName), m_dwAboveVersion(dwAboveVersion), m_missing(missing)
    {
        (table.m_pLast != nullptr ? table.m_pLast->m_pNext : table.m_pFirst) = this;
        table.m_pLast = this;
    }
    CGinaExportBase(const CGinaExportBase&) = delete;
    CGinaExportBase& operator=(const CGinaExportBase&) = delete;

    const char* const m_szName;
    const DWORD m_dwAboveVersion;
    const Missing m_missing;
    FARPROC m_pfn = nullptr;
    CGinaExportBase* m_pNext = nullptr;
};

/// An export of the function type Function.
template <typename Function>
class CGinaExport : public CGinaExportBase
{
public:
    CGinaExport(CExportTable& table, const char* szName, DWORD dwAboveVersion = 0,
                Missing missing = Missing::Fatal) noexcept
        : CGinaExportBase(table, szName, dwAboveVersion, missing)
    {
    }

    bool IsResolved() const noexcept { return m_pfn != nullptr; }

    /// Calls the function, which must be resolved.
    template <typename... Args>
    auto operator()(Args... args) const
    {
        // FARPROC has no arguments. The cast by way of void (*)() tells the compiler that the change of type
        // is meant.
        return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(m_pfn))(args...);
    }
};
