#include "GinaObject.h"

#include <iterator>
#include <new>
#include <string>

#include "Exceptions.h"
#include "GinaNames.h"
#include "GuardedText.h"
#include "Operation.h"
#include "QuietLoading.h"
#include "RequireArgument.h"

namespace {

/// Export names are plain ASCII.
std::basic_string<WCHAR> Widen(const char* szName)
{
    return {szName, szName + std::char_traits<char>::length(szName)};
}

} // namespace

CGinaObject::CGinaObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance,
                         const WCHAR* szGinaDLLName, DWORD dwUsingLUMVersion, DWORD dwUsingWlxVersion)
    : CGlobalObject(szAPPArg, szMTMArg), m_origin{szAPP, szMTM}
{
    const CConstructionTrace trace(*this, s_szClass);
    try {
        CreateContext(hInstance);
        StoreOffer(szGinaDLLName, dwUsingLUMVersion, dwUsingWlxVersion);
    } catch (...) {
        FailConstruction<CUnhandledExceptionException, CBadArgException>(LUM_GINA_ORIGIN);
    }
}

CGinaObject::~CGinaObject()
{
    const CDestructionTrace trace(*this, s_szClass);
    DeleteVariable(*this, TEXT("m_pGinaPluginContext"), [this] { m_pGinaPluginContext.Reset(); });
}

void CGinaObject::CreateContext(HINSTANCE hInstance)
{
    try {
        m_pGinaPluginContext.Reset(new CGinaPluginContext(szAPP, szMTM, hInstance));
        m_pContext = m_pGinaPluginContext;
    } catch (...) {
        throw CMemAllocException(LUM_GINA_ORIGIN, TEXT("m_pGinaPluginContext"));
    }
}

void CGinaObject::StoreOffer(const WCHAR* szGinaDLLName, DWORD dwUsingLUMVersion, DWORD dwUsingWlxVersion)
{
    RequireArgument(LUM_GINA_ORIGIN, szGinaDLLName, TEXT("szGinaDLLName"));
    RequireArgument(LUM_GINA_ORIGIN, dwUsingWlxVersion, TEXT("dwUsingWlxVersion"));
    RequireArgument(LUM_GINA_ORIGIN, dwUsingLUMVersion, TEXT("dwUsingLUMVersion"));
    RequireArgument(LUM_GINA_ORIGIN, *szGinaDLLName != 0, TEXT("szGinaDLLName"));

    m_szGinaDLLName = CopyText(*this, szGinaDLLName, TEXT("m_szGinaDLLName"));
    CGinaPluginInfo info(szAPP, szMTM);
    info.m_dwWlxVersion = dwUsingWlxVersion;
    info.m_dwLUMVersion = dwUsingLUMVersion;
    info.SetGinaDLL(szGinaDLLName);
    m_pContext->SetGinaPluginInfo(info);
    if (GetPluginInfo().m_szGinaDLL == nullptr) {
        // The record has reported why.
        throw std::bad_alloc();
    }
}

/// The name in the record, by which others know the object. A plugin can leave any pointer there: if that
/// cannot be read, the name that the DLL was loaded by.
COwnedText CGinaObject::CopyRecordedName() const
{
    const WCHAR* szRecorded = GetPluginInfo().m_szGinaDLL;
    if (szRecorded != nullptr) {
        try {
            return CopyText(*this, szRecorded, TEXT("m_szGinaDLL"));
        } catch (CWcscpyException& exception) {
            exception.WriteIfUnwritten();
        }
    }
    return CopyText(*this, m_szGinaDLLName, TEXT("m_szGinaDLL"));
}

template <typename GetName>
bool CGinaObject::IsNamed(CTracePoint point, GetName getName) const noexcept
{
    const COperation op(*this, s_szClass, point);
    const auto body = [&] { return EqualNames(CopyRecordedName(), getName()); };
    return op.Run(Absorb<>(), body, FailureWarning::Never);
}

bool CGinaObject::operator==(const CGinaObject& other) const noexcept
{
    return IsNamed(TEXT("operator=="), [&] { return other.CopyRecordedName(); });
}

