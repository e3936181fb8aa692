#pragma once

#include <string>
#include <vector>

#include "WlxInterface.h"

// What all measurements are made on: a registry that holds what they write, the library as Winlogon has it,
// and the bare work that the library does as well.

using Text = std::basic_string<WCHAR>;

inline constexpr WCHAR OWN_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina");
inline constexpr WCHAR MASK_VALUE[] = TEXT("Debug");

enum : DWORD
{
    MASK_NOTHING = 0,
    MASK_ALL = 0xFFF
};

void SetText(const WCHAR* szKey, const Text& name, const Text& text);
void SetNumber(const WCHAR* szKey, const WCHAR* szName, DWORD dwNumber);

/// Opens a key, queries a value and closes it again.
void LookUp(const WCHAR* szKey, const WCHAR* szName);

/// The copies of bench_plugin.dll, p1.dll to p32.dll, and of hook_gina.dll, h0.dll to h32.dll, which
/// scripts/bench lays beside the program. The names are short, since the configuration has room for 259
/// characters.
Text CopyOf(char chKind, int nCopy);

/// Loads a DLL; ends the program when it is not there.
HMODULE Load(const Text& name);

/// A DLL with all its exports looked up, as whoever uses it has to.
HMODULE LoadWithExports(const Text& name, bool bPlugin);

/// The configuration: that many plugins, the GINA behind them, the level mask, and where the log goes.
void Configure(int nPlugins, DWORD dwMask);

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
    /// bFirst: as the first instance since the start of the machine, whose service threads run.
    explicit CWinlogon(bool bFirst);
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
