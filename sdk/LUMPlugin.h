#pragma once

#include <windows.h>
#include <winwlx.h>

// Everything that a plugin of the LUM GINA needs: the binary interface between the host and plugins, and a
// class with which a plugin takes a few lines:
//
//     #include "LUMPlugin.h"
//
//     class CKioskPlugin : public lum::CPlugin
//     {
//     public:
//         BOOL IsLockOk(lum::CGinaNode* pNode, PVOID pWlxContext)
//         {
//             return IsKiosk() ? FALSE : CPlugin::IsLockOk(pNode, pWlxContext);
//         }
//     };
//
//     static CKioskPlugin s_plugin;
//     LUM_PLUGIN(s_plugin)
//
// A plugin is a 32-bit DLL that exports 24 functions under undecorated names; a .def file lists them. A
// call that the class does not override goes on to the next object of the list by itself.
//
// Any C++98 compiler for 32-bit Windows will do: its member functions take "this" in ECX and remove their own
// arguments. plugin-guide.md leads from an empty folder to a loaded plugin.
//
//
// Tags in the contracts below
//
// Thread:
//   [winlogon]  Winlogon's thread. Calls nest: while one of them has a dialog open, Winlogon may make
//               another on the same thread.
//   [control]   The thread that serves the control channel, also while a [winlogon] call is under way.
//   [host]      Winlogon's thread when the system starts; a thread of the host for a plugin that is added
//               or removed while the system runs.
//
// State:
//   [loading]   The first call of all. The plugin is not in the list yet.
//   [loaded]    From an accepted Negotiate until the DLL is unloaded, before Initialize too.
//   [running]   After Initialize. One exception: when an object further up faults or throws in Initialize,
//               the host gives up. It initialises no object behind that one, yet leaves them loaded.
//
// Pointers:
//   [lent]      The caller's. Valid until the call returns: do not free or keep it.
//   [kept]      The host's or Winlogon's. Valid as long as the DLL is loaded: do not free it.
//   [out]       The caller's variable. Store through it only together with a result that says so. May be
//   null. [passed]    Means nothing to a plugin; pass it on as it is. [secret]    Leads to passwords or
//   tokens: do not log, copy or keep what it leads to.
//
// Result:
//   [bool]      One byte: only the low byte of the result is looked at.
//   [BOOL]      32 bits: FALSE is no, anything else yes.
//   [action]    A WLX_SAS_ACTION_ value, which Winlogon acts upon.
//
// A call that faults or throws fails, and nothing else does: the host writes the plugin's name to its trace
// log and answers Winlogon FALSE or WLX_SAS_ACTION_NONE. The plugin stays in the list and gets the next call.
// Negotiate, Initialize and DynamicUnload are exceptions, and say so.

