#include "LUMGina.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <string_view>
#include <type_traits>

#include "EventLog.h"
#include "Exceptions.h"
#include "GinaNames.h"
#include "GinaPluginObject.h"
#include "GinaStandardObject.h"
#include "Needed.h"

// Construction, negotiation and initialisation of the host; its dispatch is in LUMGinaDispatch.cpp.

namespace {

constexpr DWORD HIGHEST_WLX_VERSION = WLX_VERSION_1_4;
constexpr DWORD DEFAULT_TIMEOUT_SECONDS = 120;
constexpr WCHAR TXT_NOT_INITIALISED[] = TEXT("it refused its initialisation");
constexpr WCHAR TXT_NO_PLUGIN_OBJECT[] = TEXT("Unable to create gina plugin");
constexpr WCHAR TXT_EVERY_PLUGIN[] = TEXT("Every plugin");
constexpr WCHAR TXT_WITHOUT_PLUGINS[] = TEXT("NoPlugins is set");
constexpr WCHAR TXT_LEFT_OUT[] = TEXT("Left out, since earlier starts of the machine ended in it");
constexpr WCHAR TXT_NESTED[] =
    TEXT("The call came from a GINA that is being started: it passes through to this library and is refused");

/// Sets a flag to true for the length of a scope.
class CFlag
{
public:
    explicit CFlag(bool& bFlag) noexcept : m_bFlag(bFlag) { m_bFlag = true; }
    ~CFlag() { m_bFlag = false; }
    CFlag(const CFlag&) = delete;
    CFlag& operator=(const CFlag&) = delete;

private:
    bool& m_bFlag;
};

/// Tells the event log why a DLL is not in service. A name that is not configured is no news.
void ReportLeftOut(const WCHAR* szGinaDLL, const CMessage& message) noexcept
{
    if (*szGinaDLL == 0 || message.m_szMessage == nullptr) {
        return;
    }
    // The place in the source, which ends the text, means nothing to those who read events.
    WCHAR szWhy[NAME_CAPACITY * 2];
    FormatText(szWhy, std::size(szWhy), TEXT("%s"), {static_cast<const WCHAR*>(message.m_szMessage)});
    const std::basic_string_view<WCHAR> why(szWhy);
    szWhy[std::min(why.rfind(TEXT(", ( ")), why.size())] = 0;
    ReportHostEvent(HostEvent::LeftOut, {szGinaDLL, szWhy});
}

/// Creates one member of the host. A class that takes a tag and a key gets the host's.
template <typename T, typename... Args>
void CreateMember(T*& pMember, const WCHAR* szMember, Args... args)
{
    try {
        // If there is no memory for a member, it stays null, and the others are still created.
        if constexpr (std::is_constructible_v<T, const WCHAR*, const WCHAR*, Args...>) {
            pMember =
                CallWithinHost([&] { return new (std::nothrow) T(LUM_GINA_APP, LUM_GINA_MTM, args...); });
        } else {
            pMember = CallWithinHost([&] { return new (std::nothrow) T(args...); });
        }
    } catch (...) {
        throw CMemAllocException(LUM_GINA_ORIGIN, szMember);
    }
}

template <typename T>
void DestroyMember(T*& pMember, const WCHAR* szMember) noexcept
{
    DeleteVariable(LUM_GINA_ORIGIN, szMember, [&] { CallWithinHost([&] { delete pMember; }); });
    pMember = nullptr;
}

} // namespace

CLUMGina::CLUMGina(HINSTANCE hInstance)
    : m_dwNegotiatedWlxVersion(0), m_pGinaContext(nullptr), m_pGinaObjectList(nullptr),
      m_pWinlogonRegistry(nullptr), m_pLUMRegistry(nullptr), m_pRegistryManager(nullptr),
      m_pLUMObject(nullptr), m_pLUMPipeThreadObject(nullptr), m_pLUMRegMonitorThreadObject(nullptr),
      m_pWinlogonObject(nullptr)
{
    const CConstructionTrace trace(LUM_GINA_ORIGIN, s_szClass);
    if (hInstance == nullptr) {
        throw CLUMInitializeFailException(LUM_GINA_ORIGIN);
    }
    try {
        CreateMembers(hInstance);
    } catch (...) {
        if (!ReportIf<CMemAllocException>()) {
            CWarning(LUM_GINA_ORIGIN, ERR_UNHANDLED_EXCEPTION);
        }
    }
}

