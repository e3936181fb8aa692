#pragma once

#include <string>

#include "CallRecorder.h"

using WideText = std::basic_string<WCHAR>;

/// A record together with the texts that it points to.
struct CRecord : StandinRecord
{
    WideText text[STANDIN_MAX_ARGUMENTS];

    void SetText(DWORD dwIndex, const WideText& value);
};

/// The settings of the stand-in GINA and what it recorded. The only one of the DLL is g_Standin.
class CStandin : public CCallRecorder<StandinCall, StandinRecord, CRecord, STANDIN_CALL_COUNT>
{
public:
    CStandin();
    ~CStandin();

    void Reset();
    void SetVersion(DWORD dwVersion);
    void SetDetachHook(void(WINAPI* pfnHook)());
    DWORD GetVersion();

private:
    void(WINAPI* m_pfnDetachHook)() = nullptr;
    DWORD m_dwVersion;
};

extern CStandin g_Standin;