namespace lum {

/// The host's control operations. It has no virtual table, so a plugin cannot call them.
class CLUMObject;
class CGinaObject;

/// The plugin interface version of this header.
const DWORD PLUGIN_INTERFACE_VERSION = 0x01000000;

/// What is known of one GINA or plugin.
///
/// The record owns its two strings; each may be null. Whoever fills or clears a record makes them with
/// LocalAlloc and releases them with LocalFree: see ReplaceString.
struct CGinaPluginInfo
{
    const WCHAR* szAPP; ///< tag and key of whoever made the record: leave both alone
    const WCHAR* szMTM;
    DWORD m_dwSpare1; ///< for plugins and their clients; the host only copies it
    WCHAR* m_szFriendlyName;
    WCHAR* m_szGinaDLL;   ///< as it is configured
    DWORD m_dwWlxVersion; ///< Winlogon interface version, WLX_VERSION_1_0 to WLX_VERSION_1_4
    DWORD m_dwLUMVersion; ///< plugin interface version
    DWORD m_dwSpare2;     ///< as m_dwSpare1
};

/// What the host keeps for one loaded DLL. Read only. A plugin finds its own through the node of a call:
/// pNode->m_pItem->m_pGinaPluginContext. It does not change after the call of Initialize.
struct CGinaPluginContext
{
    const WCHAR* szAPP;
    const WCHAR* szMTM;
    HINSTANCE m_hDLLInstance; ///< the DLL
    HINSTANCE m_hInstance;    ///< the host
    HANDLE m_hWlx;            ///< Winlogon's handle; null before Initialize, and always for the standard GINA
    CGinaPluginInfo m_GinaPluginInfo;
};

/// One place in the list of objects. Read only. The node and its pNext are valid only during the call that
/// hands the node over: objects come, go and change places while the system runs.
struct CGinaNode
{
    const WCHAR* szAPP;
    const WCHAR* szMTM;
    CGinaObject* m_pItem; ///< the GINA or plugin at this place
    DWORD m_dwTag;
    CGinaNode* pNext; ///< not to be read directly: see NextNode
    CGinaNode* pPrev; ///< null at the head
};

/// A loaded GINA or plugin. A plugin passes a call on by calling the object of the next node.
///
/// A forwarded operation takes the object's own node, then what the plugin's operation of that name takes.
/// The slots of the virtual table are the interface between host and plugins: their order is fixed, and a
/// bool is one byte.
class CGinaObject
{
    /// Slot 0 destroys the object, which only the host may do.
    virtual void* DeletingDestructor(DWORD dwFlags) = 0;

public:
    virtual bool ActivateUserShell(CGinaNode* pNode, PVOID pWlxContext, PWSTR pszDesktopName,
                                   PWSTR pszMprLogonScript, PVOID pEnvironment) = 0;
    virtual void DisconnectNotify(CGinaNode* pNode, PVOID pWlxContext) = 0;
    virtual void DisplayLockedNotice(CGinaNode* pNode, PVOID pWlxContext) = 0;
    virtual void DisplaySASNotice(CGinaNode* pNode, PVOID pWlxContext) = 0;
    virtual bool DisplayStatusMessage(CGinaNode* pNode, PVOID pWlxContext, HDESK hDesktop, DWORD dwOptions,
                                      PWSTR pTitle, PWSTR pMessage) = 0;
    virtual void DynamicUnload() = 0; ///< not for plugins to call
    virtual bool GetConsoleSwitchCredentials(CGinaNode* pNode, PVOID pWlxContext, PVOID pCredInfo) = 0;
    virtual bool GetStatusMessage(CGinaNode* pNode, PVOID pWlxContext, DWORD* pdwOptions, PWSTR pMessage,
                                  DWORD dwBufferSize) = 0;
    virtual bool Initialize(CLUMObject* pLUMObject, DWORD dwInstanceCount, LPWSTR lpWinsta, HANDLE hWlx,
                            PVOID pvReserved, PVOID pWinlogonFunctions, PVOID* pWlxContext, DWORD dwLoadFlag1,
                            DWORD dwLoadFlag2) = 0; ///< not for plugins to call
    virtual bool IsLockOk(CGinaNode* pNode, PVOID pWlxContext) = 0;
    virtual bool IsLogoffOk(CGinaNode* pNode, PVOID pWlxContext) = 0;
    virtual int LoggedOnSAS(CGinaNode* pNode, PVOID pWlxContext, DWORD dwSasType, PVOID pReserved) = 0;
    virtual int LoggedOutSAS(CGinaNode* pNode, PVOID pWlxContext, DWORD dwSasType, PLUID pAuthenticationId,
                             PSID pLogonSid, PDWORD pdwOptions, PHANDLE phToken,
                             PWLX_MPR_NOTIFY_INFO pNprNotifyInfo, PVOID* pProfile) = 0;
    virtual void Logoff(CGinaNode* pNode, PVOID pWlxContext) = 0;
    virtual bool Negotiate(DWORD dwWinlogonVersion, DWORD* pdwDllVersion,
                           CGinaPluginInfo* pPluginInfo) = 0; ///< not for plugins to call
    virtual bool NetworkProviderLoad(CGinaNode* pNode, PVOID pWlxContext,
                                     PWLX_MPR_NOTIFY_INFO pNprNotifyInfo) = 0;
    virtual bool QueryPlugin(CGinaPluginInfo* pPluginInfo, DWORD dwQueryParam1, DWORD dwQueryParam2,
                             DWORD dwQueryParam3) = 0;
    virtual bool QueryPluginInfo(CGinaPluginInfo* pPluginInfo) = 0;
    virtual void ReconnectNotify(CGinaNode* pNode, PVOID pWlxContext) = 0;
    virtual bool RemoveStatusMessage(CGinaNode* pNode, PVOID pWlxContext) = 0;
    virtual bool ScreenSaverNotify(CGinaNode* pNode, PVOID pWlxContext, BOOL* pSecure) = 0;
    virtual void Shutdown(CGinaNode* pNode, PVOID pWlxContext, DWORD dwShutdownType) = 0;
    virtual bool StartApplication(CGinaNode* pNode, PVOID pWlxContext, PWSTR pszDesktopName,
                                  PVOID pEnvironment, PWSTR pszCmdLine) = 0;
    virtual int WkstaLockedSAS(CGinaNode* pNode, PVOID pWlxContext, DWORD dwSasType) = 0;

    const WCHAR* szAPP;
    const WCHAR* szMTM;
    CGinaPluginContext* m_pGinaPluginContext; ///< [kept] as long as the object is in the list

