// A plugin that relies on nothing but the binary interface: it finds its context by offsets and the next
// object's operations by the numbers of their slots.

#include "ChainPlugin.h"
#include "LUMPlugin.h"

extern "C" __declspec(dllimport) void __stdcall Sleep(DWORD dwMilliseconds);
extern "C" __declspec(dllimport) UINT __stdcall SetErrorMode(UINT nMode);

namespace {

AbiChainState g_state;

/// An object in the frame of a call. The frames of a fault leave theirs alive.
class CWitness
{
public:
    CWitness() { ++g_state.nAlive; }
    ~CWitness() { --g_state.nAlive; }
};

template <typename T>
T At(const void* pObject, unsigned nOffset)
{
    return *reinterpret_cast<const T*>(static_cast<const char*>(pObject) + nOffset);
}

void ReadContext(const void* pNode)
{
    const void* pContext = At<const void*>(At<const void*>(pNode, 8), 12);
    g_state.hPlugin = At<void*>(pContext, 8);
    g_state.hHost = At<void*>(pContext, 12);
    g_state.hWlx = At<void*>(pContext, 16);
    g_state.szDLL = At<const wchar_t*>(pContext, 20 + 16);
    g_state.dwNegotiated = At<unsigned long>(pContext, 20 + 20);
}

void ReadNull()
{
    volatile int* volatile pNull = nullptr;
    static_cast<void>(*pNull);
}

void DivideByZero()
{
    volatile int nDividend = 100;
    volatile int nDivisor = 0;
    nDividend = nDividend / nDivisor;
}

int ExhaustStack(int nDepth)
{
    volatile int frame[64] = {nDepth};
    return nDepth == -1 ? 0 : ExhaustStack(nDepth + 1) + frame[0];
}

// Called through pointers, so that the compiler must reckon with all that they may do.
void (*volatile g_pfnReadNull)() = ReadNull;
void (*volatile g_pfnDivideByZero)() = DivideByZero;
int (*volatile g_pfnExhaustStack)(int) = ExhaustStack;

AbiDeed GetDeed(int nCall)
{
    return g_state.nCall == nCall ? g_state.deed : ABI_PASS_ON;
}

void FailAsTold(AbiDeed deed)
{
    switch (deed) {
    case ABI_THROW:
        throw 5;
    case ABI_READ_NULL:
        g_pfnReadNull();
        break;
    case ABI_DIVIDE_BY_ZERO:
        g_pfnDivideByZero();
        break;
    case ABI_EXHAUST_STACK:
        g_pfnExhaustStack(0);
        break;
    case ABI_WAIT:
        for (g_state.nWaiting = 1; g_state.nWaiting != -1;) {
            Sleep(1);
        }
        g_state.nWaiting = 2;
        break;
    default:
        break;
    }
}

/// Calls the next object by the number of the slot: bool has a byte, int four.
template <typename Result, typename... Arguments>
int CallNext(int nSlot, void* pNode, Arguments... arguments)
{
    void* pNext = At<void*>(pNode, 16);
    void* pObject = At<void*>(pNext, 8);
    const auto pfn = At<Result(__thiscall*)(void*, void*, Arguments...)>(At<void*>(pObject, 0),
                                                                         4 * static_cast<unsigned>(nSlot));
    if constexpr (__is_void(Result)) {
        pfn(pObject, pNext, arguments...);
        return 0;
    } else {
        return pfn(pObject, pNext, arguments...);
    }
}

template <typename Call>
int TryNext(AbiDeed deed, Call callNext)
{
    try {
        const CWitness witness;
        return callNext();
    } catch (...) {
        ++g_state.nCaught;
        if (deed == ABI_CATCH_AND_RETHROW) {
            throw;
        }
        return deed == ABI_TRY_TWICE ? callNext() : g_state.nAnswer;
    }
}

template <typename Result, typename... Arguments>
int PassCall(int nSlot, void* pNode, Arguments... arguments)
{
    ReadContext(pNode);
    const AbiDeed deed = GetDeed(nSlot);
    const CWitness witness;
    FailAsTold(deed);
    if (deed == ABI_ANSWER) {
        return g_state.nAnswer;
    }
    const auto callNext = [&] { return CallNext<Result>(nSlot, pNode, arguments...); };
    if (deed == ABI_CATCH_AND_RETHROW || deed == ABI_CATCH_AND_ANSWER || deed == ABI_TRY_TWICE) {
        return TryNext(deed, callNext);
    }
    const int nResult = callNext();
    return deed == ABI_CHANGE ? g_state.nAnswer : nResult;
}

/// A call that is not forwarded.
int Serve(int nSlot)
{
    const AbiDeed deed = GetDeed(nSlot);
    const CWitness witness;
    FailAsTold(deed);
    return deed == ABI_ANSWER ? g_state.nAnswer : TRUE;
}

WCHAR s_szName[] = TEXT("Not to be freed");

// clang-format off
#define FORWARDED(TYPE, SLOT_TYPE, NAME, PARAMETERS, ...) \
    TYPE NAME PARAMETERS override { return static_cast<TYPE>(PassCall<SLOT_TYPE>(ABI_##NAME, pNode, __VA_ARGS__)); }

class CChainPlugin final : public lum::CPlugin
{
public:
    CChainPlugin() : CPlugin(TEXT("Of the other compiler")) {}

    bool Negotiate(lum::CGinaPluginInfo* pInfo) override
    {
        if (GetDeed(ABI_Negotiate) == ABI_NAME_BY_CONSTANT) {
            pInfo->m_szFriendlyName = s_szName;
            return true;
        }
        return CPlugin::Negotiate(pInfo) && Serve(ABI_Negotiate) != 0;
    }
    bool QueryPlugin(lum::CGinaPluginInfo*, DWORD, DWORD, DWORD) override { return Serve(ABI_QueryPlugin) != 0; }
    bool QueryPluginInfo(lum::CGinaPluginInfo* pInfo) override { return Serve(ABI_QueryPluginInfo) != 0 && CPlugin::QueryPluginInfo(pInfo); }
    void DynamicUnload() override { Serve(ABI_DynamicUnload); }
    BOOL Initialize(lum::CLUMObject*, DWORD, LPWSTR, HANDLE, PVOID, PVOID, PVOID*, DWORD, DWORD) override { return Serve(ABI_Initialize); }

    FORWARDED(void, void, DisplaySASNotice, (lum::CGinaNode* pNode, PVOID pContext), pContext)
    FORWARDED(int, int, LoggedOutSAS, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwSasType, PLUID pId, PSID pSid, PDWORD pdwOptions, PHANDLE phToken, PWLX_MPR_NOTIFY_INFO pInfo, PVOID* ppProfile), pContext, dwSasType, pId, pSid, pdwOptions, phToken, pInfo, ppProfile)
    FORWARDED(BOOL, bool, ActivateUserShell, (lum::CGinaNode* pNode, PVOID pContext, PWSTR szDesktop, PWSTR szScript, PVOID pEnvironment), pContext, szDesktop, szScript, pEnvironment)
    FORWARDED(int, int, LoggedOnSAS, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwSasType, PVOID pReserved), pContext, dwSasType, pReserved)
    FORWARDED(void, void, DisplayLockedNotice, (lum::CGinaNode* pNode, PVOID pContext), pContext)
    FORWARDED(BOOL, bool, IsLockOk, (lum::CGinaNode* pNode, PVOID pContext), pContext)
    FORWARDED(int, int, WkstaLockedSAS, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwSasType), pContext, dwSasType)
    FORWARDED(BOOL, bool, IsLogoffOk, (lum::CGinaNode* pNode, PVOID pContext), pContext)
    FORWARDED(void, void, Logoff, (lum::CGinaNode* pNode, PVOID pContext), pContext)
    FORWARDED(void, void, Shutdown, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwType), pContext, dwType)
    FORWARDED(BOOL, bool, StartApplication, (lum::CGinaNode* pNode, PVOID pContext, PWSTR szDesktop, PVOID pEnvironment, PWSTR szCommand), pContext, szDesktop, pEnvironment, szCommand)
    FORWARDED(BOOL, bool, ScreenSaverNotify, (lum::CGinaNode* pNode, PVOID pContext, BOOL* pSecure), pContext, pSecure)
    FORWARDED(BOOL, bool, NetworkProviderLoad, (lum::CGinaNode* pNode, PVOID pContext, PWLX_MPR_NOTIFY_INFO pInfo), pContext, pInfo)
    FORWARDED(BOOL, bool, DisplayStatusMessage, (lum::CGinaNode* pNode, PVOID pContext, HDESK hDesktop, DWORD dwOptions, PWSTR szTitle, PWSTR szMessage), pContext, hDesktop, dwOptions, szTitle, szMessage)
    FORWARDED(BOOL, bool, GetStatusMessage, (lum::CGinaNode* pNode, PVOID pContext, DWORD* pdwOptions, PWSTR szMessage, DWORD dwSize), pContext, pdwOptions, szMessage, dwSize)
    FORWARDED(BOOL, bool, RemoveStatusMessage, (lum::CGinaNode* pNode, PVOID pContext), pContext)
    FORWARDED(BOOL, bool, GetConsoleSwitchCredentials, (lum::CGinaNode* pNode, PVOID pContext, PVOID pCredentials), pContext, pCredentials)
    FORWARDED(void, void, ReconnectNotify, (lum::CGinaNode* pNode, PVOID pContext), pContext)
    FORWARDED(void, void, DisconnectNotify, (lum::CGinaNode* pNode, PVOID pContext), pContext)
};
// clang-format on

CChainPlugin s_plugin;

} // namespace

LUM_PLUGIN(s_plugin)

extern "C" int __stdcall DllMain(void*, unsigned long dwReason, void*)
{
    if (dwReason == 1) {
        g_state.nErrorModeAtLoading = SetErrorMode(0);
        SetErrorMode(g_state.nErrorModeAtLoading);
    } else if (dwReason == 0) {
        FailAsTold(GetDeed(ABI_Unload));
    }
    return TRUE;
}

extern "C" __declspec(dllexport) AbiChainState* __cdecl AbiChain()
{
    return &g_state;
}