bool CGinaObject::operator==(const WCHAR* szGinaDLL) const noexcept
{
    return IsNamed(TEXT("operator=="), [=] { return szGinaDLL; });
}

const WCHAR* CGinaObject::GetGinaDLLName() const noexcept
{
    return m_szGinaDLLName;
}

void CGinaObject::PutBack() noexcept
{
    CKeptOrigin::PutBack(*this, m_origin);
    if (m_pGinaPluginContext != m_pContext) {
        m_pGinaPluginContext.Release();
        m_pGinaPluginContext.Reset(m_pContext);
    }
    CKeptOrigin::PutBack(*m_pContext, m_origin);
    CKeptOrigin::PutBack(m_pContext->m_hDLLInstance, m_hModule);
    CKeptOrigin::PutBack(GetPluginInfo(), m_origin);
}

void CGinaObject::LoadGinaDLL()
{
    const CQuietLoading quiet;
    // The DllMain of the DLL runs in here.
    m_hModule = RunDLL(DLL_MAIN, [&] { return LoadLibraryW(GetGinaDLLName()); });
    if (m_hModule == nullptr) {
        throw CUnableToLoadDLLException(LUM_GINA_ORIGIN, GetGinaDLLName(), GetLastError());
    }
    m_pContext->SetDLLInstanceHandle(m_hModule);
    if (m_hModule == m_pContext->m_hInstance) {
        // It is this library, whatever its name: each call would come back without end.
        throw CUnableToLoadDLLException(LUM_GINA_ORIGIN, GetGinaDLLName(), ERROR_CIRCULAR_DEPENDENCY);
    }
}

void CGinaObject::FreeGinaDLL() noexcept
{
    const HMODULE hModule = m_pContext->GetDLLInstanceHandle();
    if (hModule == nullptr) {
        return;
    }
    try {
        if (RunDLL(DLL_MAIN, [&] { return FreeLibrary(hModule); }) == FALSE) {
            throw CFreeGinaDLLFailException(LUM_GINA_ORIGIN, GetLastError());
        }
    } catch (...) {
        if (!ReportIf<CFreeGinaDLLFailException>()) {
            CWarning(*this, ERR_UNHANDLED_EXCEPTION);
        }
    }
}

void CGinaObject::RequireResolved(const CGinaExportBase& function, CSourceLocation where) const
{
    if (function.m_pfn == nullptr) {
        throw CNullFunctionHandleException(LUM_GINA_ORIGIN, GetGinaDLLName(), where);
    }
}

void CGinaObject::ReportFault(const char* szWhere, const CForeignFault& fault) const noexcept
{
    try {
        WCHAR szCode[16];
        FormatText(szCode, std::size(szCode), TEXT("0x%x"), {fault.GetCode()});
        ReportHostEvent(HostEvent::Faulted, {GetGinaDLLName(), Widen(szWhere).c_str(), szCode});
    } catch (const std::bad_alloc&) {
        return;
    }
}

bool CGinaObject::ReportIfHookFailure() noexcept
{
    return ReportIf<CUnableToLoadDLLException, CUnableToLoadDLLFunctionException,
                    CFailedGinaNegotiationsException>();
}

void CGinaObject::Resolve(CGinaExportBase& ginaExport) const
{
    ginaExport.m_pfn = GetProcAddress(m_hModule, ginaExport.m_szName);
    if (ginaExport.m_pfn != nullptr) {
        return;
    }
    const DWORD dwError = GetLastError();
    CUnableToLoadDLLFunctionException exception(LUM_GINA_ORIGIN, Widen(ginaExport.m_szName).c_str(), dwError);
    if (ginaExport.m_missing == Missing::Fatal) {
        throw exception;
    }
}

void CGinaObject::ResolveAll(const CExportTable& table) const
{
    for (CGinaExportBase* pExport = table.m_pFirst; pExport != nullptr; pExport = pExport->m_pNext) {
        const bool bCalledFor =
            pExport->m_dwAboveVersion == 0 || GetPluginInfo().m_dwWlxVersion > pExport->m_dwAboveVersion;
        if (pExport->m_pfn == nullptr && bCalledFor) {
            Resolve(*pExport);
        }
    }
}
