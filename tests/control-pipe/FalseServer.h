#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "ControlProtocol.h"
#include "Thread.h"

/// A pipe of the right name.
class CFalseServer : public testing::Test
{
protected:
    CFalseServer()
        : m_hPipe(CreateNamedPipeW(ControlProtocol::PIPE_NAME, PIPE_ACCESS_DUPLEX | WRITE_OWNER, PIPE_NOWAIT,
                                   1, 4096, 4096, 10, nullptr))
    {
        EXPECT_NE(m_hPipe, INVALID_HANDLE_VALUE);
    }
    ~CFalseServer() override { CloseHandle(m_hPipe); }

    /// Answers every request with the bytes, and disconnects once the client has read them.
    void AnswerWith(const std::string& bytes)
    {
        m_pThread = std::make_unique<CThread>([=, this] { Answer(bytes); });
    }
    void Join() { m_pThread.reset(); }

private:
    void SetMode(DWORD dwMode) { SetNamedPipeHandleState(m_hPipe, &dwMode, nullptr, nullptr); }

    void Answer(const std::string& bytes)
    {
        while (ConnectNamedPipe(m_hPipe, nullptr) || GetLastError() != ERROR_PIPE_CONNECTED) {
            Sleep(1);
        }
        DWORD cbMoved = 0;
        char szRequest[2048];
        SetMode(PIPE_WAIT);
        ReadFile(m_hPipe, szRequest, sizeof(szRequest), &cbMoved, nullptr);
        WriteFile(m_hPipe, bytes.data(), static_cast<DWORD>(bytes.size()), &cbMoved, nullptr);
        FlushFileBuffers(m_hPipe);
        DisconnectNamedPipe(m_hPipe);
        SetMode(PIPE_NOWAIT);
        ConnectNamedPipe(m_hPipe, nullptr);
    }

    HANDLE m_hPipe;
    std::unique_ptr<CThread> m_pThread;
};
