#include <windows.h>

#include "Call.h"
#include "PipeClient.h"
#include "PipeDirectory.h"
#include "PipeServer.h"

using namespace Native;

namespace {

constexpr DWORD ACCESS_MASK = PIPE_ACCESS_DUPLEX;

/// What OpenThreadToken gives.
class CTokenHandle : public CKernelObject
{
};

thread_local bool t_bImpersonates;

template <typename End>
std::shared_ptr<End> GetEnd(HANDLE hPipe)
{
    // As on Windows, a handle of another kind is another error than no handle.
    const std::shared_ptr<CKernelObject> pObject = HandleTable::Find(hPipe);
    Require(pObject != nullptr, ERROR_INVALID_HANDLE);
    std::shared_ptr<End> pEnd = std::dynamic_pointer_cast<End>(pObject);
    Require(pEnd != nullptr, ERROR_INVALID_FUNCTION);
    return pEnd;
}

/// A call on a pipe that returns only whether it succeeded.
template <typename End, typename Body>
BOOL PipeCall(PlatformCall call, HANDLE hPipe, Body body) noexcept
{
    const std::shared_ptr<CKernelObject> pObject = HandleTable::Find(hPipe);
    return LastErrorCall(call, pObject != nullptr ? pObject->GetName() : nullptr, FALSE, [&] {
        body(*GetEnd<End>(hPipe));
        return TRUE;
    });
}

} // namespace

HANDLE WINAPI CreateNamedPipeW(LPCWSTR szName, DWORD dwOpenMode, DWORD dwPipeMode, DWORD dwMaxInstances,
                               DWORD, DWORD, DWORD, LPSECURITY_ATTRIBUTES) noexcept
{
    return LastErrorCall(PlatformCall::CreateNamedPipeW, szName, INVALID_HANDLE_VALUE, [&] {
        Require(szName != nullptr, ERROR_PATH_NOT_FOUND);
        Require(IsPipeName(szName), ERROR_INVALID_NAME);
        Require(dwMaxInstances != 0, ERROR_INVALID_PARAMETER);
        Require((dwOpenMode & ACCESS_MASK) == PIPE_ACCESS_DUPLEX && (dwPipeMode & ~DWORD(PIPE_NOWAIT)) == 0 &&
                    dwMaxInstances == 1,
                ERROR_NOT_SUPPORTED);
        return HandleTable::Add(std::make_shared<CPipeServer>(szName, GetPipePath(szName),
                                                              (dwPipeMode & PIPE_NOWAIT) == 0,
                                                              (dwOpenMode & FILE_FLAG_OVERLAPPED) != 0));
    });
}

BOOL WINAPI ConnectNamedPipe(HANDLE hPipe, LPOVERLAPPED pOverlapped) noexcept
{
    return PipeCall<CPipeServer>(PlatformCall::ConnectNamedPipe, hPipe, [&](CPipeServer& server) {
        Require(pOverlapped == nullptr, ERROR_NOT_SUPPORTED);
        server.Connect();
    });
}

BOOL WINAPI DisconnectNamedPipe(HANDLE hPipe) noexcept
{
    return PipeCall<CPipeServer>(PlatformCall::DisconnectNamedPipe, hPipe,
                                 [](CPipeServer& server) { server.Disconnect(); });
}

BOOL WINAPI SetNamedPipeHandleState(HANDLE hPipe, LPDWORD pdwMode, LPDWORD pcbCollect,
                                    LPDWORD pdwTimeout) noexcept
{
    return PipeCall<CPipeEnd>(PlatformCall::SetNamedPipeHandleState, hPipe, [&](CPipeEnd& end) {
        Require(pcbCollect == nullptr && pdwTimeout == nullptr, ERROR_INVALID_PARAMETER);
        if (pdwMode != nullptr) {
            Require((*pdwMode & ~DWORD(PIPE_NOWAIT)) == 0, ERROR_INVALID_PARAMETER);
            end.SetWait((*pdwMode & PIPE_NOWAIT) == 0);
        }
    });
}

BOOL WINAPI PeekNamedPipe(HANDLE hPipe, LPVOID pBuffer, DWORD cbBuffer, LPDWORD pcbRead, LPDWORD pcbAvailable,
                          LPDWORD pcbLeftThisMessage) noexcept
{
    const auto store = [](LPDWORD pdwTarget, DWORD dwValue) {
        if (pdwTarget != nullptr) {
            *pdwTarget = dwValue;
        }
    };
    return PipeCall<CPipeEnd>(PlatformCall::PeekNamedPipe, hPipe, [&](CPipeEnd& end) {
        const DWORD cbAvailable = end.Peek(pBuffer, cbBuffer);
        store(pcbRead, cbAvailable < cbBuffer ? cbAvailable : cbBuffer);
        store(pcbAvailable, cbAvailable);
        store(pcbLeftThisMessage, 0);
    });
}

BOOL WINAPI FlushFileBuffers(HANDLE hFile) noexcept
{
    return PipeCall<CPipeServer>(PlatformCall::FlushFileBuffers, hFile,
                                 [](CPipeServer& server) { server.Flush(); });
}

BOOL WINAPI ImpersonateNamedPipeClient(HANDLE hPipe) noexcept
{
    return PipeCall<CPipeServer>(PlatformCall::ImpersonateNamedPipeClient, hPipe, [](CPipeServer& server) {
        server.RequireImpersonation();
        t_bImpersonates = true;
    });
}

BOOL WINAPI RevertToSelf() noexcept
{
    return LastErrorCall(PlatformCall::RevertToSelf, nullptr, FALSE, [] {
        t_bImpersonates = false;
        return TRUE;
    });
}

HANDLE WINAPI GetCurrentThread() noexcept
{
    return reinterpret_cast<HANDLE>(INT_PTR(-2));
}

BOOL WINAPI OpenThreadToken(HANDLE hThread, DWORD, BOOL, PHANDLE phToken) noexcept
{
    return LastErrorCall(PlatformCall::OpenThreadToken, nullptr, FALSE, [&] {
        Require(hThread == GetCurrentThread(), ERROR_INVALID_HANDLE);
        Require(t_bImpersonates, ERROR_NO_TOKEN);
        *phToken = HandleTable::Add(std::make_shared<CTokenHandle>());
        return TRUE;
    });
}
