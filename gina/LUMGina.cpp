#include "LUMGina.h"

#include <new>
#include <stdexcept>

#include "Exceptions.h"
#include "GinaStandardObject.h"

// Construction, negotiation and initialisation of the host; its dispatch is in LUMGinaDispatch.cpp.

namespace {

constexpr DWORD HIGHEST_WLX_VERSION = WLX_VERSION_1_4;
constexpr DWORD DEFAULT_TIMEOUT_SECONDS = 120;
constexpr WCHAR FALLBACK_GINA[] = TEXT("msgina.dll");

/// Creates one member of the host.
template <typename T, typename... Args>
void CreateMember(T*& pMember, const WCHAR* szMember, Args... args)
{
    try {
        // No memory for one member is no reason to go without the others: it stays null then.
        pMember = new (std::nothrow) T(LUM_GINA_APP, LUM_GINA_MTM, args...);
    } catch (...) {
        throw CMemAllocException(LUM_GINA_ORIGIN, szMember);
    }
}

/// Destroys one member of the host.
template <typename T>
void DestroyMember(T*& pMember, const WCHAR* szMember) noexcept
{
    DeleteVariable(LUM_GINA_ORIGIN, szMember, [&] { delete pMember; });
    pMember = nullptr;
}

/// A member that an operation cannot do without. What this throws ends the operation as any unexpected
/// exception does.
template <typename T>
T& Needed(T* pMember)
{
    if (pMember == nullptr) {
        throw std::logic_error("the host was left without this member");
    }
    return *pMember;
}

} // namespace

CLUMGina::CLUMGina(HINSTANCE hInstance)
    : m_dwNegotiatedWlxVersion(0), m_pGinaContext(nullptr), m_pGinaObjectList(nullptr),
      m_pWinlogonObject(nullptr)
{
    const CConstructionTrace trace(LUM_GINA_ORIGIN, s_szClass);
    if (hInstance == nullptr) {
        throw CLUMInitializeFailException(LUM_GINA_ORIGIN);
    }
    try {
        CreateMembers(hInstance);
    } catch (...) {
        if (!IsHandling<CMemAllocException>()) {
            CWarning(LUM_GINA_ORIGIN, ERR_UNHANDLED_EXCEPTION);
        }
    }
}

CLUMGina::~CLUMGina()
{
    const CDestructionTrace trace(LUM_GINA_ORIGIN, s_szClass);
    DestroyMember(m_pWinlogonObject, TEXT("m_pWinlogonObject"));
    DestroyMember(m_pGinaObjectList, TEXT("m_pGinaObjectList"));
    DestroyMember(m_pGinaContext, TEXT("m_pGinaContext"));
}

void CLUMGina::CreateMembers(HINSTANCE hInstance)
{
    CreateMember(m_pGinaContext, TEXT("m_pGinaContext"), hInstance);
    CreateMember(m_pGinaObjectList, TEXT("m_pGinaObjectList"));
    CreateMember(m_pWinlogonObject, TEXT("m_pWinlogonObject"));
}

BOOL CLUMGina::LUMWlxNegotiate(DWORD dwWinlogonVersion, DWORD* pdwDllVersion)
{
    const COperation op(LUM_GINA_ORIGIN, s_szClass, TEXT("LUMWlxNegotiate"));
    const auto passOn = [](const COperation&) { throw; };
    return op.Run(passOn, [&] {
        LoadPassthroughGina(op, dwWinlogonVersion);
        try {
            return AgreeOnVersion(pdwDllVersion);
        } catch (...) {
            Absorb<>()(op);
            return false;
        }
    });
}

/// The object belongs to the list once Add has succeeded; there is no entry without an object.
template <typename Object>
void CLUMGina::AddGinaObject(const WCHAR* szGinaDLL, DWORD dwWinlogonVersion)
{
    CGinaObjectList& list = Needed(m_pGinaObjectList);
    auto* pGinaObject = new Object(LUM_GINA_APP, LUM_GINA_MTM, Needed(m_pGinaContext).GetInstanceHandle(),
                                   szGinaDLL, LUM_INTERFACE_VERSION, dwWinlogonVersion);
    if (!list.Add(pGinaObject, 0)) {
        DestroyListItem(pGinaObject);
    }
}