CLUMGina::~CLUMGina()
{
    const CDestructionTrace trace(LUM_GINA_ORIGIN, s_szClass);
    if (m_pLUMPipeThreadObject != nullptr && !m_pLUMPipeThreadObject->m_bRunning) {
        // The pipe may never have been served. Clients should find none rather than wait for ever.
        m_pLUMPipeThreadObject->ClosePipe();
    }
    DestroyMember(m_pLUMPipeThreadObject, TEXT("m_pLUMPipeThreadObject"));
    DestroyMember(m_pLUMRegMonitorThreadObject, TEXT("m_pLUMRegMonitorThreadObject"));
    DestroyMember(m_pRegistryManager, TEXT("m_pRegistryManager"));
    DestroyMember(m_pLUMObject, TEXT("m_pLUMObject"));
    DestroyMember(m_pWinlogonObject, TEXT("m_pWinlogonObject"));
    DestroyMember(m_pGinaObjectList, TEXT("m_pGinaObjectList"));
    DestroyMember(m_pLUMRegistry, TEXT("m_pLUMRegistry"));
    DestroyMember(m_pWinlogonRegistry, TEXT("m_pWinlogonRegistry"));
    DestroyMember(m_pGinaContext, TEXT("m_pGinaContext"));
}

void CLUMGina::CreateMembers(HINSTANCE hInstance)
{
    CreateMember(m_pGinaContext, TEXT("m_pGinaContext"), hInstance);
    CreateMember(m_pWinlogonRegistry, TEXT("m_pWinlogonRegistry"));
    CreateMember(m_pLUMRegistry, TEXT("m_pLUMRegistry"));
    CreateMember(m_pGinaObjectList, TEXT("m_pGinaObjectList"));
    CreateMember(m_pWinlogonObject, TEXT("m_pWinlogonObject"));
    CreateMember(m_pRegistryManager, TEXT("m_pRegistryManager"), m_pLUMRegistry, m_pWinlogonRegistry, false);
    CreateMember(m_pLUMObject, TEXT("m_pLUMObject"), m_pRegistryManager, m_pGinaObjectList, m_pLUMRegistry,
                 &m_gate);
    CreateMember(m_pLUMPipeThreadObject, TEXT("m_pLUMPipeThreadObject"), m_pLUMObject, this, m_pLUMRegistry,
                 false);
    CreateMember(m_pLUMRegMonitorThreadObject, TEXT("m_pLUMRegMonitorThreadObject"), m_pRegistryManager,
                 m_pLUMRegistry, m_pWinlogonRegistry, false);
}

BOOL CLUMGina::LUMWlxNegotiate(DWORD dwWinlogonVersion, DWORD* pdwDllVersion)
{
    const COperation op(LUM_GINA_ORIGIN, s_szClass, TEXT("LUMWlxNegotiate"));
    const auto passOn = [](const COperation&) { throw; };
    return op.Run(passOn, [&] {
        return RunUnlessNested(op, [&] {
            m_safeStart.Begin();
            LoadPlugins(op, dwWinlogonVersion);
            m_safeStart.LeavePlugins();
            LoadPassthroughGina(op, dwWinlogonVersion);
            return TellVersion(op, pdwDllVersion);
        });
    });
}

template <typename Body>
bool CLUMGina::RunUnlessNested(const COperation& op, Body body)
{
    if (m_bStarting) {
        op.Warn(TXT_NESTED);
        return false;
    }
    const CFlag starting(m_bStarting);
    return CallWithinHost(body);
}

/// The list owns the object once Add has succeeded.
template <typename Object>
void CLUMGina::AddGinaObject(const WCHAR* szGinaDLL, DWORD dwWinlogonVersion)
{
    CGinaObjectList& list = Needed(m_pGinaObjectList);
    Object* pGinaObject = nullptr;
    try {
        pGinaObject = new Object(LUM_GINA_APP, LUM_GINA_MTM, Needed(m_pGinaContext).GetInstanceHandle(),
                                 szGinaDLL, LUM_INTERFACE_VERSION, dwWinlogonVersion);
    } catch (const CMessage& message) {
        ReportLeftOut(szGinaDLL, message);
        throw;
    }
    if (!m_gate.Look([&] { return list.Add(pGinaObject, 0); })) {
        DestroyListItem(pGinaObject);
        throw CMemAllocException(LUM_GINA_ORIGIN, TEXT("pGinaObject"));
    }
}

void CLUMGina::LoadPlugins(const COperation& op, DWORD dwWinlogonVersion)
{
    if (m_safeStart.IsWithoutPlugins()) {
        ReportHostEvent(HostEvent::LeftOut, {TXT_EVERY_PLUGIN, TXT_WITHOUT_PLUGINS});
        op.Warn(TXT_WITHOUT_PLUGINS);
        return;
    }
    try {
        const DWORD dwPlugins = Needed(m_pLUMRegistry).GetNumPlugins(false);
        for (DWORD dwIndex = 0; dwIndex < dwPlugins; ++dwIndex) {
            LoadPlugin(dwIndex, dwWinlogonVersion);
        }
    } catch (...) {
        op.Warn(ERR_UNHANDLED_EXCEPTION);
    }
}