    // The host has more fields from here on.
};

// The sizes that host and plugins agree on. A compiler that packs structures otherwise stops here.
typedef char CGinaPluginInfoHas32Bytes[sizeof(void*) != 4 || sizeof(CGinaPluginInfo) == 32 ? 1 : -1];
typedef char CGinaPluginContextHas52Bytes[sizeof(void*) != 4 || sizeof(CGinaPluginContext) == 52 ? 1 : -1];
typedef char CGinaNodeHas24Bytes[sizeof(void*) != 4 || sizeof(CGinaNode) == 24 ? 1 : -1];
typedef char CGinaObjectHas16Bytes[sizeof(void*) != 4 || sizeof(CGinaObject) == 16 ? 1 : -1];
typedef char WCHARHas2Bytes[sizeof(WCHAR) == 2 ? 1 : -1];
typedef char BoolHas1Byte[sizeof(bool) == 1 ? 1 : -1];

/// The node to pass a call at pNode on to. It holds the object to call:
///
///     lum::CGinaNode* pNext = lum::NextNode(pNode);
///     return pNext->m_pItem->IsLockOk(pNext, pWlxContext);
///
/// Never null in a call to a plugin: the standard GINA is the last. Call this once for each call that you
/// pass on. The next node changes when a plugin is added to the running system, and an object refuses a call
/// that comes with the node of another.
///
/// The object may throw an exception of the host. Let it pass. On 32-bit Windows it skips the frames of g++
/// without running their destructors or handlers, so hold nothing across the call that needs them.
inline CGinaNode* NextNode(const CGinaNode* pNode)
{
    // A compiler may read an ordinary field twice, where that saves it a register.
#if defined(__GNUC__)
    return __atomic_load_n(&pNode->pNext, __ATOMIC_ACQUIRE);
#else
    return *static_cast<CGinaNode* const volatile*>(&pNode->pNext);
#endif
}

/// Replaces a string of a record by a copy of szSource, or by null for null. If there is no memory for the
/// copy: false, and nothing has changed.
inline bool ReplaceString(WCHAR*& szTarget, const WCHAR* szSource)
{
    WCHAR* szCopy = 0;
    if (szSource != 0) {
        SIZE_T cchSource = 1;
        while (szSource[cchSource - 1] != 0) {
            ++cchSource;
        }
        szCopy = static_cast<WCHAR*>(LocalAlloc(LMEM_FIXED, cchSource * sizeof(WCHAR)));
        if (szCopy == 0) {
            return false;
        }
        for (SIZE_T n = 0; n < cchSource; ++n) {
            szCopy[n] = szSource[n];
        }
    }
    if (szTarget != 0) {
        LocalFree(szTarget);
    }
    szTarget = szCopy;
    return true;
}

/// Gives a plugin a name for people to read. Use it on the record that Negotiate or QueryPluginInfo gets.
/// Results as for ReplaceString.
inline bool SetFriendlyName(CGinaPluginInfo* pPluginInfo, const WCHAR* szFriendlyName)
{
    return ReplaceString(pPluginInfo->m_szFriendlyName, szFriendlyName);
}

/// Levels of the trace log, one bit each. The mask that selects them has the last four where none is set.
const DWORD TRACE_DEBUG = 0x1;
const DWORD TRACE_ENTRY = 0x2;
const DWORD TRACE_EXIT = 0x4;
const DWORD TRACE_NOTIFICATION = 0x8;
const DWORD TRACE_WARNING = 0x10;
const DWORD TRACE_EXCEPTION = 0x20;
const DWORD TRACE_CRITICAL = 0x40;
const DWORD TRACE_ERROR = 0x80;

/// Reads a value below HKEY_LOCAL_MACHINE, of any type; for WriteTrace. pcbData: the room at pData, then what
/// was read.
inline bool ReadTraceSetting(const WCHAR* szKey, const WCHAR* szValue, void* pData, DWORD* pcbData)
{
    HKEY hKey = 0;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, KEY_READ, &hKey) != ERROR_SUCCESS) {
        return false;
    }
    const LONG lResult = RegQueryValueExW(hKey, szValue, 0, 0, static_cast<BYTE*>(pData), pcbData);
    RegCloseKey(hKey);
    return lResult == ERROR_SUCCESS;
}

/// Appends characters to a text up to cch of them or its zero; for WriteTrace. Returns the end.
inline WCHAR* AppendTrace(WCHAR* pEnd, const WCHAR* szText, DWORD cch)
{
    for (DWORD n = 0; n < cch && szText[n] != 0; ++n) {
        *pEnd++ = szText[n];
    }
    return pEnd;
}

/// Appends one byte after another to a file, in one write; for WriteTrace.
inline bool AppendTraceFile(const WCHAR* szPath, const char* pBytes, DWORD cbBytes)
{
    const HANDLE hFile = CreateFileW(szPath, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, 0,
                                     OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, 0);
    if (hFile == INVALID_HANDLE_VALUE) {
        return false;
    }
    DWORD cbWritten = 0;
    const BOOL bWritten = WriteFile(hFile, pBytes, cbBytes, &cbWritten, 0);
    CloseHandle(hFile);
    return bWritten != FALSE && cbWritten == cbBytes;
}

