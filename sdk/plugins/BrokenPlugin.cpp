// Breaks the start of the machine, or a lock, as its settings say, to see what becomes of it:
// HKEY_LOCAL_MACHINE\SOFTWARE\ORX\LUM\Plugins\Broken, both REG_SZ:
//
//     Where    DllMain, Negotiate, Initialize or IsLockOk
//     How      Hang, End (the process) or Fault
//
// Without them it passes every call on.

#include <string_view>

#include "LUMPlugin.h"
#include "Setting.h"

namespace {

constexpr WCHAR KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Plugins\\Broken");
constexpr DWORD WORD_CAPACITY = 16;

bool IsSetTo(const WCHAR* szValue, const WCHAR* szWord)
{
    WCHAR szSet[WORD_CAPACITY];
    ReadText(KEY, szValue, szSet, WORD_CAPACITY);
    return std::basic_string_view<WCHAR>(szSet) == szWord;
}

void Hang()
{
    Sleep(INFINITE);
}

void End()
{
    ExitProcess(0);
}

void Fault()
{
    // Volatile, so that no compiler may conclude that this cannot happen.
    volatile int* volatile pNothing = nullptr;
    *pNothing = 0;
}

void BreakIn(const WCHAR* szWhere)
{
    if (!IsSetTo(TEXT("Where"), szWhere)) {
        return;
    }
    const struct
    {
        const WCHAR* szHow;
        void (*pfnBreak)();
    } ways[] = {{TEXT("Hang"), Hang}, {TEXT("End"), End}, {TEXT("Fault"), Fault}};
    for (const auto& way : ways) {
        if (IsSetTo(TEXT("How"), way.szHow)) {
            way.pfnBreak();
        }
    }
}

class CBrokenPlugin final : public lum::CPlugin
{
public:
    CBrokenPlugin() : CPlugin(TEXT("Breaks the start of the machine")) {}

    bool Negotiate(lum::CGinaPluginInfo* pPluginInfo) override
    {
        BreakIn(TEXT("Negotiate"));
        return CPlugin::Negotiate(pPluginInfo);
    }

    BOOL Initialize(lum::CLUMObject* pLUMObject, DWORD dwInstanceCount, LPWSTR lpWinsta, HANDLE hWlx,
                    PVOID pvReserved, PVOID pWinlogonFunctions, PVOID* pWlxContext, DWORD dwLoadFlag1,
                    DWORD dwLoadFlag2) override
    {
        BreakIn(TEXT("Initialize"));
        return CPlugin::Initialize(pLUMObject, dwInstanceCount, lpWinsta, hWlx, pvReserved,
                                   pWinlogonFunctions, pWlxContext, dwLoadFlag1, dwLoadFlag2);
    }

    BOOL IsLockOk(lum::CGinaNode* pNode, PVOID pWlxContext) override
    {
        BreakIn(TEXT("IsLockOk"));
        return CPlugin::IsLockOk(pNode, pWlxContext);
    }
};

CBrokenPlugin s_plugin;

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD dwReason, LPVOID)
{
    if (dwReason == DLL_PROCESS_ATTACH) {
        BreakIn(TEXT("DllMain"));
    }
    return TRUE;
}

LUM_PLUGIN(s_plugin)
