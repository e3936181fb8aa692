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
    /// The pointers are not owned and must outlive the object. Throws CBadArgException for a null one,
    /// CLUMPipeThreadObjectInitException when the pipe cannot be created, as when another process serves it.
    CLUMPipeThreadObject(CLUMObject* pLUMObject, CLUMGina* pLUMGina, CLUMRegistry* pLUMRegistry,
                         bool bAutoDelete);

    void Thread() override;

    /// Stops the thread, which closes the pipe at its end.
    ~CLUMPipeThreadObject() override;

    /// Closes the pipe unless that has been done. For the owner of an object whose thread does not run.
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

    /// StopEvent ends one wait only. Whoever on the thread has seen it remembers it here.
    bool m_bStopping;
};