/// Writes a line to the trace log under a tag of the plugin's own, as the host writes under "LUM_GINA":
///
///     Fri May 14 21:06:44 2004 KIOSK: [WARNING] a lock was refused
///
/// szTag selects the file: the text value of that name in HKEY_LOCAL_MACHINE\Software\ORX\Security\Debug is
/// its path. dwLevel: one of the TRACE_ levels, written if the host's mask has it (Debug in
/// HKEY_LOCAL_MACHINE\SOFTWARE\ORX\LUM\Gina). Both are read for every line. True when the line was written.
///
/// Any thread, at any time; it needs nothing of the host. Takes advapi32. It never waits for other writers.
/// szText is converted to the system's ANSI code page. Never write a password.
inline bool WriteTrace(const WCHAR* szTag, DWORD dwLevel, const WCHAR* szText)
{
    static const WCHAR* const LABELS[] = {TEXT("DEBUG"),        TEXT("ENTRY"),   TEXT("EXIT "),
                                          TEXT("NOTIFICATION"), TEXT("WARNING"), TEXT("EXCEPTION"),
                                          TEXT("CRITICAL"),     TEXT("ERROR")};
    static const WCHAR NAMES[] = TEXT("SunMonTueWedThuFriSatJanFebMarAprMayJunJulAugSepOctNovDec");
    static const WCHAR FORM[] = TEXT("aaa bbb 00 00:00:00 0000 ");
    const DWORD DEFAULT_MASK = 0xF0, LONGEST_LABEL = 12, LONGEST_PATH = 260;

    DWORD dwMask = 0;
    DWORD cbMask = sizeof(dwMask);
    if (!ReadTraceSetting(TEXT("SOFTWARE\\ORX\\LUM\\Gina"), TEXT("Debug"), &dwMask, &cbMask) ||
        cbMask != sizeof(dwMask))
    {
        dwMask = DEFAULT_MASK;
    }
    WCHAR szPath[LONGEST_PATH + 1];
    DWORD cbPath = LONGEST_PATH * sizeof(WCHAR);
    if ((dwLevel & dwMask) != dwLevel ||
        !ReadTraceSetting(TEXT("Software\\ORX\\Security\\Debug"), szTag, szPath, &cbPath))
    {
        return false;
    }
    szPath[cbPath / sizeof(WCHAR)] = 0;

    const WCHAR* szLabel = TEXT("HEADER");
    for (DWORD n = 0; n < sizeof(LABELS) / sizeof(*LABELS); ++n) {
        szLabel = dwLevel == DWORD(1) << n ? LABELS[n] : szLabel;
    }
    DWORD cchTag = 0, cchText = 0, cchFolder = 0;
    for (; szTag[cchTag] != 0; ++cchTag) {
    }
    for (; szText[cchText] != 0; ++cchText) {
    }
    const DWORD cchMost = DWORD(sizeof(FORM) / sizeof(WCHAR)) + LONGEST_LABEL + 8 + cchTag + cchText;
    // The text in 16 bits, and behind it in the code page, in which a character has two bytes at most.
    WCHAR* const szLine = static_cast<WCHAR*>(LocalAlloc(LMEM_FIXED, 2 * cchMost * sizeof(WCHAR)));
    if (szLine == 0) {
        return false;
    }
    SYSTEMTIME now;
    GetLocalTime(&now);
    WCHAR* pEnd = AppendTrace(szLine, FORM, cchMost);
    AppendTrace(szLine, NAMES + 3 * now.wDayOfWeek, 3);
    AppendTrace(szLine + 4, NAMES + 3 * (6 + now.wMonth), 3);
    const WORD PARTS[] = {
        now.wDay, now.wHour, now.wMinute, now.wSecond, WORD(now.wYear / 100), WORD(now.wYear % 100)};
    static const BYTE PLACES[] = {8, 11, 14, 17, 20, 22};
    for (DWORD n = 0; n < sizeof(PLACES); ++n) {
        szLine[PLACES[n]] = WCHAR('0' + PARTS[n] / 10 % 10);
        szLine[PLACES[n] + 1] = WCHAR('0' + PARTS[n] % 10);
    }
    pEnd = AppendTrace(AppendTrace(pEnd, szTag, cchTag), TEXT(": ["), cchMost);
    pEnd = AppendTrace(AppendTrace(pEnd, szLabel, cchMost), TEXT("] "), cchMost);
    pEnd = AppendTrace(AppendTrace(pEnd, szText, cchText), TEXT("\r\n"), cchMost);

    char* const pBytes = reinterpret_cast<char*>(szLine + cchMost);
    const int cbBytes = WideCharToMultiByte(CP_ACP, WC_COMPOSITECHECK | WC_DEFAULTCHAR, szLine,
                                            int(pEnd - szLine), pBytes, int(cchMost * sizeof(WCHAR)), 0, 0);
    // As by the host, a folder that is missing is made, one level deep.
    for (DWORD n = 0; szPath[n] != 0; ++n) {
        cchFolder = szPath[n] == '\\' || szPath[n] == '/' || szPath[n] == ':' ? n + 1 : cchFolder;
    }
    const WCHAR chFirst = szPath[cchFolder];
    szPath[cchFolder] = 0;
    if (cchFolder != 0) {
        CreateDirectoryW(szPath, 0);
    }
    szPath[cchFolder] = chFirst;
    const bool bWritten = cbBytes > 0 && *szPath != 0 && AppendTraceFile(szPath, pBytes, DWORD(cbBytes));
    LocalFree(szLine);
    return bWritten;
}

/// A plugin that takes part and passes every call on. Override the operations that are to do something else.
/// Each is the export of its name with "LUM" in front. To pass a call on from an override, call the operation
/// of this class.
///
/// Make one object of the class, with static storage, and name it in LUM_PLUGIN. It is constructed under the
/// loader lock, so its constructor must only set fields. Where the compiler knows "override", write it: an
/// operation with a misspelt name overrides nothing, and its call is passed on.
class CPlugin
{
public:
    /// szFriendlyName must stay valid as long as the DLL is loaded; null for none.
    explicit CPlugin(const WCHAR* szFriendlyName = 0)
        : m_szFriendlyName(szFriendlyName), m_szGinaDLL(), m_dwWlxVersion(0), m_dwLUMVersion(0)
    {
    }

    // Operations that are not forwarded.

