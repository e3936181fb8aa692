#pragma once

#include "ThreadObject.h"

class CLUMGina;
class CLUMObject;
class CLUMRegistry;

/// The server of the control channel: once a period it looks for a client of the pipe, reads one request,
/// carries it out under the client's identity, and disconnects the client.
///
/// The pipe exists from construction on, so clients can connect before the thread is started.
class CLUMPipeThreadObject : public CThreadObject
{
public:
    /// The pointers are not owned and must outlive the object. Throws CBadArgException for one that is null,
    /// CLUMPipeThreadObjectInitException when there is no pipe to be had, as when another process serves it.
    CLUMPipeThreadObject(CLUMObject* pLUMObject, CLUMGina* pLUMGina, CLUMRegistry* pLUMRegistry,
                         bool bAutoDelete);

    void Thread() override;

    /// Stops the thread, which closes the pipe at its end.
    ~CLUMPipeThreadObject() override;

    /// For the owner of an object whose thread does not run: closes the pipe, unless that has been done.
    void ClosePipe() noexcept;

    HANDLE m_hPipe;
    CLUMObject* m_pLUMObject;
    CLUMGina* m_pLUMGina;
    CLUMRegistry* m_pLUMRegistry;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CLUMPipeThreadObject");

    void CreatePipe();
    void ServeClients();
    bool AwaitStopOnce(DWORD dwMilliseconds) noexcept;
    void ReleasePipe() noexcept;

    /// The event is signalled once; whoever on the thread has seen it remembers it here.
    bool m_bStopping;
};