/// A plugin that cannot be used is left out; those behind it are still tried.
void CLUMGina::LoadPlugin(DWORD dwIndex, DWORD dwWinlogonVersion)
{
    WCHAR szPlugin[NAME_CAPACITY] = {};
    m_pLUMRegistry->GetPlugin(szPlugin, NAME_CAPACITY, dwIndex);
    if (*szPlugin == 0) {
        return;
    }
    if (m_safeStart.IsLeftOut(szPlugin)) {
        ReportHostEvent(HostEvent::LeftOutAtSafeStart, {szPlugin});
        CPluginWarning(LUM_GINA_ORIGIN, TXT_LEFT_OUT, szPlugin);
        return;
    }
    m_safeStart.Enter(szPlugin);
    try {
        AddGinaObject<CGinaPluginObject>(szPlugin, dwWinlogonVersion);
    } catch (CMessage& message) {
        message.WriteIfUnwritten();
        CPluginWarning(LUM_GINA_ORIGIN, TXT_NO_PLUGIN_OBJECT, szPlugin);
    }
    m_safeStart.Leave();
}

void CLUMGina::LoadPassthroughGina(const COperation& op, DWORD dwWinlogonVersion)
{
    try {
        AddConfiguredPassthroughGina(dwWinlogonVersion);
        return;
    } catch (...) {
        if (!ReportIf<CMessage>()) {
            op.Warn(ERR_UNHANDLED_EXCEPTION);
            return;
        }
    }
    AddGinaObject<CGinaStandardObject>(SYSTEM_GINA, dwWinlogonVersion);
}

void CLUMGina::AddConfiguredPassthroughGina(DWORD dwWinlogonVersion)
{
    WCHAR szGinaDLL[NAME_CAPACITY] = {};
    bool bRead = false;
    try {
        // Without a configuration, msgina.dll takes the place.
        bRead = m_pLUMRegistry != nullptr && m_pLUMRegistry->GetGinaDLL(szGinaDLL, NAME_CAPACITY, true);
    } catch (CMessage& message) {
        message.WriteIfUnwritten();
    }
    if (!bRead) {
        throw CUnableToLoadPassthroughGinaException(LUM_GINA_ORIGIN);
    }
    AddGinaObject<CGinaStandardObject>(szGinaDLL, dwWinlogonVersion);
}

bool CLUMGina::TellVersion(const COperation& op, DWORD* pdwDllVersion) noexcept
{
    try {
        return CallWithinHost([&] { return AgreeOnVersion(pdwDllVersion); });
    } catch (...) {
        op.Warn(ERR_UNHANDLED_EXCEPTION);
        return false;
    }
}

bool CLUMGina::AgreeOnVersion(DWORD* pdwDllVersion)
{
    CGinaObjectList& list = Needed(m_pGinaObjectList);
    CGinaObject* pPassthrough = nullptr;
    const bool bFound = m_gate.Look([&] {
        list.End();
        return list.GetItem(pPassthrough);
    });
    if (!bFound || pPassthrough == nullptr) {
        return false;
    }
    const DWORD dwNegotiated = pPassthrough->m_pGinaPluginContext->m_GinaPluginInfo.m_dwWlxVersion;
    if (dwNegotiated == 0) {
        return false;
    }
    const DWORD dwAgreed = dwNegotiated < HIGHEST_WLX_VERSION ? dwNegotiated : HIGHEST_WLX_VERSION;
    *pdwDllVersion = dwAgreed;
    m_dwNegotiatedWlxVersion = dwAgreed;
    return true;
}

BOOL CLUMGina::LUMWlxInitialize(LPWSTR lpWinsta, HANDLE hWlx, PVOID pvReserved, PVOID pWinlogonFunctions,
                                PVOID* pWlxContext)
{
    const COperation op(LUM_GINA_ORIGIN, s_szClass, TEXT("LUMWlxInitialize"));
    using Handler = Absorb<CNoGINAorPluginToCallException, CUnexpectedEndOfListException,
                           CNullFunctionHandleException, CUnhandledPluginException>;
    const auto initialize = [&] {
        CLUMRegistry& registry = Needed(m_pLUMRegistry);
        registry.SetEnabled(1);
        registry.IncreaseInstanceCount();
        Needed(m_pGinaContext).SetWlxHandle(hWlx);
        Needed(m_pWinlogonObject).SetWinlogonObject(pWinlogonFunctions, m_dwNegotiatedWlxVersion);
        RequireGinaObjects();
        const DWORD dwInstanceCount = ReadSetting(&CLUMRegistry::GetInstanceCount, 1);
        InitializeObjects([&](CGinaObject& object) {
            return object.Initialize(m_pLUMObject, dwInstanceCount, lpWinsta, hWlx, pvReserved,
                                     pWinlogonFunctions, pWlxContext, 0, 0);
        });
        // Counted before the service threads run: they may add and remove objects.
        const DWORD dwObjects = m_pGinaObjectList->m_dwCount;
        const bool bInitialized = dwObjects != 0;
        if (bInitialized) {
            ReportHostEvent(HostEvent::Started, {dwObjects - 1});
        }
        // Only the first instance since the machine started runs the service threads. Later ones, such as
        // those of other sessions, do not.
        FinishInitialization(op, bInitialized && dwInstanceCount == 1, hWlx);
        return bInitialized;
    };
    return op.Run(Handler(), [&] { return RunUnlessNested(op, initialize); });
}