    /// Decides whether the plugin takes part: true accepts. [host] [loading] [bool]
    ///
    /// pPluginInfo [kept]: the plugin's own record, with its DLL name and the versions offered. The plugin
    /// may replace either version by the one that it implements, and may set the spare words and the friendly
    /// name. The host refuses a m_dwWlxVersion below WLX_VERSION_1_0 and a m_dwLUMVersion above the one
    /// offered.
    ///
    /// The m_dwWlxVersion left here decides which exports the DLL must have. Those marked "from 1.x" below
    /// are neither looked up nor called for a lower version. A forwarded call to a plugin with a lower
    /// version fails, and does not reach the objects behind it.
    ///
    /// A plugin that does not accept, faults, throws or lacks an export is left out of the list, and its DLL
    /// is unloaded. The rest of the list is loaded as if the plugin were not configured.
    virtual bool Negotiate(CGinaPluginInfo* pPluginInfo)
    {
        if (m_szFriendlyName != 0) {
            SetFriendlyName(pPluginInfo, m_szFriendlyName);
        }
        return true;
    }

    /// Gets ready: anything but FALSE accepts. Called once. [host] [loaded] [BOOL]
    ///
    /// pLUMObject [passed]. dwInstanceCount: how often a host was initialised since the machine started, this
    /// time included. lpWinsta [lent]: the window station's name. hWlx [kept]: Winlogon's handle, for the
    /// functions of pWinlogonFunctions. pvReserved [passed]. pWinlogonFunctions [kept]: Winlogon's dispatch
    /// table. pWlxContext [passed]: the standard GINA stores its context there. dwLoadFlag1 and dwLoadFlag2:
    /// 0 when Winlogon initialises the host, 1 for a plugin that is added to the running system; then
    /// lpWinsta, pvReserved and pWlxContext are null.
    ///
    /// A plugin that does not accept is taken out of the list and its DLL is unloaded, without DynamicUnload.
    /// One that faults or throws makes the host's own initialisation fail: Winlogon is told FALSE, and the
    /// objects behind the plugin are not initialised.
    virtual BOOL Initialize(CLUMObject* /*pLUMObject*/, DWORD /*dwInstanceCount*/, LPWSTR /*lpWinsta*/,
                            HANDLE /*hWlx*/, PVOID /*pvReserved*/, PVOID /*pWinlogonFunctions*/,
                            PVOID* /*pWlxContext*/, DWORD /*dwLoadFlag1*/, DWORD /*dwLoadFlag2*/)
    {
        return TRUE;
    }

    /// The plugin is about to be removed from the running system, and its DLL to be unloaded. It is still in
    /// the list, but no call is in it, and new ones wait. [host] [loaded]
    ///
    /// Return soon: a call of Winlogon's waits at most a second and then comes in all the same. The removal
    /// waits up to a second for such a call to end; if it does not, the plugin stays in the list until the
    /// next start. It also stays if this operation fails. Not called when the system shuts down.
    virtual void DynamicUnload() {}

    /// A query that a client of the control channel sends. Client and plugin agree on its meaning, and on
    /// that of the three values. [control] [loaded] [bool]
    ///
    /// pPluginInfo [lent]: the client's record. The client gets only the result back.
    virtual bool QueryPlugin(CGinaPluginInfo* /*pPluginInfo*/, DWORD /*dwQueryParam1*/,
                             DWORD /*dwQueryParam2*/, DWORD /*dwQueryParam3*/)
    {
        return false;
    }

    /// Fills the caller's record with what the plugin says of itself. [control] [loaded] [bool]
    ///
    /// pPluginInfo [lent]: replace strings in it with ReplaceString.
    virtual bool QueryPluginInfo(CGinaPluginInfo* pPluginInfo)
    {
        pPluginInfo->m_dwWlxVersion = m_dwWlxVersion;
        pPluginInfo->m_dwLUMVersion = m_dwLUMVersion;
        return SetFriendlyName(pPluginInfo, m_szFriendlyName) &&
               ReplaceString(pPluginInfo->m_szGinaDLL, m_szGinaDLL);
    }

    // Forwarded operations: the calls that Winlogon makes to a GINA, with the plugin's node in front. All are
    // [winlogon] [running]. pNode [lent] is the plugin's own; pWlxContext [passed] the standard GINA's.

    /// Nobody is logged on: show how to.
    virtual void DisplaySASNotice(CGinaNode* pNode, PVOID pWlxContext)
    {
        CGinaNode* const pNext = NextNode(pNode);
        pNext->m_pItem->DisplaySASNotice(pNext, pWlxContext);
    }

    /// Nobody is logged on, and an event of type dwSasType has come: log a user on, or not. [action]
    ///
    /// pLogonSid [lent]: the SID of the logon session. All others are [out]. The standard GINA stores them,
    /// and only with WLX_SAS_ACTION_LOGON: pAuthenticationId, pdwOptions, phToken [secret], pNprNotifyInfo
    /// [secret] and pProfile. To refuse a logon, return WLX_SAS_ACTION_NONE without passing the call on. If
    /// you change the answer after the GINA has returned, what it has stored is lost.
    virtual int LoggedOutSAS(CGinaNode* pNode, PVOID pWlxContext, DWORD dwSasType, PLUID pAuthenticationId,
                             PSID pLogonSid, PDWORD pdwOptions, PHANDLE phToken,
                             PWLX_MPR_NOTIFY_INFO pNprNotifyInfo, PVOID* pProfile)
    {
        CGinaNode* const pNext = NextNode(pNode);
        return pNext->m_pItem->LoggedOutSAS(pNext, pWlxContext, dwSasType, pAuthenticationId, pLogonSid,
                                            pdwOptions, phToken, pNprNotifyInfo, pProfile);
    }

