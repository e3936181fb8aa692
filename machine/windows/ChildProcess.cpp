#include "machine/ChildProcess.h"

namespace {

constexpr DWORD POLL_MILLISECONDS = 20;

class CHandle
{
public:
    CHandle() = default;
    ~CHandle() { Close(); }
    CHandle(const CHandle&) = delete;
    CHandle& operator=(const CHandle&) = delete;

    void Close()
    {
        if (m_hObject != nullptr) {
            CloseHandle(m_hObject);
            m_hObject = nullptr;
        }
    }
    HANDLE Get() const { return m_hObject; }
    HANDLE* Put() { return &m_hObject; }

private:
    HANDLE m_hObject = nullptr;
};

std::basic_string<WCHAR> JoinWords(const std::vector<std::basic_string<WCHAR>>& words)
{
    std::basic_string<WCHAR> line;
    for (const auto& word : words) {
        const bool bQuoted = word.empty() || word.find_first_of(L" \t") != word.npos;
        line += line.empty() ? L"" : L" ";
        // Before a quote, a backslash counts only when it is doubled.
        line += bQuoted ? L'"' + word + word.substr(word.find_last_not_of(L'\\') + 1) + L'"' : word;
    }
    return line;
}

bool Start(const std::vector<std::basic_string<WCHAR>>& words, HANDLE hOutput, HANDLE* phProcess)
{
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = hOutput;
    PROCESS_INFORMATION process = {};
    std::basic_string<WCHAR> line = JoinWords(words);
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                        &process)) {
        return false;
    }
    CloseHandle(process.hThread);
    *phProcess = process.hProcess;
    return true;
}

/// Takes what is in the pipe by now. Reading more would wait.
void Drain(HANDLE hPipe, std::string& output)
{
    char buffer[4096];
    DWORD cbAvailable = 0;
    DWORD cbRead = 0;
    while (PeekNamedPipe(hPipe, nullptr, 0, nullptr, &cbAvailable, nullptr) && cbAvailable != 0 &&
           ReadFile(hPipe, buffer, sizeof(buffer), &cbRead, nullptr))
    {
        output.append(buffer, cbRead);
    }
}

/// Lines end in the same way on all systems.
void DropCarriageReturns(std::string& text)
{
    for (std::size_t n = text.find("\r\n"); n != std::string::npos; n = text.find("\r\n", n)) {
        text.erase(n, 1);
    }
}

} // namespace

LONG Platform::RunChild(const std::vector<std::basic_string<WCHAR>>& words, DWORD dwTimeoutMilliseconds,
                        CChildEnd& end, void (*show)(std::string& output))
{
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    CHandle reading;
    CHandle writing;
    CHandle process;
    if (!CreatePipe(reading.Put(), writing.Put(), &inherited, 0) ||
        !Start(words, writing.Get(), process.Put())) {
        return static_cast<LONG>(GetLastError());
    }
    writing.Close();
    const DWORD dwStart = GetTickCount();
    LONG lResult = ERROR_SUCCESS;
    while (WaitForSingleObject(process.Get(), POLL_MILLISECONDS) == WAIT_TIMEOUT) {
        Drain(reading.Get(), end.output);
        DropCarriageReturns(end.output);
        show(end.output);
        if (dwTimeoutMilliseconds != INFINITE && GetTickCount() - dwStart >= dwTimeoutMilliseconds) {
            TerminateProcess(process.Get(), 1);
            WaitForSingleObject(process.Get(), INFINITE);
            lResult = ERROR_TIMEOUT;
        }
    }
    Drain(reading.Get(), end.output);
    DropCarriageReturns(end.output);
    show(end.output);
    GetExitCodeProcess(process.Get(), &end.dwExitStatus);
    return lResult;
}

void Platform::EndThisProcess(DWORD dwExitStatus)
{
    // ExitProcess would wait for a thread that hangs while it loads a DLL.
    TerminateProcess(GetCurrentProcess(), dwExitStatus);
    std::abort();
}
