#pragma once

#include <string>

#include <gtest/gtest.h>

#include "ControlProtocol.h"

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
        m_Answer = bytes;
        m_hThread = CreateThread(nullptr, 0, Answer, this, 0, nullptr);
    }
    void Join()
    {
        WaitForSingleObject(m_hThread, INFINITE);
        CloseHandle(m_hThread);
    }

private:
    static DWORD WINAPI Answer(LPVOID pServer)
    {
        CFalseServer& server = *static_cast<CFalseServer*>(pServer);
        while (ConnectNamedPipe(server.m_hPipe, nullptr) || GetLastError() != ERROR_PIPE_CONNECTED) {
            Sleep(1);
        }
        DWORD cbMoved = 0;
        DWORD dwMode = PIPE_WAIT;
        char szRequest[2048];
        SetNamedPipeHandleState(server.m_hPipe, &dwMode, nullptr, nullptr);
        ReadFile(server.m_hPipe, szRequest, sizeof(szRequest), &cbMoved, nullptr);
        WriteFile(server.m_hPipe, server.m_Answer.data(), static_cast<DWORD>(server.m_Answer.size()),
                  &cbMoved, nullptr);
        FlushFileBuffers(server.m_hPipe);
        DisconnectNamedPipe(server.m_hPipe);
        dwMode = PIPE_NOWAIT;
        SetNamedPipeHandleState(server.m_hPipe, &dwMode, nullptr, nullptr);
        ConnectNamedPipe(server.m_hPipe, nullptr);
        return 0;
    }

    HANDLE m_hPipe;
    HANDLE m_hThread = nullptr;
    std::string m_Answer;
};