    /// A user is logged on: start the shell on the desktop. FALSE ends the session. [BOOL]
    ///
    /// pszDesktopName, pszMprLogonScript [lent]; the script may be null. pEnvironment [lent]: the user's
    /// environment block.
    virtual BOOL ActivateUserShell(CGinaNode* pNode, PVOID pWlxContext, PWSTR pszDesktopName,
                                   PWSTR pszMprLogonScript, PVOID pEnvironment)
    {
        CGinaNode* const pNext = NextNode(pNode);
        return pNext->m_pItem->ActivateUserShell(pNext, pWlxContext, pszDesktopName, pszMprLogonScript,
                                                 pEnvironment);
    }

    /// A user is logged on, and an event has come: what Winlogon is to do. pReserved [passed]. [action]
    virtual int LoggedOnSAS(CGinaNode* pNode, PVOID pWlxContext, DWORD dwSasType, PVOID pReserved)
    {
        CGinaNode* const pNext = NextNode(pNode);
        return pNext->m_pItem->LoggedOnSAS(pNext, pWlxContext, dwSasType, pReserved);
    }

    /// The workstation is locked: show how to unlock it.
    virtual void DisplayLockedNotice(CGinaNode* pNode, PVOID pWlxContext)
    {
        CGinaNode* const pNext = NextNode(pNode);
        pNext->m_pItem->DisplayLockedNotice(pNext, pWlxContext);
    }

    /// May the workstation be locked, by something other than LoggedOnSAS? [BOOL]
    virtual BOOL IsLockOk(CGinaNode* pNode, PVOID pWlxContext)
    {
        CGinaNode* const pNext = NextNode(pNode);
        return pNext->m_pItem->IsLockOk(pNext, pWlxContext);
    }

    /// The workstation is locked, and an event has come: unlock, stay, or end the session. [action]
    virtual int WkstaLockedSAS(CGinaNode* pNode, PVOID pWlxContext, DWORD dwSasType)
    {
        CGinaNode* const pNext = NextNode(pNode);
        return pNext->m_pItem->WkstaLockedSAS(pNext, pWlxContext, dwSasType);
    }

    /// May the user log off, by something other than LoggedOnSAS? [BOOL]
    virtual BOOL IsLogoffOk(CGinaNode* pNode, PVOID pWlxContext)
    {
        CGinaNode* const pNext = NextNode(pNode);
        return pNext->m_pItem->IsLogoffOk(pNext, pWlxContext);
    }

    /// The user is logging off. This can no longer be refused.
    virtual void Logoff(CGinaNode* pNode, PVOID pWlxContext)
    {
        CGinaNode* const pNext = NextNode(pNode);
        pNext->m_pItem->Logoff(pNext, pWlxContext);
    }

    /// The machine is going down; dwShutdownType is a WLX_SAS_ACTION_SHUTDOWN value. The last call.
    virtual void Shutdown(CGinaNode* pNode, PVOID pWlxContext, DWORD dwShutdownType)
    {
        CGinaNode* const pNext = NextNode(pNode);
        pNext->m_pItem->Shutdown(pNext, pWlxContext, dwShutdownType);
    }

    /// From 1.1. Start an application for the user. Texts and environment [lent]. [BOOL]
    virtual BOOL StartApplication(CGinaNode* pNode, PVOID pWlxContext, PWSTR pszDesktopName,
                                  PVOID pEnvironment, PWSTR pszCmdLine)
    {
        CGinaNode* const pNext = NextNode(pNode);
        return pNext->m_pItem->StartApplication(pNext, pWlxContext, pszDesktopName, pEnvironment, pszCmdLine);
    }

    /// From 1.1. A screen saver is about to start: FALSE forbids it. *pSecure [out] decides whether the
    /// screen saver locks the workstation; it is TRUE on entry if it would. [BOOL]
    virtual BOOL ScreenSaverNotify(CGinaNode* pNode, PVOID pWlxContext, BOOL* pSecure)
    {
        CGinaNode* const pNext = NextNode(pNode);
        return pNext->m_pItem->ScreenSaverNotify(pNext, pWlxContext, pSecure);
    }

    /// From 1.3. Network providers want to log the user on. pNprNotifyInfo [out] [secret]. [BOOL]
    virtual BOOL NetworkProviderLoad(CGinaNode* pNode, PVOID pWlxContext, PWLX_MPR_NOTIFY_INFO pNprNotifyInfo)
    {
        CGinaNode* const pNext = NextNode(pNode);
        return pNext->m_pItem->NetworkProviderLoad(pNext, pWlxContext, pNprNotifyInfo);
    }

    /// From 1.3. Show a status message. hDesktop, pTitle and pMessage [lent]; dwOptions: STATUSMSG_OPTION_
    /// bits. [BOOL]
    virtual BOOL DisplayStatusMessage(CGinaNode* pNode, PVOID pWlxContext, HDESK hDesktop, DWORD dwOptions,
                                      PWSTR pTitle, PWSTR pMessage)
    {
        CGinaNode* const pNext = NextNode(pNode);
        return pNext->m_pItem->DisplayStatusMessage(pNext, pWlxContext, hDesktop, dwOptions, pTitle,
                                                    pMessage);
    }