void CLUMGina::LoadPassthroughGina(const COperation& op, DWORD dwWinlogonVersion)
{
    bool bConfigured = false;
    try {
        AddConfiguredPassthroughGina(dwWinlogonVersion);
        bConfigured = true;
    } catch (...) {
        if (!IsHandling<CMessage>()) {
            op.Warn(ERR_UNHANDLED_EXCEPTION);
            return;
        }
    }
    if (!bConfigured) {
        AddGinaObject<CGinaStandardObject>(FALLBACK_GINA, dwWinlogonVersion);
    }
}

void CLUMGina::AddConfiguredPassthroughGina(DWORD)
{
    throw CUnableToLoadPassthroughGinaException(LUM_GINA_ORIGIN);
}

bool CLUMGina::AgreeOnVersion(DWORD* pdwDllVersion)
{
    Needed(m_pGinaObjectList).End();
    CGinaObject* pPassthrough = nullptr;
    if (!m_pGinaObjectList->GetItem(pPassthrough) || pPassthrough == nullptr) {
        return false;
    }
    const DWORD dwNegotiated = pPassthrough->m_pGinaPluginContext->m_GinaPluginInfo.m_dwWlxVersion;
    if (dwNegotiated == 0) {
        return false;
    }
    m_dwNegotiatedWlxVersion = dwNegotiated < HIGHEST_WLX_VERSION ? dwNegotiated : HIGHEST_WLX_VERSION;
    *pdwDllVersion = m_dwNegotiatedWlxVersion;
    return true;
}

BOOL CLUMGina::LUMWlxInitialize(LPWSTR lpWinsta, HANDLE hWlx, PVOID pvReserved, PVOID pWinlogonFunctions,
                                PVOID* pWlxContext)
{
    const COperation op(LUM_GINA_ORIGIN, s_szClass, TEXT("LUMWlxInitialize"));
    using Handler = Absorb<CNoGINAorPluginToCallException, CUnexpectedEndOfListException,
                           CNullFunctionHandleException, CUnhandledPluginException>;
    return op.Run(Handler(), [&] {
        Needed(m_pGinaContext).SetWlxHandle(hWlx);
        Needed(m_pWinlogonObject).SetWinlogonObject(pWinlogonFunctions, m_dwNegotiatedWlxVersion);
        RequireGinaObjects();
        constexpr DWORD dwInstanceCount = 1;
        InitializeObjects([&](CGinaObject& object) {
            return object.Initialize(nullptr, dwInstanceCount, lpWinsta, hWlx, pvReserved, pWinlogonFunctions,
                                     pWlxContext, 0, 0);
        });
        SetWinlogonTimeout(hWlx);
        return m_pGinaObjectList->m_dwCount != 0;
    });
}

void CLUMGina::RequireGinaObjects() const
{
    if (m_pGinaObjectList == nullptr || m_pGinaObjectList->m_dwCount == 0) {
        throw CNoGINAorPluginToCallException(LUM_GINA_ORIGIN);
    }
}

/// Visits every object once, also when the one before it was removed.
template <typename Initialize>
void CLUMGina::InitializeObjects(Initialize initialize)
{
    try {
        for (GinaNode* pNode = m_pGinaObjectList->m_pHead; pNode != nullptr;) {
            GinaNode* pFollowing = pNode->pNext;
            if (!initialize(*pNode->m_pItem)) {
                m_pGinaObjectList->m_pCursor = pNode;
                m_pGinaObjectList->Remove();
            }
            pNode = pFollowing;
        }
    } catch (...) {
        throw CUnhandledExceptionException(LUM_GINA_ORIGIN);
    }
}

/// Winlogon can do without being told, so nothing is reported.
void CLUMGina::SetWinlogonTimeout(HANDLE hWlx) noexcept
{
    try {
        const PWLX_SET_TIMEOUT pfnSetTimeout = Needed(m_pWinlogonObject).GetWlxSetTimeout();
        if (pfnSetTimeout != nullptr) {
            pfnSetTimeout(hWlx, DEFAULT_TIMEOUT_SECONDS);
        }
    } catch (...) {
        return;
    }
}