/// The GINAs are initialised, so people can log on whatever fails here: it is only reported.
void CLUMGina::FinishInitialization(const COperation& op, bool bStartThreads, HANDLE hWlx) noexcept
{
    try {
        CallWithinHost([&] {
            if (bStartThreads) {
                StartThreads();
            }
            SetWinlogonTimeout(hWlx);
        });
    } catch (...) {
        op.Warn(ERR_UNHANDLED_EXCEPTION);
    }
}

void CLUMGina::RequireGinaObjects() const
{
    if (m_pGinaObjectList == nullptr || m_pGinaObjectList->m_dwCount == 0) {
        throw CNoGINAorPluginToCallException(LUM_GINA_ORIGIN);
    }
}

/// A setting as it stands in the registry, the default when it cannot be read.
DWORD CLUMGina::ReadSetting(bool (CLUMRegistry::*pfnGet)(DWORD*, bool), DWORD dwDefault) noexcept
{
    DWORD dwValue = 0;
    try {
        return (Needed(m_pLUMRegistry).*pfnGet)(&dwValue, true) ? dwValue : dwDefault;
    } catch (...) {
        ReportIf<CMessage>();
        return dwDefault;
    }
}

/// Visits every object once, also when the one before it was removed.
template <typename Initialize>
void CLUMGina::InitializeObjects(Initialize initialize)
{
    try {
        for (GinaNode* pNode = m_pGinaObjectList->m_pHead; pNode != nullptr;) {
            // A plugin may have overwritten the node, so it is read inside the guard of the call.
            GinaNode* pFollowing = nullptr;
            const bool bInitialized = m_gate.Call([&] {
                pFollowing = pNode->pNext;
                CGinaObject& object = *pNode->m_pItem;
                NoteInitialization(object, pFollowing == nullptr);
                const bool bAccepted = initialize(object);
                if (!bAccepted) {
                    ReportHostEvent(HostEvent::LeftOut, {object.GetGinaDLLName(), TXT_NOT_INITIALISED});
                }
                return bAccepted;
            });
            if (!bInitialized) {
                RemoveNode(pNode);
            }
            pNode = pFollowing;
        }
    } catch (...) {
        // Winlogon does not go on without its GINA, so this start ends in the plugin that was noted.
        throw CUnhandledExceptionException(LUM_GINA_ORIGIN);
    }
}

/// The last object is the GINA, which is never left out.
void CLUMGina::NoteInitialization(const CGinaObject& object, bool bLast) noexcept
{
    if (bLast) {
        m_safeStart.LeavePlugins();
    } else {
        m_safeStart.Leave();
        m_safeStart.Enter(object.GetGinaDLLName());
    }
}

/// The object is destroyed without the lock: its DLL runs once more when it is freed. If another thread is in
/// a call that does not end, the node stays; while the system starts there is no such thread.
void CLUMGina::RemoveNode(GinaNode* pNode)
{
    CGinaObjectList& list = *m_pGinaObjectList;
    const auto setCursor = [&] {
        list.m_pCursor = pNode;
        return true;
    };
    if (m_gate.Change(setCursor, [&] { return list.Remove(pNode); })) {
        list.DestroyNode(pNode);
    }
}

/// Winlogon can do without the time limit, so a failure is not reported.
void CLUMGina::SetWinlogonTimeout(HANDLE hWlx) noexcept
{
    try {
        const DWORD dwTimeout = ReadSetting(&CLUMRegistry::GetTimeout, DEFAULT_TIMEOUT_SECONDS);
        const PWLX_SET_TIMEOUT pfnSetTimeout = Needed(m_pWinlogonObject).GetWlxSetTimeout();
        if (pfnSetTimeout != nullptr) {
            CallIntoDLL([&] { pfnSetTimeout(hWlx, dwTimeout); });
        }
    } catch (...) {
        return;
    }
}