    /// From 1.3. Store the status message that is shown. pdwOptions [out]; pMessage [out] has room for
    /// dwBufferSize characters, the terminator included. [BOOL]
    virtual BOOL GetStatusMessage(CGinaNode* pNode, PVOID pWlxContext, DWORD* pdwOptions, PWSTR pMessage,
                                  DWORD dwBufferSize)
    {
        CGinaNode* const pNext = NextNode(pNode);
        return pNext->m_pItem->GetStatusMessage(pNext, pWlxContext, pdwOptions, pMessage, dwBufferSize);
    }

    /// From 1.3. Stop showing the status message. [BOOL]
    virtual BOOL RemoveStatusMessage(CGinaNode* pNode, PVOID pWlxContext)
    {
        CGinaNode* const pNext = NextNode(pNode);
        return pNext->m_pItem->RemoveStatusMessage(pNext, pWlxContext);
    }

    /// From 1.4. Store the credentials of the user, who moves to another session. pCredInfo [out] [secret]: a
    /// WLX_CONSOLESWITCH_CREDENTIALS_INFO. [BOOL]
    virtual BOOL GetConsoleSwitchCredentials(CGinaNode* pNode, PVOID pWlxContext, PVOID pCredInfo)
    {
        CGinaNode* const pNext = NextNode(pNode);
        return pNext->m_pItem->GetConsoleSwitchCredentials(pNext, pWlxContext, pCredInfo);
    }

    /// From 1.4. The session was connected again.
    virtual void ReconnectNotify(CGinaNode* pNode, PVOID pWlxContext)
    {
        CGinaNode* const pNext = NextNode(pNode);
        pNext->m_pItem->ReconnectNotify(pNext, pWlxContext);
    }

    /// From 1.4. The session was disconnected.
    virtual void DisconnectNotify(CGinaNode* pNode, PVOID pWlxContext)
    {
        CGinaNode* const pNext = NextNode(pNode);
        pNext->m_pItem->DisconnectNotify(pNext, pWlxContext);
    }

    /// For LUM_PLUGIN: negotiates, and remembers what QueryPluginInfo will tell.
    bool NegotiateAndRemember(CGinaPluginInfo* pPluginInfo)
    {
        if (!Negotiate(pPluginInfo)) {
            return false;
        }
        m_dwWlxVersion = pPluginInfo->m_dwWlxVersion;
        m_dwLUMVersion = pPluginInfo->m_dwLUMVersion;
        const WCHAR* szGinaDLL = pPluginInfo->m_szGinaDLL;
        for (DWORD n = 0; szGinaDLL != 0 && szGinaDLL[n] != 0 && n + 1 < MAX_PATH; ++n) {
            m_szGinaDLL[n] = szGinaDLL[n];
            m_szGinaDLL[n + 1] = 0;
        }
        return true;
    }

private:
    CPlugin(const CPlugin&);
    CPlugin& operator=(const CPlugin&);

    const WCHAR* m_szFriendlyName;
    WCHAR m_szGinaDLL[MAX_PATH];
    DWORD m_dwWlxVersion;
    DWORD m_dwLUMVersion;
};

} // namespace lum

// LUM_CALL(STATEMENT) is the body of an export. An exception of g++ must not leave a DLL: on 32-bit Windows
// it would end the process, and Winlogon with it. So LUM_CALL turns it into one that the host understands.
// Exceptions of other compilers leave as they are. Those of the host pass by on their way up and are not seen
// here.
#if defined(_WIN32) && defined(__GNUC__) && defined(__EXCEPTIONS)
namespace lum {

const DWORD PLUGIN_EXCEPTION = 0xE04C554D;

__attribute__((noreturn)) inline void RaisePluginException()
{
    for (;;) {
        RaiseException(PLUGIN_EXCEPTION, EXCEPTION_NONCONTINUABLE, 0, 0);
    }
}

} // namespace lum
#define LUM_CALL(STATEMENT)                                                                                  \
    try {                                                                                                    \
        STATEMENT;                                                                                           \
    } catch (...) {                                                                                          \
    }                                                                                                        \
    lum::RaisePluginException();
#else
#define LUM_CALL(STATEMENT) STATEMENT;
#endif

#define LUM_EXPORT(RESULT, NAME, PARAMETERS, STATEMENT)                                                      \
    extern "C" RESULT WINAPI NAME PARAMETERS                                                                 \
    {                                                                                                        \
        LUM_CALL(return STATEMENT)                                                                           \
    }

