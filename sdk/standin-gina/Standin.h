#pragma once

#include <deque>
#include <string>

#include "StandinGina.h"

using WideText = std::basic_string<WCHAR>;

/// A record together with the texts that it points to.
struct CRecord : StandinRecord
{
    WideText text[STANDIN_MAX_ARGUMENTS];

    void SetText(DWORD dwIndex, const WideText& value);
};

/// The settings of the stand-in GINA and what it recorded. The only one of the DLL is g_Standin.
class CStandin
{
public:
    CStandin();
    ~CStandin();
    CStandin(const CStandin&) = delete;
    CStandin& operator=(const CStandin&) = delete;

    // The operations of StandinInterface.
    void Reset();
    void SetVersion(DWORD dwVersion);
    void SetResult(StandinCall call, LONG nResult);
    bool SetFailure(StandinCall call, StandinFailure failure, DWORD dwCode);
    void SetHook(StandinCall call, StandinHook pfnHook, void* pContext);
    void SetDetachHook(void(WINAPI* pfnHook)());
    DWORD GetRecordCount();
    const StandinRecord* GetRecord(DWORD dwIndex);

    /// Adds a record for a call that has just arrived; it stays where it is until Reset.
    CRecord& AddRecord(StandinCall call);
    /// Does what a call was told to do inside: runs its hook, then fails.
    void Act(const CRecord& record);
    DWORD GetVersion();
    LONG GetResult(StandinCall call);

private:
    struct CBehaviour
    {
        LONG nResult;
        StandinFailure failure;
        DWORD dwCode;
        StandinHook pfnHook;
        void* pHookContext;
    };

    CBehaviour& Behaviour(StandinCall call) { return m_behaviours[static_cast<DWORD>(call)]; }
    void SetDefaults();

    CRITICAL_SECTION m_lock;
    void(WINAPI* m_pfnDetachHook)() = nullptr;
    DWORD m_dwVersion;
    CBehaviour m_behaviours[STANDIN_CALL_COUNT];
    std::deque<CRecord> m_records;
};

extern CStandin g_Standin;
