#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include <windows.h>

// Failures on demand, for tests. Native only: on Windows the calls are the system's own.
//
// Each call of the platform layer that can fail is in the table below. A CFaultInjection makes one of its
// next uses fail, on whatever thread that happens, before the call has done anything:
//
//     const CFaultInjection fault(PlatformCall::RegSetValueExW, 2, ERROR_ACCESS_DENIED);
//
// With ERROR_SUCCESS nothing fails, and the uses are only counted.

// clang-format off
#define PLATFORM_CALLS(CALL) \
    CALL(CloseHandle) \
    CALL(ConnectNamedPipe) \
    CALL(CreateDirectoryW) \
    CALL(CreateEventW) \
    CALL(CreateFileW) \
    CALL(CreateNamedPipeW) \
    CALL(CreateThread) \
    CALL(DeregisterEventSource) \
    CALL(DisconnectNamedPipe) \
    CALL(FindResourceW) \
    CALL(FlushFileBuffers) \
    CALL(FreeLibrary) \
    CALL(GetFileAttributesExW) \
    CALL(GetModuleFileNameW) \
    CALL(GetModuleHandleW) \
    CALL(GetProcAddress) \
    CALL(ImpersonateNamedPipeClient) \
    CALL(LoadLibraryW) \
    CALL(LoadResource) \
    CALL(LocalAlloc) \
    CALL(LocalFree) \
    CALL(LockResource) \
    CALL(MsgWaitForMultipleObjects) \
    CALL(MultiByteToWideChar) \
    CALL(OpenThreadToken) \
    CALL(PeekNamedPipe) \
    CALL(PostThreadMessageW) \
    CALL(ReadFile) \
    CALL(RegCloseKey) \
    CALL(RegCreateKeyExW) \
    CALL(RegDeleteKeyW) \
    CALL(RegDeleteValueW) \
    CALL(RegFlushKey) \
    CALL(RegOpenKeyExW) \
    CALL(RegQueryValueExW) \
    CALL(RegSetValueExW) \
    CALL(RegisterEventSourceW) \
    CALL(ReportEventW) \
    CALL(ResetEvent) \
    CALL(RevertToSelf) \
    CALL(SearchPathW) \
    CALL(SetEvent) \
    CALL(SetFilePointer) \
    CALL(SetNamedPipeHandleState) \
    CALL(VerQueryValueW) \
    CALL(WaitForSingleObject) \
    CALL(WideCharToMultiByte) \
    CALL(WriteFile)
// clang-format on

enum class PlatformCall
{
#define PLATFORM_CALL_ENUMERATOR(NAME) NAME,
    PLATFORM_CALLS(PLATFORM_CALL_ENUMERATOR)
#undef PLATFORM_CALL_ENUMERATOR
};

// For the layer: how a call asks whether it is to fail.

namespace Native {

/// The name that a call is used with. A failure can be restricted to it.
struct CCallName
{
    constexpr CCallName(std::nullptr_t) noexcept {}
    constexpr CCallName(LPCWSTR szName) noexcept : szWide(szName) {}
    constexpr CCallName(LPCSTR szName) noexcept : szNarrow(szName) {}

    LPCWSTR szWide = nullptr;
    LPCSTR szNarrow = nullptr;
};

extern std::atomic<int> g_nInjections;
DWORD TakeInjectedFault(PlatformCall call, CCallName name) noexcept;

} // namespace Native

/// One call or several.
class CPlatformCalls
{
public:
    constexpr CPlatformCalls(PlatformCall call) noexcept : m_bits(std::uint64_t(1) << static_cast<int>(call))
    {
    }

    constexpr bool Contains(CPlatformCalls calls) const noexcept { return (m_bits & calls.m_bits) != 0; }
    friend constexpr CPlatformCalls operator|(CPlatformCalls left, CPlatformCalls right) noexcept
    {
        left.m_bits |= right.m_bits;
        return left;
    }

private:
    std::uint64_t m_bits;
};

inline constexpr CPlatformCalls REGISTRY_WRITES = CPlatformCalls(PlatformCall::RegCreateKeyExW) |
                                                  PlatformCall::RegSetValueExW |
                                                  PlatformCall::RegDeleteValueW | PlatformCall::RegDeleteKeyW;

enum class FaultRepeat
{
    Once,
    FromThenOn,
};

/// A failure to come, in force as long as the object exists. Several may be in force. Each counts the uses
/// that it is about; if two are due at once, the one made first decides.
class CFaultInjection
{
public:
    /// The dwUse-th use from now fails with dwError; 1 is the next one. szName restricts it to uses with
    /// that name, compared without case: the value, the subkey as it is passed, the file, directory, DLL or
    /// pipe as it is passed, or the export; for handles, the pipe that one is the server's end of. The name
    /// is not copied.
    CFaultInjection(CPlatformCalls calls, DWORD dwUse, DWORD dwError, LPCWSTR szName = nullptr,
                    FaultRepeat repeat = FaultRepeat::Once);
    ~CFaultInjection();
    CFaultInjection(const CFaultInjection&) = delete;
    CFaultInjection& operator=(const CFaultInjection&) = delete;

    /// As if the machine stopped at the dwUse-th change of the registry: that and every later one fails.
    static CFaultInjection StopMachine(DWORD dwUse)
    {
        return {REGISTRY_WRITES, dwUse, ERROR_IO_DEVICE, nullptr, FaultRepeat::FromThenOn};
    }

    /// How many uses were counted, the failed ones included.
    DWORD GetUses() const noexcept;
    /// Whether a use has failed.
    bool HasFired() const noexcept { return GetUses() >= m_dwUse; }

    /// For the layer: counts a use, and gives the error that it is to fail with, or ERROR_SUCCESS.
    DWORD Take(PlatformCall call, const Native::CCallName& name) noexcept;

private:
    const CPlatformCalls m_calls;
    const DWORD m_dwUse;
    const DWORD m_dwError;
    const LPCWSTR m_szName;
    const FaultRepeat m_repeat;
    DWORD m_dwUses = 0;
};