// Defines the 24 exports of a plugin: PLUGIN is the object that serves them. Once in a DLL, at file level.
// clang-format off
#define LUM_PLUGIN(PLUGIN) \
    LUM_EXPORT(bool, LUMNegotiate, (lum::CGinaPluginInfo* pInfo), (PLUGIN).NegotiateAndRemember(pInfo)) \
    LUM_EXPORT(bool, LUMQueryPlugin, (lum::CGinaPluginInfo* pInfo, DWORD dw1, DWORD dw2, DWORD dw3), (PLUGIN).QueryPlugin(pInfo, dw1, dw2, dw3)) \
    LUM_EXPORT(bool, LUMQueryPluginInfo, (lum::CGinaPluginInfo* pInfo), (PLUGIN).QueryPluginInfo(pInfo)) \
    LUM_EXPORT(void, LUMDynamicUnload, (), (PLUGIN).DynamicUnload()) \
    LUM_EXPORT(BOOL, LUMInitialize, (lum::CLUMObject* pObject, DWORD dwInstances, LPWSTR szWinsta, HANDLE hWlx, PVOID pReserved, PVOID pFunctions, PVOID* ppContext, DWORD dwFlag1, DWORD dwFlag2), (PLUGIN).Initialize(pObject, dwInstances, szWinsta, hWlx, pReserved, pFunctions, ppContext, dwFlag1, dwFlag2)) \
    LUM_EXPORT(void, LUMDisplaySASNotice, (lum::CGinaNode* pNode, PVOID pContext), (PLUGIN).DisplaySASNotice(pNode, pContext)) \
    LUM_EXPORT(int, LUMLoggedOutSAS, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwSasType, PLUID pId, PSID pSid, PDWORD pdwOptions, PHANDLE phToken, PWLX_MPR_NOTIFY_INFO pInfo, PVOID* ppProfile), (PLUGIN).LoggedOutSAS(pNode, pContext, dwSasType, pId, pSid, pdwOptions, phToken, pInfo, ppProfile)) \
    LUM_EXPORT(BOOL, LUMActivateUserShell, (lum::CGinaNode* pNode, PVOID pContext, PWSTR szDesktop, PWSTR szScript, PVOID pEnvironment), (PLUGIN).ActivateUserShell(pNode, pContext, szDesktop, szScript, pEnvironment)) \
    LUM_EXPORT(int, LUMLoggedOnSAS, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwSasType, PVOID pReserved), (PLUGIN).LoggedOnSAS(pNode, pContext, dwSasType, pReserved)) \
    LUM_EXPORT(void, LUMDisplayLockedNotice, (lum::CGinaNode* pNode, PVOID pContext), (PLUGIN).DisplayLockedNotice(pNode, pContext)) \
    LUM_EXPORT(BOOL, LUMIsLockOk, (lum::CGinaNode* pNode, PVOID pContext), (PLUGIN).IsLockOk(pNode, pContext)) \
    LUM_EXPORT(int, LUMWkstaLockedSAS, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwSasType), (PLUGIN).WkstaLockedSAS(pNode, pContext, dwSasType)) \
    LUM_EXPORT(BOOL, LUMIsLogoffOk, (lum::CGinaNode* pNode, PVOID pContext), (PLUGIN).IsLogoffOk(pNode, pContext)) \
    LUM_EXPORT(void, LUMLogoff, (lum::CGinaNode* pNode, PVOID pContext), (PLUGIN).Logoff(pNode, pContext)) \
    LUM_EXPORT(void, LUMShutdown, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwType), (PLUGIN).Shutdown(pNode, pContext, dwType)) \
    LUM_EXPORT(BOOL, LUMStartApplication, (lum::CGinaNode* pNode, PVOID pContext, PWSTR szDesktop, PVOID pEnvironment, PWSTR szCommand), (PLUGIN).StartApplication(pNode, pContext, szDesktop, pEnvironment, szCommand)) \
    LUM_EXPORT(BOOL, LUMScreenSaverNotify, (lum::CGinaNode* pNode, PVOID pContext, BOOL* pSecure), (PLUGIN).ScreenSaverNotify(pNode, pContext, pSecure)) \
    LUM_EXPORT(BOOL, LUMNetworkProviderLoad, (lum::CGinaNode* pNode, PVOID pContext, PWLX_MPR_NOTIFY_INFO pInfo), (PLUGIN).NetworkProviderLoad(pNode, pContext, pInfo)) \
    LUM_EXPORT(BOOL, LUMDisplayStatusMessage, (lum::CGinaNode* pNode, PVOID pContext, HDESK hDesktop, DWORD dwOptions, PWSTR szTitle, PWSTR szMessage), (PLUGIN).DisplayStatusMessage(pNode, pContext, hDesktop, dwOptions, szTitle, szMessage)) \
    LUM_EXPORT(BOOL, LUMGetStatusMessage, (lum::CGinaNode* pNode, PVOID pContext, DWORD* pdwOptions, PWSTR szMessage, DWORD dwSize), (PLUGIN).GetStatusMessage(pNode, pContext, pdwOptions, szMessage, dwSize)) \
    LUM_EXPORT(BOOL, LUMRemoveStatusMessage, (lum::CGinaNode* pNode, PVOID pContext), (PLUGIN).RemoveStatusMessage(pNode, pContext)) \
    LUM_EXPORT(BOOL, LUMGetConsoleSwitchCredentials, (lum::CGinaNode* pNode, PVOID pContext, PVOID pCredentials), (PLUGIN).GetConsoleSwitchCredentials(pNode, pContext, pCredentials)) \
    LUM_EXPORT(void, LUMReconnectNotify, (lum::CGinaNode* pNode, PVOID pContext), (PLUGIN).ReconnectNotify(pNode, pContext)) \
    LUM_EXPORT(void, LUMDisconnectNotify, (lum::CGinaNode* pNode, PVOID pContext), (PLUGIN).DisconnectNotify(pNode, pContext))
// clang-format on
