#pragma once

#include <string>
#include <vector>

#include "GinaNames.h"
#include "WlxInterface.h"

// What all measurements are made on: a registry that holds what they write, the library as Winlogon has it,
// and the bare work that the library does as well.

using Text = std::basic_string<WCHAR>;

inline constexpr WCHAR MASK_VALUE[] = TEXT("Debug");
inline constexpr WCHAR PASSTHROUGH_VALUE[] = TEXT("GinaDLL");
inline constexpr WCHAR BENCH_GINA[] = TEXT("bench_gina.dll");
inline constexpr WCHAR GINAS_KEY[] = TEXT("SOFTWARE\\ORX\\Test");
inline constexpr WCHAR LOG_FILE[] = TEXT("bench.log");

enum : DWORD
{
    MASK_NOTHING = 0,
    MASK_ALL = 0xFFF
};

/// Ends the program, which then reports nothing, unless what it measures was done.
void Require(bool bDone, const char* szWhat);

void SetText(const WCHAR* szKey, const WCHAR* szName, const Text& text);
void SetNumber(const WCHAR* szKey, const WCHAR* szName, DWORD dwNumber);

/// A chaining record: the GINA keeps its passthrough value in GINAS_KEY, under its own name.
void SetRecord(const Text& gina, bool bTerminator);

/// Opens a key, queries a value and closes it again. The text is empty when there is none.
void LookUp(const WCHAR* szKey, const WCHAR* szName, WCHAR (&szText)[NAME_CAPACITY]);

/// The copies of bench_plugin.dll, p1.dll to p32.dll, and of hook_gina.dll, h0.dll to h32.dll, which
/// scripts/bench lays beside the program. The names are short, since the configuration has room for 259
/// characters.
Text CopyOf(char chKind, int nCopy);

/// Loads a DLL, and looks up all the exports that it may have, as whoever uses it has to.
HMODULE LoadWithExports(const Text& name, bool bPlugin);

/// Makes the registry anew: the chain is the library and bench_gina.dll, with that many plugins in between
/// and that level mask, and the log goes to an empty LOG_FILE. An instance of the library has been
/// initialised since the machine started, so that the next has no service threads.
void Configure(int nPlugins, DWORD dwMask);

/// What an installation switches on beyond that: safe start and events.
void SetRecommended();

/// Winlogon's dispatch table; every entry answers TRUE to what a host asks at its start.
struct CWinlogonTable
{
    CWinlogonTable();

    PVOID entries[sizeof(WLX_DISPATCH_VERSION_1_4) / sizeof(PVOID)];
};

/// The library, loaded, negotiated with and initialised, until it is shut down and freed.
class CWinlogon
{
public:
    CWinlogon();
    ~CWinlogon();
    CWinlogon(const CWinlogon&) = delete;
    CWinlogon& operator=(const CWinlogon&) = delete;

    BOOL IsLockOk() const { return m_pfnIsLockOk(m_pContext); }

private:
    HMODULE m_hLibrary;
    CWinlogonTable m_table;
    PVOID m_pContext = nullptr;
    BOOL(WINAPI* m_pfnIsLockOk)(PVOID);
};

/// A hook GINA in front of so many others, and a last one that answers.
class CHooks
{
public:
    explicit CHooks(int nBehind);
    ~CHooks();
    CHooks(const CHooks&) = delete;
    CHooks& operator=(const CHooks&) = delete;

    BOOL IsLockOk() const { return m_pfnIsLockOk(nullptr); }

private:
    std::vector<HMODULE> m_loaded;
    BOOL(WINAPI* m_pfnIsLockOk)(PVOID);
};
